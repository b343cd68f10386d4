#pragma once

#include "BrickBinding.h"

#include <QComboBox>

// A pop-up menu of fixed choices; each item may carry the raw value of an enumeration.
class PopUpButtonBrick
    : public QComboBox
    , public BrickType
{
    Q_OBJECT

public:
    explicit PopUpButtonBrick(QWidget *parent = nullptr);
    // Called with the chosen index when the user picks an item.
    std::function<void(int)> selectionChangedFunc;

protected:
    QWidget *brickWidget() override { return this; }
};

// Binds an enumeration by the raw values stored with the items.
template<typename E>
class PopUpButtonBrickBinding : public BrickBinding<PopUpButtonBrick, E>
{
public:
    using BrickBinding<PopUpButtonBrick, E>::BrickBinding;

protected:
    typename BrickBinding<PopUpButtonBrick, E>::Presenter presenter() const override
    {
        return [](PopUpButtonBrick *brick, const E &value) {
            brick->setCurrentIndex(brick->findData(static_cast<int>(value)));
        };
    }
    void install(PopUpButtonBrick *brick,
                 typename BrickBinding<PopUpButtonBrick, E>::Writer write) override
    {
        if (!write) {
            brick->selectionChangedFunc = nullptr;
            return;
        }
        QPointer<PopUpButtonBrick> guarded = brick;
        brick->selectionChangedFunc = [guarded, write](int index) {
            if (guarded)
                write(static_cast<E>(guarded->itemData(index).toInt()));
        };
    }
};

// Binds the index of the chosen item.
class PopUpButtonBrickSimpleIntBinding : public BrickBinding<PopUpButtonBrick, int>
{
public:
    using BrickBinding::BrickBinding;

protected:
    Presenter presenter() const override
    {
        return [](PopUpButtonBrick *brick, const int &value) {
            brick->setCurrentIndex(value);
        };
    }
    void install(PopUpButtonBrick *brick, Writer write) override
    {
        brick->selectionChangedFunc = std::move(write);
    }
};

// An editable combo box whose text is bound.
class ComboBoxBrick
    : public QComboBox
    , public BrickType
{
    Q_OBJECT

public:
    explicit ComboBoxBrick(QWidget *parent = nullptr);
    std::function<void(const QString &)> textChangedAction;

protected:
    QWidget *brickWidget() override { return this; }
};

class ComboBoxBrickBinding : public BrickBinding<ComboBoxBrick, QString>
{
public:
    using BrickBinding::BrickBinding;

protected:
    Presenter presenter() const override
    {
        return [](ComboBoxBrick *brick, const QString &value) {
            if (brick->currentText() != value)
                brick->setEditText(value);
        };
    }
    void install(ComboBoxBrick *brick, Writer write) override
    {
        brick->textChangedAction = std::move(write);
    }
};
