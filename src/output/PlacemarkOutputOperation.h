#pragma once

#include "OutputFormatOperation.h"

#include <QTimeZone>

#include <optional>

// What the map formats (KML, GPX) share: the items of the list that have a position, each with
// its name, the four location fields and the time it was taken, and the XML they are written
// in. Items without a complete position are left out.
class PlacemarkOutputOperation : public OutputFormatOperation
{
public:
    struct Placemark
    {
        QString name;
        double latitude = 0.0;
        double longitude = 0.0;
        std::optional<double> altitude;
        QString description; // the location fields, one "Title: value" line each
        std::optional<double> taken; // UTC seconds since 1970
    };

    PlacemarkOutputOperation(const DataModelSnapshot &dataModelSnapshot,
                             std::shared_ptr<OutputEngine> outputEngine,
                             FlatFileListPtr flatFileList);

    // The item's placemark, or nothing when it has no complete position.
    static std::optional<Placemark> placemarkOf(const Node &node, const QTimeZone &zone);
    // Text for XML content and attributes; characters XML 1.0 can't hold are left out.
    static QString xmlEscaped(const QString &text);
    // "2024-05-01T08:05:00Z", with milliseconds when the time has them.
    static QString isoTime(double utcTime);

protected:
    // The placemarks of the list in list order; false when the run was cancelled meanwhile.
    bool collectPlacemarks(QList<Placemark> *placemarks);
};
