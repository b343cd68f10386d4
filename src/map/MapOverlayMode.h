#pragma once

#include <QString>

// What a click on the map means. The values are those the mode has always been stored as.
enum class MapOverlayMode : int { areaFileSelector, fileSelector, addPin, selectPin, deletePin };

// The mouse pointer shown over the map in each mode.
enum class MapCursor { crosshair, arrow, pointingHand, operationNotAllowed };

// A mode's face in the toolbar, and whether the overlay takes the mouse from the map.
struct MapOverlayModeInfo
{
    MapOverlayMode mode;
    MapCursor cursor;
    bool overlayShown;
    QString action;
    // A symbol name, with a second, small one beside it for the pin modes.
    QString symbol;
    QString badge;
    QString label;
    QString toolTip;

    static const MapOverlayModeInfo &of(MapOverlayMode mode);
    static constexpr int count = 5;
};
