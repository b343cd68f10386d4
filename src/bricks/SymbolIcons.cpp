#include "SymbolIcons.h"

#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

struct Symbol
{
    QStringView name;
    // The bundled drawing; two names may share one.
    QStringView file;
    // A standard freedesktop icon name, or empty.
    QStringView themeName;
    // Backward and forward point the other way in right-to-left layouts.
    bool mirrorsRightToLeft = false;
};

// Status marks carry no theme name: the table tints them, and a theme's coloured variants would
// fight the tint.
constexpr Symbol symbols[] = {
    {u"arrow.clockwise.circle.fill", u"arrow.clockwise.circle.fill", {}},
    {u"arrow.triangle.2.circlepath", u"arrow.triangle.2.circlepath", u"view-refresh"},
    {u"checkmark", u"checkmark", {}},
    {u"chevron.backward", u"chevron.backward", u"go-previous", true},
    {u"chevron.forward", u"chevron.forward", u"go-next", true},
    {u"chevron.left", u"chevron.backward", u"go-previous"},
    {u"chevron.right", u"chevron.forward", u"go-next"},
    {u"clipboard", u"clipboard", u"edit-copy"},
    {u"cursorarrow", u"cursorarrow", {}},
    {u"doc", u"doc", u"text-x-generic"},
    {u"exclamationmark.octagon.fill", u"exclamationmark.octagon.fill", {}},
    {u"exclamationmark.triangle.fill", u"exclamationmark.triangle.fill", {}},
    {u"mappin", u"mappin", {}},
    {u"mappin.circle.fill", u"mappin.circle.fill", {}},
    {u"minus", u"minus", u"list-remove"},
    {u"photo", u"photo", u"image-x-generic"},
    {u"photo.stack", u"photo.stack", {}},
    {u"plus", u"plus", u"list-add"},
    {u"point.topleft.down.to.point.bottomright.curvepath",
     u"point.topleft.down.to.point.bottomright.curvepath",
     {}},
    {u"pointer.arrow.ipad", u"pointer.arrow.ipad", {}},
    {u"scope", u"scope", {}},
    {u"selection.pin.in.out", u"selection.pin.in.out", {}},
    {u"trash", u"trash", u"edit-delete"},
    {u"xmark", u"xmark", u"window-close"},
    {u"xmark.circle.fill", u"xmark.circle.fill", {}},
};

constexpr QStringView composites[]
    = {u"mappin+plus", u"mappin+minus", u"mappin+pointer.arrow.ipad"};

// The drawings are laid out on a 16 by 16 grid with strokes of 1.5.
constexpr qreal gridSize = 16;
constexpr qreal strokeWidth = 1.5;
constexpr QSizeF compositeSize(14, 16);
// Where the badge sits in a composite, and the clear rim around it, in grid units.
constexpr QRectF compositePinRect(-3, 0, 16, 16);
constexpr QRectF compositeBadgeRect(7.5, 8, 6.5, 6.5);
constexpr qreal badgeRim = 1.25;

const Symbol *findSymbol(QStringView name)
{
    for (const Symbol &symbol : symbols) {
        if (symbol.name == name)
            return &symbol;
    }
    return nullptr;
}

[[noreturn]] void unknownSymbol(QStringView name)
{
    qFatal("SymbolIcons: there is no symbol named \"%s\"", qPrintable(name.toString()));
}

const Symbol &symbolNamed(QStringView name)
{
    const Symbol *symbol = findSymbol(name);
    if (!symbol)
        unknownSymbol(name);
    return *symbol;
}

// A plain symbol, or a pin and its badge.
struct Parts
{
    const Symbol *base = nullptr;
    const Symbol *badge = nullptr;
};

Parts partsOf(QStringView name)
{
    const qsizetype plus = name.indexOf(u'+');
    if (plus < 0)
        return {&symbolNamed(name), nullptr};
    const Symbol *base = findSymbol(name.left(plus));
    const Symbol *badge = findSymbol(name.mid(plus + 1));
    if (!base || !badge)
        unknownSymbol(name);
    return {base, badge};
}

QByteArray svgOf(const Symbol &symbol)
{
    QFile file(u":/palomet/symbols/"_s + symbol.file.toString() + u".svg"_s);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("SymbolIcons: the drawing of \"%s\" is missing from the resources",
               qPrintable(symbol.name.toString()));
    return file.readAll();
}

