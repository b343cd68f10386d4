#pragma once

#include <QByteArray>
#include <QColor>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QSize>
#include <QStringList>
#include <QStringView>

// The symbols the views show on buttons, in table cells and on the map, by their symbol names
// ("trash", "chevron.left", "exclamationmark.triangle.fill"). A pin with a badge is named by
// joining the two with a plus ("mappin+plus"); it is drawn 14 wide by 16 high, the badge set
// into the pin's lower right with a clear rim.
//
// icon() prefers the icon theme where the symbol has a fitting freedesktop name: the theme's
// symbolic variant first, taken for its shape, then its plain icon as the theme draws it, so
// that buttons look native. Otherwise, and always for composites, it draws the bundled SVG.
// Shapes are drawn when painted, in the palette's text colour of that moment, so they follow a
// switch between light and dark. The tinted forms always use the bundled drawing, since their
// colour carries their meaning.
//
// An unknown name is a programming error and stops the program with a message naming it.
class SymbolIcons
{
public:
    static QIcon icon(QStringView name);
    // The bundled drawing in one colour, for every mode of the icon.
    static QIcon icon(QStringView name, const QColor &color);

    // The bundled drawing in one colour at a size in device-independent pixels. pixmap() belongs
    // to the main thread; image() may be called from any thread.
    static QPixmap pixmap(QStringView name, const QColor &color, QSize size,
                          qreal devicePixelRatio = 1.0);
    static QImage image(QStringView name, const QColor &color, QSize pixelSize);

    // The bundled SVG of a plain symbol, drawn in `currentColor`, for pages that style it
    // themselves (the map's markers).
    static QByteArray svg(QStringView name);

    // The theme icon name tried first, or empty where only the bundled drawing fits.
    static QString themeIconName(QStringView name);
    // The symbol's proportions: 16 by 16, a pin with a badge 14 by 16.
    static QSize designSize(QStringView name);
    // Every name the views use, the three pins with badges included.
    static QStringList names();
};
