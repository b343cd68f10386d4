#pragma once

#include "BrickBinding.h"

#include <QCheckBox>

class CheckBoxBrick
    : public QCheckBox
    , public BrickType
{
    Q_OBJECT

public:
    explicit CheckBoxBrick(const QString &title = {}, QWidget *parent = nullptr);
    // Connects the user's clicks to actionMethod; a state set by code sends nothing.
    void setTargetToSelf();
    std::function<void(bool)> actualCheckboxFunc;

protected:
    QWidget *brickWidget() override { return this; }

private:
    void actionMethod();
    bool m_targetSet = false;
};

class CheckBoxBrickBinding : public BrickBinding<CheckBoxBrick, bool>
{
public:
    using BrickBinding::BrickBinding;

protected:
    Presenter presenter() const override
    {
        return [](CheckBoxBrick *brick, const bool &value) {
            brick->setChecked(value);
        };
    }
    void install(CheckBoxBrick *brick, Writer write) override
    {
        brick->actualCheckboxFunc = std::move(write);
        brick->setTargetToSelf();
    }
};

// A tri-state check box bound to the state itself.
class ButtonStateValueCheckBoxBrick
    : public QCheckBox
    , public BrickType
{
    Q_OBJECT

public:
    explicit ButtonStateValueCheckBoxBrick(const QString &title = {}, QWidget *parent = nullptr);
    std::function<void(Qt::CheckState)> actualCheckboxFunc;

protected:
    QWidget *brickWidget() override { return this; }
};

class ButtonStateValueCheckBoxBrickBinding
    : public BrickBinding<ButtonStateValueCheckBoxBrick, Qt::CheckState>
{
public:
    using BrickBinding::BrickBinding;

protected:
    Presenter presenter() const override
    {
        return [](ButtonStateValueCheckBoxBrick *brick, const Qt::CheckState &value) {
            brick->setCheckState(value);
        };
    }
    void install(ButtonStateValueCheckBoxBrick *brick, Writer write) override
    {
        brick->actualCheckboxFunc = std::move(write);
    }
};