QSizeF designSizeOf(const Parts &parts)
{
    return parts.badge ? compositeSize : QSizeF(gridSize, gridSize);
}

// The largest rectangle of the symbol's proportions inside `size`, centred.
QRectF fittedRect(const QSizeF &design, const QSizeF &size)
{
    const QSizeF fitted = design.scaled(size, Qt::KeepAspectRatio);
    return QRectF(
        QPointF((size.width() - fitted.width()) / 2, (size.height() - fitted.height()) / 2),
        fitted);
}

void renderSvg(QPainter &painter, const QByteArray &svg, const QRectF &target, bool mirrored)
{
    QSvgRenderer renderer(svg);
    painter.save();
    if (mirrored) {
        painter.translate(target.center().x(), 0);
        painter.scale(-1, 1);
        painter.translate(-target.center().x(), 0);
    }
    renderer.render(&painter, target);
    painter.restore();
}

bool mirroredNow(const Symbol &symbol)
{
    return symbol.mirrorsRightToLeft && QGuiApplication::layoutDirection() == Qt::RightToLeft;
}

// Draws the badge at its place with strokes thickened by `extra` grid units, scaled so that its
// lines come out as heavy as the pin's.
void renderBadge(QPainter &painter, const Symbol &badge, const QRectF &canvas, qreal extra)
{
    const qreal unit = canvas.width() / compositeSize.width();
    const qreal shrink = compositeBadgeRect.width() / gridSize;
    QByteArray svg = svgOf(badge);
    const QByteArray widened = QByteArray::number((strokeWidth + extra) / shrink);
    svg.replace("stroke-width=\"1.5\"", "stroke-width=\"" + widened + "\"");
    const QRectF target(canvas.topLeft() + compositeBadgeRect.topLeft() * unit,
                        compositeBadgeRect.size() * unit);
    renderSvg(painter, svg, target, mirroredNow(badge));
}

