#pragma once

#include "LayoutTag.h"

#include <QHash>
#include <QList>

class QWidget;

// The tags of each view, held weakly: an entry goes away with its view. Main thread only.
class LayoutTagManager
{
public:
    static LayoutTagManager &shared();

    void addTag(QWidget *view, const LayoutTag &tag);
    QList<LayoutTag> layoutTags(QWidget *view) const;
    // Depth first through the subtree of anchored, the anchor included.
    QWidget *firstView(const LayoutTag &tag, QWidget *anchored) const;

private:
    QHash<QWidget *, QList<LayoutTag>> tagsByView;
};
