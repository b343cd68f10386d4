#pragma once

#include "Wall.h"

class FragmentStackView;

// A pane in a stack of panes; the stack hides it by visibility priority and closes the gap.
class FragmentWall : public Wall
{
    Q_OBJECT

public:
    explicit FragmentWall(QWidget *parent = nullptr);
    // Called once the fragment stands in its stack.
    virtual void install(FragmentStackView *parentStackView);
};
