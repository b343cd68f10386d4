#pragma once

#include "location/Coordinate2D.h"

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>

// What stands on the map, by kind: plain markers of the list's output pass, markers of media
// files, clusters of them, and pins.
enum class AnnotationKind : quint8 { plain, mediaFile, cluster, pin };

// One annotation: a plain marker by its place in the list, a file marker by its id, a pin by its
// index in the model's pins, a cluster by its level and entry in the cluster index that drew it.
struct AnnotationRef
{
    AnnotationKind kind = AnnotationKind::plain;
    qint64 id = 0;

    static AnnotationRef cluster(int level, quint32 entry)
    {
        return {AnnotationKind::cluster, (qint64(level) << 32) | entry};
    }
    int clusterLevel() const { return int(id >> 32); }
    quint32 clusterEntry() const { return quint32(id & 0xffffffff); }

    friend bool operator==(const AnnotationRef &, const AnnotationRef &) = default;
};

inline size_t qHash(const AnnotationRef &ref, size_t seed = 0)
{
    return qHashMulti(seed, quint8(ref.kind), ref.id);
}

// How many of a cluster's files are selected.
enum class ClusterSelectionState { all, some, none };

// The colours of the markers, by their role.
enum class MarkerTint : quint8 {
    selectedBlue, // a selected file, a cluster of selected files, the current pin
    unselectedGray, // a file that is not selected
    partlyOrange, // a cluster partly selected, a pin that is not current
    clusterGray, // a cluster with nothing selected
    plainRed, // a plain marker
};

enum class MarkerGlyph : quint8 { none, photo, photoStack, mappinCircleFill };

// One marker as the view draws it: a balloon whose tip stands on the coordinate.
struct MapSceneItem
{
    AnnotationRef ref;
    Coordinate2D coordinate;
    MarkerTint tint = MarkerTint::plainRed;
    MarkerGlyph glyph = MarkerGlyph::none;
    // Files behind a cluster, 1 otherwise.
    quint32 count = 1;
    // Drawn under a plain marker; the other markers keep their titles hidden.
    QString title;
    QString subtitle;

    // The rectangle the marker covers, with its tip at the anchor point.
    QRectF viewRect(QPointF anchor) const
    {
        const double width = ref.kind == AnnotationKind::plain ? plainWidth : balloonWidth;
        const double height = ref.kind == AnnotationKind::plain ? plainHeight : balloonHeight;
        return {anchor.x() - width / 2.0, anchor.y() - height, width, height};
    }

    static constexpr double balloonWidth = 28.0;
    static constexpr double balloonHeight = 38.0;
    static constexpr double plainWidth = 18.0;
    static constexpr double plainHeight = 26.0;
};

// Everything the view draws, bottom first: plain markers, then files and clusters, then pins.
// Only markers near the visible part are in it; the view asks again when it has moved.
struct MapScene
{
    quint64 sequence = 0;
    QList<MapSceneItem> items;
};
