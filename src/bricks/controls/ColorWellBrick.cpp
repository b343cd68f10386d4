#include "ColorWellBrick.h"

#include <QColorDialog>
#include <QPainter>
#include <QPixmap>

ColorWellBrick::ColorWellBrick(const QColor &color, QWidget *parent)
    : QToolButton(parent)
{
    setIconSize(QSize(28, 14));
    setColor(color);
    connect(this, &QToolButton::clicked, this, [this] {
        const QColor chosen = QColorDialog::getColor(m_color, this);
        if (!chosen.isValid())
            return;
        setColor(chosen);
        if (valueChangedFunc)
            valueChangedFunc(chosen);
    });
}

void ColorWellBrick::setColor(const QColor &color)
{
    m_color = color;
    QPixmap swatch(iconSize());
    swatch.fill(color);
    QPainter painter(&swatch);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(swatch.rect().adjusted(0, 0, -1, -1));
    setIcon(swatch);
}
