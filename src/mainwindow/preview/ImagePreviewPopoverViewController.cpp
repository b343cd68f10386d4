#include "ImagePreviewPopoverViewController.h"

#include "ImagePreviewView.h"
#include "NonExpandingImageView.h"
#include "PreviewSymbols.h"

#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QToolButton>

// Results come to the generator's delegate, which this widget can't be directly: the generator
// holds its delegate weakly, and a widget is owned by its parent.
class ImagePreviewPopoverViewController::GeneratorDelegate : public ThumbnailGeneratorDelegate
{
public:
    explicit GeneratorDelegate(ImagePreviewPopoverViewController *owner)
        : owner(owner)
    { }
    void thumbnailGenerator(ThumbnailGenerator &, const ThumbnailResult &result) override
    {
        owner->didGenerate(result);
    }
    ImagePreviewPopoverViewController *owner;
};

namespace {

QToolButton *makeButton(QWidget *parent, const QString &symbol, const QString &tip)
{
    auto *button = new QToolButton(parent);
    button->setIcon(PreviewSymbols::icon(symbol));
    button->setIconSize(QSize(16, 16));
    button->setAutoRaise(true);
    button->setFixedSize(28, 28);
    button->setFocusPolicy(Qt::NoFocus);
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    return button;
}

} // namespace

ImagePreviewPopoverViewController::ImagePreviewPopoverViewController(
    const QList<ImagePreviewItem> &items, int currentIndex,
    const ImagePreviewConfiguration &configuration)
    : m_items(items)
    , m_currentIndex(currentIndex)
    , m_configuration(configuration)
    , m_thumbnailGenerator(ThumbnailGenerator::create(1, 1))
    , m_delegate(std::make_shared<GeneratorDelegate>(this))
{
    m_thumbnailGenerator->setDelegate(m_delegate);
}

ImagePreviewPopoverViewController::~ImagePreviewPopoverViewController()
{
    m_thumbnailGenerator->cancelAllRequests();
}

QSize ImagePreviewPopoverViewController::viewSize() const
{
    return QSize(int(m_configuration.maxPopoverWidth) + imageInsets.left() + imageInsets.right(),
                 int(m_configuration.maxPopoverHeight) + imageInsets.top() + imageInsets.bottom());
}

QWidget *ImagePreviewPopoverViewController::build()
{
    auto *view = new QWidget;
    view->setFocusPolicy(Qt::StrongFocus);
    const QSize size = viewSize();
    view->setFixedSize(size);
    m_imageView = new NonExpandingImageView(view);
    m_titleLabel = new QLabel(view);
    m_backButton = makeButton(view, QStringLiteral("chevron.left"), tr("Previous"));
    m_forwardButton = makeButton(view, QStringLiteral("chevron.right"), tr("Next"));
    m_closeButton = makeButton(view, QStringLiteral("xmark"), tr("Close"));

    m_imageView->setGeometry(QRect(QPoint(), size) - imageInsets);
    const int barMiddle = imageInsets.top() / 2;
    m_closeButton->move(imageInsets.left(), barMiddle - m_closeButton->height() / 2);
    m_forwardButton->move(size.width() - imageInsets.right() - m_forwardButton->width(),
                          barMiddle - m_forwardButton->height() / 2);
    m_backButton->move(m_forwardButton->x() - m_backButton->width(), m_forwardButton->y());
    const int titleLeft = m_closeButton->geometry().right() + 8;
    m_titleLabel->setGeometry(titleLeft, 0, m_backButton->x() - 8 - titleLeft, imageInsets.top());
    m_titleLabel->setAlignment(Qt::AlignCenter);
    QFont bold = m_titleLabel->font();
    bold.setBold(true);
    m_titleLabel->setFont(bold);

    connect(m_backButton, &QToolButton::clicked, this, [this] { navigateBack(); });
    connect(m_forwardButton, &QToolButton::clicked, this, [this] { navigateForward(); });
    connect(m_closeButton, &QToolButton::clicked, this, [this] { closeClicked(); });
    updateDisplay();
    return view;
}

QString ImagePreviewPopoverViewController::title() const
{
    return m_titleLabel ? m_titleLabel->text() : QString();
}

void ImagePreviewPopoverViewController::updateDisplay()
{
    if (!m_imageView || m_currentIndex < 0 || m_currentIndex >= m_items.size())
        return;
    const ImagePreviewItem &item = m_items[m_currentIndex];
    const QString name = QFileInfo(item.path).fileName();
    m_titleLabel->setText(
        m_titleLabel->fontMetrics().elidedText(name, Qt::ElideMiddle, m_titleLabel->width()));
    m_titleLabel->setToolTip(item.path);
    m_imageView->setAccessibleName(name);
    // The preview's smaller picture stands in until the large one is made.
    m_imageView->setImage(item.thumbnail.value_or(QImage()));
    updateNavigationButtons();
    // Only the file on show is worth making: stepping quickly leaves no queue behind.
    m_thumbnailGenerator->cancelAllRequests();
    m_thumbnailGenerator->requestThumbnail(
        item, m_currentIndex,
        QSizeF(m_configuration.maxPopoverWidth, m_configuration.maxPopoverHeight));
}

void ImagePreviewPopoverViewController::updateNavigationButtons()
{
    m_backButton->setEnabled(m_currentIndex >= 1);
    m_forwardButton->setEnabled(m_currentIndex < m_items.size() - 1);
}

void ImagePreviewPopoverViewController::navigateBack()
{
    if (m_currentIndex < 1)
        return;
    --m_currentIndex;
    if (onNavigate)
        onNavigate(m_currentIndex);
    updateDisplay();
}

void ImagePreviewPopoverViewController::navigateForward()
{
    if (m_currentIndex >= m_items.size() - 1)
        return;
    ++m_currentIndex;
    if (onNavigate)
        onNavigate(m_currentIndex);
    updateDisplay();
}

void ImagePreviewPopoverViewController::closeClicked()
{
    if (onClose)
        onClose();
}

bool ImagePreviewPopoverViewController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == view() && event->type() == QEvent::KeyPress) {
        switch (static_cast<QKeyEvent *>(event)->key()) {
        case Qt::Key_Escape:
            closeClicked();
            return true;
        case Qt::Key_Left:
            navigateBack();
            return true;
        case Qt::Key_Right:
            navigateForward();
            return true;
        default:
            break;
        }
    }
    return NiblessViewController::eventFilter(watched, event);
}

void ImagePreviewPopoverViewController::didGenerate(const ThumbnailResult &result)
{
    if (result.index < 0 || result.index >= m_items.size()
        || m_items[result.index].path != result.path)
        return;
    m_items[result.index].thumbnail = result.image;
    if (result.index != m_currentIndex || !m_imageView)
        return;
    m_imageView->setImage(result.image ? *result.image
                                       : ImagePreviewView::documentIcon(m_imageView->size()));
}
