#pragma once

#include <QIcon>
#include <QString>

// The symbols on the preview's controls, by their symbol names. The shared symbol set gives
// "chevron.left", "chevron.right" and "xmark"; the grid toggle's "square.grid.2x2" and "square"
// are drawn here in the same manner: in the palette's button text colour when painted, so they
// follow the light or dark theme.
namespace PreviewSymbols {

QIcon icon(const QString &name);

} // namespace PreviewSymbols
