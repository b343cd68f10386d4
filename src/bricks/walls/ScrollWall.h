#pragma once

#include <QScrollArea>
#include <QWidget>

// The scroll container of a description. Its first child must be a ClipWall, which becomes the
// visible area; the clip's child is the document, which grows downward.
class ScrollWall : public QScrollArea
{
    Q_OBJECT

public:
    explicit ScrollWall(QWidget *parent = nullptr);
};

class ClipWall : public QWidget
{
    Q_OBJECT

public:
    explicit ClipWall(QWidget *parent = nullptr);
};
