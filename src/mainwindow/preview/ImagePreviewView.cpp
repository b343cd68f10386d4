#include "ImagePreviewView.h"

#include "ControlsOverlayView.h"
#include "ImagePreviewPopover.h"
#include "NonExpandingImageView.h"
#include "PreviewSymbols.h"
#include "bricks/SymbolIcons.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileInfo>
#include <QGraphicsDropShadowEffect>
#include <QIcon>
#include <QKeyEvent>
#include <QPainter>

namespace {

constexpr int fadeDurationMs = 200;

// One sheet of the pile that hints at further files behind the single image.
class StackLayer : public QWidget
{
public:
    explicit StackLayer(QWidget *parent)
        : QWidget(parent)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        auto *shadow = new QGraphicsDropShadowEffect(this);
        shadow->setColor(QColor(0, 0, 0, int(0.15 * 255)));
        shadow->setOffset(1, 1);
        shadow->setBlurRadius(4);
        setGraphicsEffect(shadow);
        hide();
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QColor edge = palette().color(QPalette::WindowText);
        edge.setAlphaF(0.35f);
        painter.setPen(QPen(edge, 1));
        painter.setBrush(palette().color(QPalette::Base));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    }
};

QString fileName(const ImagePreviewItem &item)
{
    return QFileInfo(item.path).fileName();
}

} // namespace

ImagePreviewView::ImagePreviewView(const ImagePreviewConfiguration &configuration, QWidget *parent)
    : QWidget(parent)
    , m_controller(ImagePreviewController::create(configuration))
    , m_contentView(new QWidget(this))
    , m_controlsContainer(new ControlsOverlayView(this))
{
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Image Preview"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_controlsContainer->hide();
    connect(m_controlsContainer->backButton(), &QAbstractButton::clicked, this,
            [this] { m_controller->navigateBackward(); });
    connect(m_controlsContainer->forwardButton(), &QAbstractButton::clicked, this,
            [this] { m_controller->navigateForward(); });
    connect(m_controlsContainer->gridToggleButton(), &QAbstractButton::clicked, this,
            [this] { m_controller->toggleGridMode(); });
    m_controller->setDisplay(this);
}

ImagePreviewView::~ImagePreviewView()
{
    m_controller->setDisplay(nullptr);
}

void ImagePreviewView::bindPaths(std::shared_ptr<ReadWriteVariableType<QStringList>> variable)
{
    m_controller->bindPaths(std::move(variable));
}

void ImagePreviewView::bindSelection(std::shared_ptr<ReadWriteVariableType<int>> variable)
{
    m_controller->bindSelection(std::move(variable));
}

QSizeF ImagePreviewView::previewBounds() const
{
    return isVisible() ? QSizeF(size()) : QSizeF();
}

void ImagePreviewView::clearContent()
{
    update(); // the placeholder of an empty list
    // Deleted later: a cell's own click may be what redraws the content.
    for (QWidget *view : std::as_const(m_imageViews)) {
        view->hide();
        view->deleteLater();
    }
    m_imageViews.clear();
    for (QWidget *layer : std::as_const(m_stackIndicatorViews)) {
        layer->hide();
        layer->deleteLater();
    }
    m_stackIndicatorViews.clear();
    m_singleImageView = nullptr;
}

void ImagePreviewView::showImage(NonExpandingImageView *view, const ImagePreviewItem &item)
{
    if (item.thumbnail)
        view->setImage(*item.thumbnail);
    else if (item.loadFailed)
        view->setImage(documentIcon(view->size()));
}

void ImagePreviewView::updateSingleModeDisplay()
{
    clearContent();
    const QList<ImagePreviewItem> &items = m_controller->items();
    const int index = m_controller->currentIndex();
    if (index < 0 || index >= items.size())
        return;
    auto *imageView = new NonExpandingImageView(m_contentView);
    const double margin = ImagePreviewController::outerMargin;
    imageView->setGeometry(
        QRectF(QPointF(margin, margin), previewBounds() - QSizeF(2 * margin, 2 * margin)).toRect());
    imageView->setPreviewIndex(index);
    imageView->setToolTip(fileName(items[index]));
    imageView->setAccessibleName(fileName(items[index]));
    imageView->onClick = [this](NonExpandingImageView *) {
        singleImageClicked();
    };
    showImage(imageView, items[index]);
    m_imageViews.append(imageView);
    m_singleImageView = imageView;
    if (items.size() > 1)
        createStackIndicator(imageView);
    imageView->show();
}

void ImagePreviewView::createStackIndicator(NonExpandingImageView *behind)
{
    const int layers = std::min<int>(int(m_controller->items().size()) - 1, 2);
    for (int i = 0; i < layers; ++i) {
        auto *layer = new StackLayer(m_contentView);
        layer->stackUnder(behind);
        m_stackIndicatorViews.append(layer);
    }
    updateStackIndicatorLayout(stackStep);
}

void ImagePreviewView::updateStackIndicatorLayout(double stepSize)
{
    if (!m_singleImageView)
        return;
    const QRectF drawn
        = m_singleImageView->displayedImageRect().translated(m_singleImageView->pos());
    if (drawn.width() <= 0 || drawn.height() <= 0)
        return;
    // Each sheet lies one step further up and to the right; the farthest is the lowest.
    for (int i = 0; i < m_stackIndicatorViews.size(); ++i) {
        QWidget *layer = m_stackIndicatorViews[i];
        const double offset = stepSize * (i + 1);
        layer->setGeometry(drawn.translated(offset, -offset).toRect());
        layer->show();
        if (i > 0)
            layer->stackUnder(m_stackIndicatorViews[i - 1]);
    }
}

