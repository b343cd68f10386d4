#include "ImagePreviewPopover.h"

#include "ImagePreviewPopoverViewController.h"

#include <QEvent>
#include <QFrame>
#include <QScreen>
#include <QVBoxLayout>

namespace {
constexpr int gapToView = 6;
} // namespace

ImagePreviewPopover::ImagePreviewPopover(const QList<ImagePreviewItem> &items, int currentIndex,
                                         const ImagePreviewConfiguration &configuration,
                                         QWidget *owner)
    : QObject(owner)
    , m_popover(new QFrame(owner, Qt::Popup))
    , m_contentViewController(NiblessViewController::make<ImagePreviewPopoverViewController>(
          items, currentIndex, configuration))
{
    m_popover->setFrameShape(QFrame::StyledPanel);
    m_popover->setAttribute(Qt::WA_DeleteOnClose, false);
    m_popover->setAccessibleName(tr("Image Preview"));
    auto *layout = new QVBoxLayout(m_popover);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->addWidget(m_contentViewController->view());
    m_popover->installEventFilter(this);
    m_contentViewController->onNavigate = [this](int index) {
        if (onNavigate)
            onNavigate(index);
    };
    m_contentViewController->onClose = [this] {
        close();
    };
}

ImagePreviewPopover::~ImagePreviewPopover()
{
    if (m_popover) {
        m_popover->removeEventFilter(this);
        delete m_popover;
    }
}

void ImagePreviewPopover::show(const QRect &rect, QWidget *view)
{
    m_popover->adjustSize();
    const QSize size = m_popover->sizeHint();
    const QRect anchor(view->mapToGlobal(rect.topLeft()), rect.size());
    const QScreen *screen = view->screen();
    const QRect available = screen ? screen->availableGeometry() : QRect(anchor.center(), size);
    const int roomLeft = anchor.left() - available.left();
    const int roomRight = available.right() - anchor.right();
    QPoint origin;
    if (roomLeft >= size.width() + gapToView || roomLeft >= roomRight)
        origin.setX(anchor.left() - gapToView - size.width());
    else
        origin.setX(anchor.right() + gapToView);
    origin.setY(anchor.center().y() - size.height() / 2);
    // On the screen, even when that means covering the view.
    origin.setX(std::clamp(origin.x(), available.left(),
                           std::max(available.left(), available.right() - size.width())));
    origin.setY(std::clamp(origin.y(), available.top(),
                           std::max(available.top(), available.bottom() - size.height())));
    m_popover->move(origin);
    m_popover->show();
    m_contentViewController->view()->setFocus();
}

void ImagePreviewPopover::close()
{
    if (m_popover)
        m_popover->close();
}

bool ImagePreviewPopover::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_popover && event->type() == QEvent::Hide)
        popoverDidClose();
    return QObject::eventFilter(watched, event);
}

void ImagePreviewPopover::popoverDidClose()
{
    if (m_dismissed)
        return;
    m_dismissed = true;
    if (onDismiss)
        onDismiss();
}
