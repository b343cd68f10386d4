#include "MapSymbols.h"

#include "bricks/SymbolIcons.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>

#include <functional>

namespace {

using Drawing = std::function<void(QPainter &, const QRectF &)>;

// A line drawing in the colour of text at the moment it is painted, so that it follows a
// switch between light and dark.
class DrawnIconEngine : public QIconEngine
{
public:
    explicit DrawnIconEngine(Drawing drawing)
        : m_drawing(std::move(drawing))
    { }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        const QColor colour = QApplication::palette().color(
            mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active, QPalette::WindowText);
        const double size = std::min(rect.width(), rect.height()) * 0.8;
        const QRectF area(rect.x() + (rect.width() - size) / 2.0,
                          rect.y() + (rect.height() - size) / 2.0, size, size);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(colour, std::max(1.0, size / 11.0), Qt::SolidLine, Qt::RoundCap));
        painter->setBrush(Qt::NoBrush);
        m_drawing(*painter, area);
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }

    QIconEngine *clone() const override { return new DrawnIconEngine(m_drawing); }

private:
    Drawing m_drawing;
};

} // namespace

namespace MapSymbols {

QIcon icon(const QString &symbol, const QString &badge, const QString &themeFallback)
{
    const QString name = badge.isEmpty() ? symbol : symbol + u'+' + badge;
    if (SymbolIcons::names().contains(name))
        return SymbolIcons::icon(name);
    return QIcon::fromTheme(themeFallback.isEmpty() ? name : themeFallback);
}

QIcon globe()
{
    return QIcon(new DrawnIconEngine([](QPainter &painter, const QRectF &area) {
        painter.drawEllipse(area);
        painter.drawEllipse(area.adjusted(area.width() * 0.28, 0, -area.width() * 0.28, 0));
        painter.drawLine(QPointF(area.center().x(), area.top()),
                         QPointF(area.center().x(), area.bottom()));
        painter.drawLine(QPointF(area.left(), area.center().y()),
                         QPointF(area.right(), area.center().y()));
    }));
}

QIcon magnifier()
{
    return QIcon(new DrawnIconEngine([](QPainter &painter, const QRectF &area) {
        const QRectF lens(area.topLeft(), area.size() * 0.68);
        painter.drawEllipse(lens);
        painter.drawLine(lens.center() + QPointF(lens.width(), lens.height()) * 0.36,
                         area.bottomRight());
    }));
}

} // namespace MapSymbols
