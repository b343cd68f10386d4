#include "MapSymbols.h"

#if __has_include("bricks/SymbolIcons.h")
#include "bricks/SymbolIcons.h"
#define PALOMET_HAS_SYMBOL_ICONS 1
#endif

namespace MapSymbols {

QIcon icon(const QString &symbol, const QString &badge, const QString &themeFallback)
{
    const QString name = badge.isEmpty() ? symbol : symbol + u'+' + badge;
#ifdef PALOMET_HAS_SYMBOL_ICONS
    if (SymbolIcons::names().contains(name))
        return SymbolIcons::icon(name);
#endif
    return QIcon::fromTheme(themeFallback.isEmpty() ? name : themeFallback);
}

} // namespace MapSymbols
