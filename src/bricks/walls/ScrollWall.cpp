#include "ScrollWall.h"

ScrollWall::ScrollWall(QWidget *parent)
    : QScrollArea(parent)
{ }

ClipWall::ClipWall(QWidget *parent)
    : QWidget(parent)
{ }
