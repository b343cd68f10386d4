#pragma once

#include "ImagePreviewConfiguration.h"
#include "ImagePreviewItem.h"

#include <QFrame>
#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class ImagePreviewPopoverViewController;

// A transient window with a larger view of one file, beside the preview it was opened from. A
// click outside it, Escape or its close button dismisses it; its back and forward buttons step
// through the same list and tell the preview through onNavigate.
class ImagePreviewPopover : public QObject
{
    Q_OBJECT

public:
    ImagePreviewPopover(const QList<ImagePreviewItem> &items, int currentIndex,
                        const ImagePreviewConfiguration &configuration, QWidget *owner);
    ~ImagePreviewPopover() override;

    QFrame *popover() const { return m_popover; }
    ImagePreviewPopoverViewController *contentViewController() const
    {
        return m_contentViewController.get();
    }

    // Shows the window next to rect (in view's coordinates): on the side of the view with more
    // room, kept on the screen.
    void show(const QRect &rect, QWidget *view);
    void close();

    std::function<void(int)> onNavigate;
    // Runs once the window has closed, however it closed.
    std::function<void()> onDismiss;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void popoverDidClose();

    QPointer<QFrame> m_popover;
    std::unique_ptr<ImagePreviewPopoverViewController> m_contentViewController;
    bool m_dismissed = false;
};
