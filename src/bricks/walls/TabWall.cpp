#include "TabWall.h"

#include "Wall.h"
#include "bricks/ViewAttachments.h"

#include <QTabBar>

TabWall::TabWall(QWidget *parent)
    : QTabWidget(parent)
{
    setDocumentMode(false);
}

void TabWall::adoptSubview(QWidget *child)
{
    const ViewAttachment *attached = ViewAttachments::find(child);
    const int index = addTab(child, attached ? attached->tabTitle : QString());
    if (auto *wall = qobject_cast<Wall *>(child))
        contentWallToTabViewItemDict.insert(wall, index);
}

// Without its bar the wall draws no frame either: the page stands flush in its place.
void TabWall::setTabBarHidden(bool hidden)
{
    tabBar()->setVisible(!hidden);
    setDocumentMode(hidden);
}

void TabWall::showTab(int index)
{
    if (index >= 0 && index < count())
        setCurrentIndex(index);
}

void TabWall::setTabTitle(QWidget *page, const QString &title)
{
    ViewAttachments::of(page).tabTitle = title;
}
