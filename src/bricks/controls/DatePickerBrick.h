#pragma once

#include "BrickBinding.h"

#include <QDateTimeEdit>

class DatePickerBrick
    : public QDateTimeEdit
    , public BrickType
{
    Q_OBJECT

public:
    explicit DatePickerBrick(QWidget *parent = nullptr);
    std::function<void(const QDateTime &)> dateValueChangedFunc;

protected:
    QWidget *brickWidget() override { return this; }
};

class DatePickerBrickBinding : public BrickBinding<DatePickerBrick, QDateTime>
{
public:
    using BrickBinding::BrickBinding;

protected:
    Presenter presenter() const override
    {
        return [](DatePickerBrick *brick, const QDateTime &value) {
            brick->setDateTime(value);
        };
    }
    void install(DatePickerBrick *brick, Writer write) override
    {
        brick->dateValueChangedFunc = std::move(write);
    }
};
