#pragma once

#include "bricks/Variables.h"
#include "location/Placemark.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>

class Geocoder;
class MapDelegate;

// The search field above the map: places whose names begin with the typed text, nearest to the
// map's region first, as the user types; Return goes to a typed coordinate ("48.8584, 2.2945")
// or else to the chosen or first suggestion. Suggestions come from the offline geocoder. The
// field and its list are views that follow the variables here and forward typing and keys.
// Main thread only.
class MapSearch
{
public:
    // The keys the field hands over instead of handling them itself.
    enum class Command { insertNewline, moveDown, moveUp, cancelOperation, complete };

    MapSearch(MapDelegate &delegate, Geocoder &geocoder);

    // What the field shows; the search empties it after going somewhere.
    std::shared_ptr<StraightVariable<QString>> fieldText;
    std::shared_ptr<StraightVariable<QList<Placemark>>> searchResults;
    std::shared_ptr<StraightVariable<int>> selectedSearchResultIndex;
    std::shared_ptr<StraightVariable<bool>> popoverShown;
    // Whether the field has the keyboard focus, asked before the list opens.
    std::function<bool()> fieldHasFocus;

    void controlTextDidChange(const QString &text);
    void completerDidUpdateResults(const QList<Placemark> &results);
    void completerDidFail();
    // True when the command was handled.
    bool doCommandBySelector(Command command);
    void performSearchSelection();
    void performSearchForResult(const Placemark &result);
    void navigateToCoordinates(double latitude, double longitude);
    void closePopover();

    // A suggestion's second line: the parts of its place that its name does not say.
    static QString subtitle(const Placemark &placemark);

    static constexpr int maximumResults = 10;
    static constexpr double rowHeight = 44.0;
    static constexpr double columnWidth = 300.0;
    static constexpr double regionSpan = 0.01;

private:
    MapDelegate &m_delegate;
    Geocoder &m_geocoder;
    // Answers come in order; only the answer to the latest text counts.
    quint64 m_latestRequest = 0;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};
