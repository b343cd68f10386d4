#include "TabWall.h"

#include "Wall.h"

#include <QVariant>

TabWall::TabWall(QWidget *parent)
    : QTabWidget(parent)
{
    setDocumentMode(false);
}

void TabWall::adoptSubview(QWidget *child)
{
    const int index = addTab(child, child->property(tabTitleProperty).toString());
    if (auto *wall = qobject_cast<Wall *>(child))
        contentWallToTabViewItemDict.insert(wall, index);
}
