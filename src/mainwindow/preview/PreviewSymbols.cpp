#include "PreviewSymbols.h"

#include "bricks/SymbolIcons.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace {

class SymbolEngine : public QIconEngine
{
public:
    explicit SymbolEngine(QString name)
        : m_name(std::move(name))
    { }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        const QPalette palette = QApplication::palette();
        QColor ink = palette.color(mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active,
                                   QPalette::ButtonText);
        if (mode == QIcon::Disabled)
            ink.setAlphaF(0.35f);
        // Drawn on a 16-unit square, centred in the rect.
        const double side = std::min(rect.width(), rect.height());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.x() + (rect.width() - side) / 2,
                           rect.y() + (rect.height() - side) / 2);
        painter->scale(side / 16.0, side / 16.0);
        QPen pen(ink, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
        painter->setPen(pen);
        painter->setBrush(Qt::NoBrush);
        if (m_name == QLatin1String("square.grid.2x2")) {
            pen.setWidthF(1.3);
            painter->setPen(pen);
            for (const QPointF &corner :
                 {QPointF(2.5, 2.5), QPointF(9, 2.5), QPointF(2.5, 9), QPointF(9, 9)})
                painter->drawRoundedRect(QRectF(corner, QSizeF(4.5, 4.5)), 1, 1);
        } else if (m_name == QLatin1String("square")) {
            pen.setWidthF(1.3);
            painter->setPen(pen);
            painter->drawRoundedRect(QRectF(2.5, 2.5, 11, 11), 2, 2);
        }
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(size, mode, state, 1.0);
    }

    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State state,
                         qreal scale) override
    {
        QPixmap pixmap(size * scale);
        pixmap.setDevicePixelRatio(scale);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }

    QIconEngine *clone() const override { return new SymbolEngine(m_name); }
    QString key() const override { return QStringLiteral("PaletteSymbol"); }

private:
    QString m_name;
};

} // namespace

namespace PreviewSymbols {

QIcon icon(const QString &name)
{
    if (name == QLatin1String("square.grid.2x2") || name == QLatin1String("square"))
        return QIcon(new SymbolEngine(name));
    return SymbolIcons::icon(name);
}

} // namespace PreviewSymbols
