#pragma once

#include "bricks/ViewTree.h"

#include <QHash>
#include <QTabWidget>

class Wall;

// Tabs whose pages are walls; each page's title comes from its directive. Bound to a variable,
// the wall shows the page the variable names and hides its tab bar: the program switches pages,
// not the user.
class TabWall
    : public QTabWidget
    , public SubviewAdopting
{
    Q_OBJECT

public:
    explicit TabWall(QWidget *parent = nullptr);
    void adoptSubview(QWidget *child) override;
    void setTabBarHidden(bool hidden);
    // Shows the page; an index without a page leaves the one shown.
    void showTab(int index);

    static void setTabTitle(QWidget *page, const QString &title);

    QHash<Wall *, int> contentWallToTabViewItemDict;
};
