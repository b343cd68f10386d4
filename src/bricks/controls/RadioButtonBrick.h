#pragma once

#include "BrickBinding.h"

#include <QRadioButton>

// A radio button whose group is kept by its variable rather than by its siblings.
class RadioButtonBrick
    : public QRadioButton
    , public BrickType
{
    Q_OBJECT

public:
    explicit RadioButtonBrick(const QString &title = {}, QWidget *parent = nullptr);
    std::function<void()> selectedFunc;

protected:
    QWidget *brickWidget() override { return this; }
};

class RadioButtonBrickBinding : public BrickBinding<RadioButtonBrick, bool>
{
public:
    using BrickBinding::BrickBinding;

protected:
    Presenter presenter() const override
    {
        return [](RadioButtonBrick *brick, const bool &value) {
            brick->setChecked(value);
        };
    }
    void install(RadioButtonBrick *brick, Writer write) override
    {
        brick->selectedFunc = write ? std::function<void()>([write] { write(true); }) : nullptr;
    }
};

// Checked while the variable holds the button's own value; choosing it stores that value.
template<typename T>
class RadioButtonValueBinding : public BrickBinding<RadioButtonBrick, T>
{
public:
    RadioButtonValueBinding(RadioButtonBrick *brick,
                            std::shared_ptr<ReadWriteVariableType<T>> variable, T value)
        : BrickBinding<RadioButtonBrick, T>(brick, std::move(variable))
        , value(std::move(value))
    { }
    const T value;

protected:
    typename BrickBinding<RadioButtonBrick, T>::Presenter presenter() const override
    {
        return [own = value](RadioButtonBrick *brick, const T &current) {
            brick->setChecked(current == own);
        };
    }
    void install(RadioButtonBrick *brick,
                 typename BrickBinding<RadioButtonBrick, T>::Writer write) override
    {
        const T own = value;
        brick->selectedFunc = write ? std::function<void()>([write, own] { write(own); }) : nullptr;
    }
};

template<typename E>
using RadioButtonEnumBinding = RadioButtonValueBinding<E>;
using RadioButtonStringBinding = RadioButtonValueBinding<QString>;
