#include "BrickBinding.h"

#include <QWidget>

void BrickType::setBrickSize(BrickSize size)
{
    QWidget *widget = brickWidget();
    if (size == BrickSize::inherited || size == BrickSize::standard) {
        widget->setFont(QFont());
        return;
    }
    QFont font = widget->font();
    font.setPointSizeF(font.pointSizeF() * (size == BrickSize::small ? 11.0 / 13.0 : 9.0 / 13.0));
    widget->setFont(font);
}
