#include "MapSearch.h"

#include "MapDelegate.h"
#include "location/Geocoder.h"
#include "location/LocationHelper.h"

#include <cmath>

using namespace Qt::StringLiterals;

MapSearch::MapSearch(MapDelegate &delegate, Geocoder &geocoder)
    : fieldText(std::make_shared<StraightVariable<QString>>())
    , searchResults(std::make_shared<StraightVariable<QList<Placemark>>>())
    , selectedSearchResultIndex(std::make_shared<StraightVariable<int>>(-1))
    , popoverShown(std::make_shared<StraightVariable<bool>>(false))
    , m_delegate(delegate)
    , m_geocoder(geocoder)
{ }

void MapSearch::controlTextDidChange(const QString &text)
{
    fieldText->setValue(text);
    const quint64 request = ++m_latestRequest;
    if (text.isEmpty()) {
        closePopover();
        searchResults->setValue({});
        return;
    }
    // The map's region, so that nearby places come first.
    CoordinateRegion region = MapGeometry::region(m_delegate.viewState());
    region.center.longitude = MapGeometry::longitudeNear(region.center.longitude, 0.0);
    m_geocoder.searchPlaces(
        text,
        [this, request, alive = std::weak_ptr<bool>(m_alive)](const QList<Placemark> &places) {
            if (alive.lock() && request == m_latestRequest)
                completerDidUpdateResults(places);
        },
        maximumResults, region);
}

void MapSearch::completerDidUpdateResults(const QList<Placemark> &results)
{
    searchResults->setValue(results);
    selectedSearchResultIndex->setValue(-1);
    if (results.isEmpty()) {
        closePopover();
        return;
    }
    if (!popoverShown->value() && (!fieldHasFocus || fieldHasFocus()))
        popoverShown->setValue(true);
}

void MapSearch::completerDidFail()
{
    closePopover();
}

void MapSearch::closePopover()
{
    if (popoverShown->value())
        popoverShown->setValue(false);
}

bool MapSearch::doCommandBySelector(Command command)
{
    switch (command) {
    case Command::insertNewline:
        performSearchSelection();
        return true;
    case Command::moveDown:
    case Command::moveUp: {
        const qsizetype count = searchResults->ref().size();
        if (!popoverShown->value() || count == 0)
            return false;
        const int step = command == Command::moveDown ? 1 : -1;
        const int index = std::clamp(selectedSearchResultIndex->value() + step, 0, int(count) - 1);
        selectedSearchResultIndex->setValue(index);
        return true;
    }
    case Command::cancelOperation:
        closePopover();
        selectedSearchResultIndex->setValue(-1);
        return true;
    case Command::complete:
        return true;
    }
    return false;
}

void MapSearch::performSearchSelection()
{
    const QString text = fieldText->value().trimmed();
    if (!text.isEmpty()) {
        const LocationHelper::ParsedCoordinates parsed
            = LocationHelper::shared().parseCoordinateString(text);
        if (parsed.latitude && parsed.longitude && std::fabs(*parsed.latitude) <= 90.0
            && std::fabs(*parsed.longitude) <= 180.0) {
            navigateToCoordinates(*parsed.latitude, *parsed.longitude);
            selectedSearchResultIndex->setValue(-1);
            return;
        }
    }
    const QList<Placemark> &results = searchResults->ref();
    const int index = selectedSearchResultIndex->value();
    if (index >= 0 && index < results.size())
        performSearchForResult(results.at(index));
    else if (!results.isEmpty())
        performSearchForResult(results.first());
}

void MapSearch::performSearchForResult(const Placemark &result)
{
    m_delegate.setRegion({result.coordinate, regionSpan, regionSpan}, true);
    closePopover();
    fieldText->setValue(QString());
}

void MapSearch::navigateToCoordinates(double latitude, double longitude)
{
    // Goes there without a marker.
    m_delegate.setRegion({{latitude, longitude}, regionSpan, regionSpan}, true);
    closePopover();
    fieldText->setValue(QString());
}

QString MapSearch::subtitle(const Placemark &placemark)
{
    QStringList parts;
    if (!placemark.locality.isEmpty() && placemark.locality != placemark.name)
        parts << placemark.locality;
    if (!placemark.administrativeArea.isEmpty() && placemark.administrativeArea != placemark.name)
        parts << placemark.administrativeArea;
    if (!placemark.country.isEmpty())
        parts << placemark.country;
    return parts.join(u", "_s);
}
