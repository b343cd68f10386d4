#pragma once

class QWidget;

// The few operations that building needs of the widget tree.
namespace ViewTree {

// Makes child a child of parent and hands it to the parent's layout, if it takes children.
void addSubview(QWidget *parent, QWidget *child);

// Brings the layout of the whole subtree up to date now, also for widgets not on screen, whose
// layouts otherwise wait until they are shown.
void layoutSubtreeIfNeeded(QWidget *root);

} // namespace ViewTree

// A container that places its children itself rather than through addSubview's default.
class SubviewAdopting
{
public:
    virtual ~SubviewAdopting() = default;
    virtual void adoptSubview(QWidget *child) = 0;
};
