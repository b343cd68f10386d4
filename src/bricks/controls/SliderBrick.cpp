#include "SliderBrick.h"

SliderBrick::SliderBrick(int minimum, int maximum, QWidget *parent)
    : QSlider(Qt::Horizontal, parent)
{
    setRange(minimum, maximum);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(this, &QSlider::valueChanged, this, [this](int value) {
        if (valueChangedFunc)
            valueChangedFunc(value);
    });
}