// The drawing in black, with its coverage in the alpha channel.
QImage renderMask(const Parts &parts, QSize pixelSize)
{
    QImage image(pixelSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    if (pixelSize.isEmpty())
        return image;
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF canvas = fittedRect(designSizeOf(parts), pixelSize);
    if (!parts.badge) {
        renderSvg(painter, svgOf(*parts.base), canvas, mirroredNow(*parts.base));
        return image;
    }
    const qreal unit = canvas.width() / compositeSize.width();
    const QRectF pinRect(canvas.topLeft() + compositePinRect.topLeft() * unit,
                         compositePinRect.size() * unit);
    renderSvg(painter, svgOf(*parts.base), pinRect, mirroredNow(*parts.base));
    // The rim: the badge drawn wider, cut out of the pin.
    QImage rim(pixelSize, QImage::Format_ARGB32_Premultiplied);
    rim.fill(Qt::transparent);
    {
        QPainter rimPainter(&rim);
        rimPainter.setRenderHint(QPainter::Antialiasing);
        renderBadge(rimPainter, *parts.badge, canvas, 2 * badgeRim);
    }
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.drawImage(0, 0, rim);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    renderBadge(painter, *parts.badge, canvas, 0);
    return image;
}

QImage tinted(QImage mask, const QColor &color)
{
    QPainter painter(&mask);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(mask.rect(), color);
    return mask;
}

// A theme's symbolic icon as a shape to tint, fitted as the bundled drawings are.
QImage themeMask(const QIcon &themeIcon, QSize pixelSize)
{
    QImage image(pixelSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const QPixmap drawn = themeIcon.pixmap(pixelSize, 1.0);
    QPainter painter(&image);
    painter.drawPixmap((pixelSize.width() - drawn.width()) / 2,
                       (pixelSize.height() - drawn.height()) / 2, drawn);
    return image;
}

// Draws a symbol in a fixed colour, or in the application palette's text colour for the icon's
// mode at the time of painting. The shape is the bundled drawing, or a theme's symbolic icon.
class SymbolIconEngine : public QIconEngine
{
public:
    SymbolIconEngine(QString name, std::optional<QColor> color, QIcon themeShape = {})
        : m_name(std::move(name))
        , m_color(std::move(color))
        , m_themeShape(std::move(themeShape))
    { }

    QIconEngine *clone() const override
    {
        return new SymbolIconEngine(m_name, m_color, m_themeShape);
    }
    QString key() const override { return u"palomet.symbol"_s; }
    QString iconName() override { return m_name; }

    QSize actualSize(const QSize &size, QIcon::Mode, QIcon::State) override
    {
        return fittedRect(designSizeOf(partsOf(m_name)), size).size().toSize();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        const QSize pixelSize = actualSize(size, mode, state);
        const QColor color = colorFor(mode);
        const QString cacheKey = QString::number(pixelSize.width()) + u'x'
            + QString::number(pixelSize.height()) + u'/' + QString::number(color.rgba(), 16) + u'/'
            + QString::number(int(QGuiApplication::layoutDirection()));
        if (const auto cached = m_cache.constFind(cacheKey); cached != m_cache.cend())
            return *cached;
        if (m_cache.size() >= 32)
            m_cache.clear();
        const QImage mask = m_themeShape.isNull() ? renderMask(partsOf(m_name), pixelSize)
                                                  : themeMask(m_themeShape, pixelSize);
        const QPixmap pixmap = QPixmap::fromImage(tinted(mask, color));
        m_cache.insert(cacheKey, pixmap);
        return pixmap;
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
        QPixmap drawn = pixmap(rect.size() * ratio, mode, state);
        drawn.setDevicePixelRatio(ratio);
        const QSizeF logical = drawn.deviceIndependentSize();
        const QPointF topLeft(rect.x() + (rect.width() - logical.width()) / 2,
                              rect.y() + (rect.height() - logical.height()) / 2);
        painter->drawPixmap(topLeft, drawn);
    }

private:
    QColor colorFor(QIcon::Mode mode) const
    {
        if (m_color)
            return *m_color;
        const QPalette palette = QGuiApplication::palette();
        switch (mode) {
        case QIcon::Disabled:
            return palette.color(QPalette::Disabled, QPalette::WindowText);
        case QIcon::Selected:
            return palette.color(QPalette::Active, QPalette::HighlightedText);
        case QIcon::Normal:
        case QIcon::Active:
            break;
        }
        return palette.color(QPalette::Active, QPalette::WindowText);
    }

    QString m_name;
    std::optional<QColor> m_color;
    QIcon m_themeShape;
    QHash<QString, QPixmap> m_cache;
};

} // namespace

QIcon SymbolIcons::icon(QStringView name)
{
    const Parts parts = partsOf(name);
    if (!parts.badge && !parts.base->themeName.isEmpty()) {
        // A symbolic icon is a monochrome shape meant to be recoloured: tinted like the bundled
        // drawings, it follows the palette where the theme's own colours would not.
        const QString themeName = parts.base->themeName.toString();
        const QString symbolic = themeName + u"-symbolic"_s;
        if (QIcon::hasThemeIcon(symbolic))
            return QIcon(
                new SymbolIconEngine(name.toString(), std::nullopt, QIcon::fromTheme(symbolic)));
        if (QIcon::hasThemeIcon(themeName))
            return QIcon::fromTheme(themeName);
    }
    return QIcon(new SymbolIconEngine(name.toString(), std::nullopt));
}

QIcon SymbolIcons::icon(QStringView name, const QColor &color)
{
    partsOf(name);
    return QIcon(new SymbolIconEngine(name.toString(), color));
}

QPixmap SymbolIcons::pixmap(QStringView name, const QColor &color, QSize size,
                            qreal devicePixelRatio)
{
    QPixmap pixmap = QPixmap::fromImage(image(name, color, size * devicePixelRatio));
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

QImage SymbolIcons::image(QStringView name, const QColor &color, QSize pixelSize)
{
    return tinted(renderMask(partsOf(name), pixelSize), color);
}

QByteArray SymbolIcons::svg(QStringView name)
{
    return svgOf(symbolNamed(name));
}

QString SymbolIcons::themeIconName(QStringView name)
{
    const Parts parts = partsOf(name);
    return parts.badge ? QString() : parts.base->themeName.toString();
}

QSize SymbolIcons::designSize(QStringView name)
{
    return designSizeOf(partsOf(name)).toSize();
}

QStringList SymbolIcons::names()
{
    QStringList all;
    for (const Symbol &symbol : symbols)
        all.append(symbol.name.toString());
    for (QStringView composite : composites)
        all.append(composite.toString());
    return all;
}
