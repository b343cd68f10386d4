#pragma once

#include "LayoutTag.h"

#include <QList>

class QWidget;

// The tags of each view, kept with the view's attachments so that they go away with it. Main
// thread only.
class LayoutTagManager
{
public:
    static LayoutTagManager &shared();

    void addTag(QWidget *view, const LayoutTag &tag);
    QList<LayoutTag> layoutTags(const QWidget *view) const;
    // Depth first through the subtree of anchored, the anchor included.
    QWidget *firstView(const LayoutTag &tag, QWidget *anchored) const;
};
