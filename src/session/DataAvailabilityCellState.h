#pragma once

#include <QString>

#include <optional>

class Node;

// What a status cell of the preview table shows for "GPSDataAvailable" or "IPTCDataComplete":
// the symbol, its tint and the tooltip. The view only draws it.
struct DataAvailabilityCellState
{
    enum class Symbol { Waiting, NotPresent, None, Complete, Incomplete, Divergent };
    // Named as the platform's colours; the view picks a shade that reads on its theme.
    enum class Tint { ControlText, DisabledControlText, Green, Yellow, SystemOrange };

    Symbol symbol = Symbol::Waiting;
    Tint tint = Tint::ControlText;
    QString tooltip;
    // The value is still being read: the cell waits for it and shows itself again then.
    bool observe = false;

    // Painting needs no tooltip: leaving it out spares up to five trips to the store per cell.
    enum class Tooltip { Include, Omit };

    // Absent when the display string is no status word: the cell then keeps what it showed.
    static std::optional<DataAvailabilityCellState> configure(const Node &node,
                                                              const QString &valueKey,
                                                              Tooltip tooltip = Tooltip::Include);
    static QString divergenceTooltip(const Node &node, bool isGPS);

    // The symbol's name in the icon set and what it says to a screen reader.
    static QString symbolName(Symbol symbol);
    static QString symbolDescription(Symbol symbol);

    bool operator==(const DataAvailabilityCellState &) const = default;
};
