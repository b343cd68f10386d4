#include "NonExpandingImageView.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace {
constexpr double cellPadding = 4;
constexpr double cellRadius = 6;
} // namespace

NonExpandingImageView::NonExpandingImageView(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    setAttribute(Qt::WA_Hover);
}

void NonExpandingImageView::setImage(const QImage &image)
{
    m_pixmap = image.isNull() ? QPixmap() : QPixmap::fromImage(image);
    update();
}

void NonExpandingImageView::setCellStyle(bool cell)
{
    m_cellStyle = cell;
    update();
}

QRectF NonExpandingImageView::imageArea() const
{
    const QRectF area = rect();
    return m_cellStyle ? area.adjusted(cellPadding, cellPadding, -cellPadding, -cellPadding) : area;
}

QRectF NonExpandingImageView::displayedImageRect() const
{
    const QRectF area = imageArea();
    if (m_pixmap.isNull() || area.isEmpty())
        return {};
    const QSizeF picture = m_pixmap.deviceIndependentSize();
    const double ratio = std::min(area.width() / picture.width(), area.height() / picture.height());
    const QSizeF shown = picture * ratio;
    return QRectF(area.x() + (area.width() - shown.width()) / 2,
                  area.y() + (area.height() - shown.height()) / 2, shown.width(), shown.height());
}

void NonExpandingImageView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (m_cellStyle) {
        QColor tile = palette().color(QPalette::Text);
        tile.setAlphaF(m_hovered ? 0.10f : 0.05f);
        painter.setPen(Qt::NoPen);
        painter.setBrush(tile);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cellRadius,
                                cellRadius);
        if (m_hovered) {
            painter.setPen(QPen(palette().color(QPalette::Highlight), 1.5));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), cellRadius, cellRadius);
        }
    }
    const QRectF target = displayedImageRect();
    if (!target.isEmpty())
        painter.drawPixmap(target, m_pixmap, QRectF(m_pixmap.rect()));
}

void NonExpandingImageView::mousePressEvent(QMouseEvent *event)
{
    m_pressed = event->button() == Qt::LeftButton;
    event->setAccepted(m_pressed);
}

void NonExpandingImageView::mouseReleaseEvent(QMouseEvent *event)
{
    const bool clicked = m_pressed && event->button() == Qt::LeftButton
        && rect().contains(event->position().toPoint());
    m_pressed = false;
    if (clicked && onClick)
        onClick(this);
}

void NonExpandingImageView::enterEvent(QEnterEvent *)
{
    m_hovered = true;
    if (m_cellStyle)
        update();
}

void NonExpandingImageView::leaveEvent(QEvent *)
{
    m_hovered = false;
    if (m_cellStyle)
        update();
}
