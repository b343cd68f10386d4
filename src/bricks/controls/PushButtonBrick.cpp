#include "PushButtonBrick.h"

#include <QMenu>

PushButtonBrick::PushButtonBrick(const QString &title, QWidget *parent)
    : QPushButton(title, parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(this, &QPushButton::clicked, this, [this] {
        if (actionFunc)
            actionFunc();
    });
}

FakeComboBoxButtonBrick::FakeComboBoxButtonBrick(const QList<Section> &sections, QWidget *parent)
    : PushButtonBrick(QString(), parent)
    , m_menu(new QMenu(this))
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    for (const Section &section : sections) {
        if (!section.header.isEmpty())
            m_menu->addSection(section.header);
        for (const QString &item : section.items) {
            QAction *action = m_menu->addAction(item);
            connect(action, &QAction::triggered, this, [this, action] {
                setText(action->text());
                if (menuItemFunc)
                    menuItemFunc(action->text(), action);
            });
        }
    }
    setMenu(m_menu);
}

PullDownButtonBrick::PullDownButtonBrick(const QString &title, const QStringList &items,
                                         QWidget *parent)
    : QToolButton(parent)
{
    setText(title);
    setPopupMode(QToolButton::InstantPopup);
    setToolButtonStyle(Qt::ToolButtonTextOnly);
    auto *menu = new QMenu(this);
    for (int i = 0; i < items.size(); ++i) {
        connect(menu->addAction(items[i]), &QAction::triggered, this, [this, i] {
            if (itemChosenFunc)
                itemChosenFunc(i);
        });
    }
    setMenu(menu);
}
