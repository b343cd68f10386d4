#pragma once

#include "BrickBinding.h"

#include <QPushButton>
#include <QToolButton>

class QMenu;

class PushButtonBrick
    : public QPushButton
    , public BrickType
{
    Q_OBJECT

public:
    explicit PushButtonBrick(const QString &title = {}, QWidget *parent = nullptr);
    std::function<void()> actionFunc;

protected:
    QWidget *brickWidget() override { return this; }
};

// A button that looks like a combo box and offers a menu, whose entries may be grouped under
// section headers. The button shows the chosen entry.
class FakeComboBoxButtonBrick : public PushButtonBrick
{
    Q_OBJECT

public:
    struct Section
    {
        QString header; // empty: no header
        QStringList items;
    };

    explicit FakeComboBoxButtonBrick(const QList<Section> &sections, QWidget *parent = nullptr);
    QMenu *itemMenu() const { return m_menu; }
    std::function<void(const QString &, QAction *)> menuItemFunc;

private:
    QMenu *m_menu;
};

class FakeComboBoxButtonBrickStringBinding : public BrickBinding<FakeComboBoxButtonBrick, QString>
{
public:
    using BrickBinding::BrickBinding;

protected:
    Presenter presenter() const override
    {
        return [](FakeComboBoxButtonBrick *brick, const QString &value) {
            brick->setText(value);
        };
    }
    void install(FakeComboBoxButtonBrick *brick, Writer write) override
    {
        brick->menuItemFunc = write ? std::function<void(const QString &, QAction *)>(
                                  [write](const QString &title, QAction *) { write(title); })
                                    : nullptr;
    }
};

// A button that opens a menu of commands.
class PullDownButtonBrick
    : public QToolButton
    , public BrickType
{
    Q_OBJECT

public:
    PullDownButtonBrick(const QString &title, const QStringList &items, QWidget *parent = nullptr);
    std::function<void(int)> itemChosenFunc;

protected:
    QWidget *brickWidget() override { return this; }
};
