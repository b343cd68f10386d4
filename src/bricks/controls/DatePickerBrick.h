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
    void show(DatePickerBrick *brick, const QDateTime &value) override
    {
        brick->setDateTime(value);
    }
    void install(DatePickerBrick *brick, Writer write) override
    {
        brick->dateValueChangedFunc = std::move(write);
    }
};
