#pragma once

#include <QScrollArea>
#include <QWidget>

// The scroll container of a description. Its first child must be a ClipWall, which becomes the
// visible area; the clip's child is the document. The document is as wide as the visible area
// and as high as its own content at that width: it grows downward from the top, is never
// stretched to the visible height, and the vertical scroller shows when it is taller.
class ScrollWall : public QScrollArea
{
    Q_OBJECT

public:
    explicit ScrollWall(QWidget *parent = nullptr);

    void setContentView(QWidget *clipView);
    void setDocumentView(QWidget *document);
    // Gives the document its width and its own height again.
    void updateDocumentGeometry();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
};

class ClipWall : public QWidget
{
    Q_OBJECT

public:
    explicit ClipWall(QWidget *parent = nullptr);
};
