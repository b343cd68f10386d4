#pragma once

#include <QIcon>
#include <QString>

// The icons of the map's toolbars, by symbol name ("mappin" with the badge "plus"), drawn in the
// palette's colours. Where the symbol set lacks a name, the icon theme's icon of the fallback
// name stands in.
namespace MapSymbols {

QIcon icon(const QString &symbol, const QString &badge = {}, const QString &themeFallback = {});
// Drawn here in the palette's text colour when they are painted: a globe for the online map, a
// magnifying glass for the search field.
QIcon globe();
QIcon magnifier();

} // namespace MapSymbols