NonExpandingImageView *ImagePreviewView::createGridCell(int index, const QRectF &frame)
{
    const ImagePreviewItem &item = m_controller->items()[index];
    auto *cell = new NonExpandingImageView(m_contentView);
    cell->setCellStyle(true);
    cell->setGeometry(frame.toRect());
    cell->setPreviewIndex(index);
    cell->setToolTip(fileName(item));
    cell->setAccessibleName(fileName(item));
    cell->setCursor(Qt::PointingHandCursor);
    cell->onClick = [this](NonExpandingImageView *clicked) {
        m_controller->gridCellClicked(clicked->previewIndex());
    };
    showImage(cell, item);
    return cell;
}

void ImagePreviewView::updateGridModeDisplay()
{
    clearContent();
    const QSizeF cellSize = m_controller->gridCellSize();
    if (cellSize.width() <= 0 || cellSize.height() <= 0)
        return;
    const ImagePreviewGridLayout grid = m_controller->activeGridLayout();
    const double margin = ImagePreviewController::outerMargin;
    const double gap = ImagePreviewController::gridGap;
    const int first = m_controller->gridPageIndex() * grid.cells();
    for (int index : m_controller->gridPageIndices()) {
        const int position = index - first;
        const QPointF origin(margin + (position % grid.columns) * (cellSize.width() + gap),
                             margin + (position / grid.columns) * (cellSize.height() + gap));
        NonExpandingImageView *cell = createGridCell(index, QRectF(origin, cellSize));
        m_imageViews.append(cell);
        cell->show();
    }
}

void ImagePreviewView::updateControlsVisibility()
{
    const bool grid = m_controller->displayMode() == ImagePreviewDisplayMode::grid;
    m_controlsContainer->backButton()->setEnabled(m_controller->backEnabled());
    m_controlsContainer->forwardButton()->setEnabled(m_controller->forwardEnabled());
    QAbstractButton *toggle = m_controlsContainer->gridToggleButton();
    toggle->setIcon(
        PreviewSymbols::icon(grid ? QStringLiteral("square") : QStringLiteral("square.grid.2x2")));
    toggle->setToolTip(grid ? tr("Show One Image") : tr("Show as Grid"));
    toggle->setAccessibleName(toggle->toolTip());

    m_controlsContainer->setVisible(m_controller->items().size() > 1);
    m_controlsContainer->raise();
    const double target = m_controller->controlsShown() ? 1.0 : 0.0;
    if (target != m_controlsAlphaTarget) {
        m_controlsAlphaTarget = target;
        m_controlsContainer->fadeTo(target, fadeDurationMs);
    }
}

void ImagePreviewView::updateImageView(int index, const QImage &image)
{
    for (NonExpandingImageView *view : std::as_const(m_imageViews)) {
        if (view->previewIndex() != index)
            continue;
        view->setImage(image.isNull() ? documentIcon(view->size()) : image);
        if (m_controller->displayMode() == ImagePreviewDisplayMode::single
            && index == m_controller->currentIndex())
            updateStackIndicatorLayout(stackStep);
    }
}

QImage ImagePreviewView::documentIcon(const QSize &size)
{
    const int side = std::clamp(std::min(size.width(), size.height()) / 2, 16, 128);
    return SymbolIcons::icon(u"doc").pixmap(QSize(side, side)).toImage();
}

void ImagePreviewView::singleImageClicked()
{
    if (m_controller->configuration().clickToPreview)
        showPopover();
}

void ImagePreviewView::showPopover()
{
    const int index = m_controller->currentIndex();
    if (index < 0 || index >= m_controller->items().size())
        return;
    if (m_previewPopover)
        m_previewPopover->close();
    auto *popover = new ImagePreviewPopover(m_controller->items(), index,
                                            m_controller->configuration(), this);
    popover->onNavigate = [this](int selected) {
        m_controller->setSelectedIndex(selected);
    };
    popover->onDismiss = [this, popover] {
        if (m_previewPopover == popover)
            m_previewPopover = nullptr;
        popover->deleteLater();
    };
    m_previewPopover = popover;
    popover->show(rect(), this);
}

void ImagePreviewView::resizeEvent(QResizeEvent *)
{
    m_contentView->setGeometry(rect());
    m_controlsContainer->setGeometry(rect());
    m_controller->redisplay();
}

void ImagePreviewView::showEvent(QShowEvent *)
{
    m_controller->redisplay();
}

void ImagePreviewView::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Right:
        m_controller->navigateForward();
        break;
    case Qt::Key_Left:
        m_controller->navigateBackward();
        break;
    case Qt::Key_Space:
        if (m_controller->displayMode() == ImagePreviewDisplayMode::single)
            showPopover();
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void ImagePreviewView::enterEvent(QEnterEvent *)
{
    m_controller->setMouseInside(true);
}

void ImagePreviewView::leaveEvent(QEvent *)
{
    m_controller->setMouseInside(false);
}

void ImagePreviewView::paintEvent(QPaintEvent *)
{
    if (!m_controller->items().isEmpty())
        return;
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(rect(), Qt::AlignCenter, tr("No Selection"));
}
