#pragma once

#include <QIcon>
#include <QString>

// The symbols on the preview's controls, by their symbol names: "chevron.left",
// "chevron.right", "xmark", "square.grid.2x2" and "square". They are drawn in the palette's
// button text colour when painted, so they follow the light or dark theme.
namespace PreviewSymbols {

QIcon icon(const QString &name);

} // namespace PreviewSymbols
