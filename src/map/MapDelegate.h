#pragma once

#include "MapAnnotationSink.h"
#include "MapOverlayMode.h"
#include "MapScene.h"
#include "MapView.h"
#include "MarkerClusterIndex.h"
#include "MediaFileMarkers.h"
#include "location/PinMapView.h"
#include "platform/SerialQueue.h"

#include <QHash>
#include <QList>
#include <QSet>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

class DataModel;

// Owns what stands on the map: one marker for each file with a position, one for each pin, the
// plain markers of the list's output pass, and the clusters the file markers form. It decides
// how each looks, turns clicks on them into selections, and keeps the map's selection in step
// with the tables'. The view only draws the scene it is given and reports the camera and the
// clicks. Main thread only, except addMarker and removeMediaFileMarker.
class MapDelegate
    : public MediaFileMarkers
    , public MapAnnotationSink
    , public PinMapView
{
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    // A file's marker: its node, and its place when one could be formed.
    struct Marker
    {
        NodePtr node;
        QString smartAbsolutePath;
        std::optional<Coordinate2D> coordinate;
    };

    struct PinMarker
    {
        int pinIndex = 0;
        Coordinate2D coordinate;
        QString title;
    };

    explicit MapDelegate(DataModel &model);
    ~MapDelegate() override;
    MapDelegate(const MapDelegate &) = delete;
    MapDelegate &operator=(const MapDelegate &) = delete;

    // Not owned; the view lives as long as the delegate or is unset before it goes.
    void setMapView(MapView *view);
    MapView *mapView() const { return m_view; }
    // Reads the overlay's mode; without one the map behaves as in the pointer mode.
    void setOverlayModeSource(std::function<MapOverlayMode()> source);
    // Listens to the selection, the pins and the current pin. Called once.
    void setupMapListeners();
    // Becomes the place where the readers put file markers and the list puts plain markers.
    void install();
    void uninstall();

    // MediaFileMarkers: any thread. The store is read on the calling thread.
    void addMarker(const NodePtr &node) override;
    void removeMediaFileMarker(const QString &path) override;
    void removeAllMediaFileMarkers() override;
    // MapAnnotationSink: main thread.
    void addPointAnnotation(const PointAnnotation &annotation) override;
    void removeAllPointAnnotations() override;
    // PinMapView.
    void setRegion(const CoordinateRegion &region, bool animated) override;
    void selectPinMarker(int pinIndex, bool animated) override;

    void syncPinAnnotations();
    void refreshClusterSelectionStates();
    void adjustMapToShowNodes(const QList<NodePtr> &nodes);

    // What the view reports.
    void viewStateDidChange(const MapViewState &state);
    // A click the map itself took (the pointer mode): it selects the marker under it.
    void viewClicked(QPointF point);
    void didSelectAnnotation(const AnnotationRef &annotation);
    void didDeselectAnnotation(const AnnotationRef &annotation);

    // Selection of annotations, as the map keeps it; selecting one tells didSelectAnnotation.
    void selectAnnotation(const AnnotationRef &annotation, bool animated);
    void deselectAnnotation(const AnnotationRef &annotation, bool animated);
    void setSelectedAnnotations(const QList<AnnotationRef> &annotations);
    const QList<AnnotationRef> &selectedAnnotations() const { return m_selectedAnnotations; }

    MapViewState viewState() const;
    void setCenterCoordinate(Coordinate2D center, bool animated);
    void setViewState(const MapViewState &state, bool animated);

    // The markers in the order they came, with the places of those that have one.
    QList<Marker> markers() const;
    qsizetype markerCount() const;
    // Markers in the clusters the map draws now; the clusters of new markers follow shortly.
    qsizetype indexedMarkerCount() const;
    const QList<PinMarker> &pinMarkers() const { return m_pinMarkers; }
    const QList<PointAnnotation> &pointAnnotations() const { return m_pointAnnotations; }
    bool isSelected(const Node &node) const;

    // The scene the view shows, brought up to date first.
    const MapScene &scene();
    // Brings the scene up to date and hands it to the view if it changed.
    void updateSceneNow();
    // The marker under a point of the view: a cluster wins at once, otherwise the one drawn last.
    std::optional<AnnotationRef> findAnnotationView(QPointF point);
    // The annotation whose place lies nearest to the point, not further than the distance.
    std::optional<AnnotationRef> nearestAnnotation(QPointF point, double within) const;
    // The nodes of the file markers whose places lie in the rectangle of the view.
    QList<NodePtr> nodesInRect(const QRectF &rect) const;
    std::optional<Coordinate2D> coordinateOf(const AnnotationRef &annotation) const;
    // The file of a file marker.
    NodePtr nodeOf(const AnnotationRef &annotation) const;
    // The files of a cluster of the current scene.
    QList<NodePtr> clusterMembers(const AnnotationRef &cluster) const;
    ClusterSelectionState clusterSelectionState(const AnnotationRef &cluster) const;

    bool isProgrammaticallySyncingSelection = false;
    std::optional<std::chrono::steady_clock::time_point> lastClusterSelectionTime;
    void setClock(Clock clock) { m_clock = std::move(clock); }

    // A file's place from the store: signed decimals for the QuickTime family, otherwise
    // unsigned ones with their references. Absent when they make no coordinate; a fatal stop
    // when the store lacks either number, which the callers rule out.
    static std::optional<Coordinate2D> markerCoordinate(const Node &node);

    // Markers closer than this many points merge into a cluster.
    static constexpr double clusterRadius = 40.0;
    static constexpr double plainThinningRadius = 4.0;
    static constexpr double clusterEchoSeconds = 0.5;
    static constexpr double samePlaceDegrees = 0.0001;
    // Until this many points an index is built at once on the main thread.
    static constexpr qsizetype immediateIndexLimit = 4000;

private:
    struct PendingChange;
    struct IndexedLayer;

    // Any thread: the change joins the list, which the main thread applies in order.
    void enqueue(PendingChange change);
    void applyPendingChanges();
    void insertMarker(Marker marker);
    // True when the path had a marker.
    bool removeMarkerOfPath(const QString &smartPath);
    void selectionDidChange();
    void recomputeSelectionFlags();
    void recomputeCounts();
    void setNeedsSceneUpdate();
    // Builds the layer's index from the points if they changed: at once when they are few,
    // otherwise on the index queue, paced while changes keep coming.
    void rebuildIndex(IndexedLayer &layer,
                      const std::function<std::vector<MarkerClusterIndex::Point>()> &points);
    const Marker *markerById(qint64 id) const;
    std::optional<Coordinate2D> clusterCoordinate(const AnnotationRef &cluster) const;
    std::shared_ptr<const MarkerClusterIndex> indexOf(AnnotationKind kind) const;
    std::chrono::steady_clock::time_point now() const { return m_clock(); }
    std::function<void()> guarded(std::function<void(MapDelegate &)> block);

    DataModel &m_model;
    MapView *m_view = nullptr;
    std::function<MapOverlayMode()> m_overlayMode;
    Clock m_clock;

    // Markers by id; ids grow and are never reused, the first of this list is m_firstMarkerId.
    std::vector<std::optional<Marker>> m_markers;
    quint32 m_firstMarkerId = 0;
    QHash<QString, quint32> m_markerIdBySmartPath;
    qsizetype m_markerCount = 0;
    std::vector<char> m_selectedById;
    QSet<QString> m_selectedPaths;

    QList<PinMarker> m_pinMarkers;
    QList<PointAnnotation> m_pointAnnotations;
    QList<AnnotationRef> m_selectedAnnotations;

    std::unique_ptr<IndexedLayer> m_fileLayer;
    std::unique_ptr<IndexedLayer> m_plainLayer;
    // Selected and present files before each place of the file index's leaf order.
    std::vector<quint32> m_selectedBefore;
    std::vector<quint32> m_presentBefore;
    bool m_countsValid = false;

    MapViewState m_state;
    MapScene m_scene;
    std::shared_ptr<const MarkerClusterIndex> m_sceneFileIndex;
    bool m_sceneValid = false;
    bool m_sceneUpdatePosted = false;
    // The scene the view was given last.
    quint64 m_shownSequence = 0;

    // Changes handed over from the readers' threads; owned by m_pendingMutex.
    std::mutex m_pendingMutex;
    std::vector<PendingChange> m_pending;
    bool m_flushPosted = false;

    SerialQueue m_indexQueue {QStringLiteral("MapClusterIndex")};
    // Blocks posted to the main queue check this before they touch the delegate.
    std::shared_ptr<MapDelegate *> m_self;
};
