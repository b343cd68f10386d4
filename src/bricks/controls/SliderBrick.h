#pragma once

#include "BrickBinding.h"

#include <QSlider>

class SliderBrick
    : public QSlider
    , public BrickType
{
    Q_OBJECT

public:
    SliderBrick(int minimum, int maximum, QWidget *parent = nullptr);
    std::function<void(int)> valueChangedFunc;

protected:
    QWidget *brickWidget() override { return this; }
};

class SliderBrickBinding : public BrickBinding<SliderBrick, int>
{
public:
    using BrickBinding::BrickBinding;

protected:
    Presenter presenter() const override
    {
        return [](SliderBrick *brick, const int &value) {
            brick->setValue(value);
        };
    }
    void install(SliderBrick *brick, Writer write) override
    {
        brick->valueChangedFunc = std::move(write);
    }
};
