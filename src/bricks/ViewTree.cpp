#include "ViewTree.h"

#include <QBoxLayout>
#include <QWidget>

namespace ViewTree {

void addSubview(QWidget *parent, QWidget *child)
{
    if (auto *adopting = dynamic_cast<SubviewAdopting *>(parent)) {
        adopting->adoptSubview(child);
    } else {
        child->setParent(parent);
        if (QLayout *layout = parent->layout())
            layout->addWidget(child);
    }
    // A widget given a new parent is hidden until shown again, once the parent is on screen.
    if (parent->isVisible() && !child->isVisible())
        child->show();
}

void layoutSubtreeIfNeeded(QWidget *root)
{
    if (QLayout *layout = root->layout()) {
        layout->activate();
        if (layout->geometry() != root->rect())
            layout->setGeometry(root->rect());
    }
    for (QObject *child : root->children()) {
        if (auto *widget = qobject_cast<QWidget *>(child); widget && !widget->isWindow())
            layoutSubtreeIfNeeded(widget);
    }
}

} // namespace ViewTree
