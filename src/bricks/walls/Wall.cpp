#include "Wall.h"

#include "bricks/layout/ConstraintLayout.h"

#include <QPaintEvent>
#include <QPainter>

Wall::Wall(QWidget *parent)
    : QWidget(parent)
{
    new ConstraintLayout(this);
}

Wall::~Wall() = default;

void Wall::setBackgroundColor(const std::optional<QColor> &color)
{
    backgroundColor = color;
    update();
}

void Wall::setBorders(bool top, bool bottom, bool left, bool right)
{
    drawTopBorder = top;
    drawBottomBorder = bottom;
    drawLeftBorder = left;
    drawRightBorder = right;
    update();
}

void Wall::updateLayerBorder()
{
    m_layerBorderApplied = true;
    update();
}

void Wall::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    if (backgroundDrawingFunc)
        backgroundDrawingFunc(event->rect());
    else if (backgroundColor)
        painter.fillRect(event->rect(), *backgroundColor);

    const QRect bounds = rect();
    if (borderDrawingFunc) {
        borderDrawingFunc(bounds, drawTopBorder, drawBottomBorder, drawLeftBorder, drawRightBorder);
    } else {
        // The sides are shortened where top and bottom lines run, so no corner is painted
        // twice: that would show with a translucent colour.
        const int w = bounds.width(), h = bounds.height();
        const int sideTop = drawTopBorder ? 1 : 0;
        const int sideHeight = h - sideTop - (drawBottomBorder ? 1 : 0);
        if (drawRightBorder)
            painter.fillRect(QRect(w - 1, sideTop, 1, sideHeight), borderColor);
        if (drawLeftBorder)
            painter.fillRect(QRect(0, sideTop, 1, sideHeight), borderColor);
        if (drawTopBorder)
            painter.fillRect(QRect(0, 0, w, 1), borderColor);
        if (drawBottomBorder)
            painter.fillRect(QRect(0, h - 1, w, 1), borderColor);
    }

    if (m_layerBorderApplied && layerBorderColor && layerBorderWidth > 0) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(*layerBorderColor, layerBorderWidth));
        painter.setBrush(Qt::NoBrush);
        const double half = layerBorderWidth / 2;
        painter.drawRoundedRect(QRectF(bounds).adjusted(half, half, -half, -half),
                                layerCornerRadius, layerCornerRadius);
    }
}
