#include "ScrollWall.h"

#include "bricks/layout/ConstraintLayout.h"

#include <QEvent>

#include <algorithm>

ScrollWall::ScrollWall(QWidget *parent)
    : QScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    // The scroller hides itself while the document fits; the document's width always does.
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(false);
    // A click on the scroller's background must not take the focus from a field being edited:
    // that would end the edit and commit it, and with a button's click commit it twice. The
    // fields inside still take the focus, and Tab still scrolls them into view.
    setFocusPolicy(Qt::NoFocus);
}

void ScrollWall::setContentView(QWidget *clipView)
{
    setViewport(clipView);
    clipView->setAutoFillBackground(false);
}

void ScrollWall::setDocumentView(QWidget *document)
{
    setWidget(document);
    updateDocumentGeometry();
}

void ScrollWall::updateDocumentGeometry()
{
    QWidget *document = widget();
    if (!document)
        return;
    const int width = viewport()->width();
    int height = 0;
    if (auto *layout = qobject_cast<ConstraintLayout *>(document->layout()))
        height = layout->fittingHeight(width);
    else if (document->hasHeightForWidth())
        height = document->heightForWidth(width);
    else
        height = document->sizeHint().height();
    height = std::clamp(height, document->minimumHeight(), document->maximumHeight());
    document->resize(width, height);
}

// The document asks for a new layout when its content changes; by then its layout is up to date.
bool ScrollWall::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == widget() && event->type() == QEvent::LayoutRequest)
        updateDocumentGeometry();
    return QScrollArea::eventFilter(watched, event);
}

void ScrollWall::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    updateDocumentGeometry();
}

ClipWall::ClipWall(QWidget *parent)
    : QWidget(parent)
{ }
