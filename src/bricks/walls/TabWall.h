#pragma once

#include "bricks/ViewTree.h"

#include <QHash>
#include <QTabWidget>

class Wall;

// Tabs whose pages are walls; each page's title comes from its directive.
class TabWall
    : public QTabWidget
    , public SubviewAdopting
{
    Q_OBJECT

public:
    explicit TabWall(QWidget *parent = nullptr);
    void adoptSubview(QWidget *child) override;

    static constexpr const char *tabTitleProperty = "bricksTabTitle";
    QHash<Wall *, int> contentWallToTabViewItemDict;
};
