#include "ImagePreviewController.h"

#include "ImagePreviewDisplay.h"

#include <QSet>

namespace {

// Growth below this share reuses the cached thumbnails, so that resizing a window by a few
// points does not make them all again.
constexpr double noticeableGrowth = 1.1;

int cacheSizeFor(const ImagePreviewConfiguration &configuration)
{
    if (configuration.layoutPolicy == ImagePreviewLayoutPolicy::automaticSelectionCount)
        return 6;
    return std::max(1, configuration.maxColumns * configuration.maxRows);
}

} // namespace

std::shared_ptr<ImagePreviewController> ImagePreviewController::create(
    const ImagePreviewConfiguration &configuration)
{
    auto controller = std::make_shared<ImagePreviewController>(Passkey(), configuration);
    controller->m_thumbnailGenerator->setDelegate(controller);
    return controller;
}

ImagePreviewController::ImagePreviewController(Passkey,
                                               const ImagePreviewConfiguration &configuration)
    : m_configuration(configuration)
    , m_thumbnailGenerator(ThumbnailGenerator::create(configuration.maxConcurrentThumbnails,
                                                      cacheSizeFor(configuration)))
{ }

ImagePreviewController::~ImagePreviewController()
{
    m_thumbnailGenerator->cancelAllRequests();
}

ImagePreviewResolvedLayout ImagePreviewController::resolveOverviewLayout(
    const ImagePreviewConfiguration &configuration, int count)
{
    if (configuration.layoutPolicy == ImagePreviewLayoutPolicy::manual) {
        if (count >= 2)
            return ImagePreviewResolvedLayout::grid(std::max(configuration.maxColumns, 1),
                                                    std::max(configuration.maxRows, 1));
        return ImagePreviewResolvedLayout::single();
    }
    switch (count) {
    case 0:
    case 1:
        return ImagePreviewResolvedLayout::single();
    case 2:
        return ImagePreviewResolvedLayout::grid(2, 1);
    case 3:
        return ImagePreviewResolvedLayout::grid(3, 1);
    case 4:
        return ImagePreviewResolvedLayout::grid(2, 2);
    default:
        return ImagePreviewResolvedLayout::grid(3, 2);
    }
}

void ImagePreviewController::setFilePaths(const QStringList &paths)
{
    QSet<QString> previous;
    for (const ImagePreviewItem &item : std::as_const(m_items))
        previous.insert(item.path);
    m_items.clear();
    m_items.reserve(paths.size());
    for (const QString &path : paths)
        m_items.append(ImagePreviewItem(path));

    m_currentIndex = 0;
    for (int i = 0; i < m_items.size(); ++i) {
        if (previous.contains(m_items[i].path)) {
            m_currentIndex = i;
            break;
        }
    }

    m_thumbnailGenerator->cancelAllRequests();
    m_thumbnailGenerator->clearCache();
    m_pendingThumbnailRequests.clear();
    applyPreferredLayoutForCurrentItems();
}

void ImagePreviewController::setSelectedIndex(int index)
{
    if (index < 0 || index >= m_items.size())
        return;
    if (m_selectionVariable)
        m_selectionVariable->setValue(index);
    else
        updateCurrentIndex(index);
}

void ImagePreviewController::updateCurrentIndex(int index)
{
    if (index < 0 || index >= m_items.size() || index == m_currentIndex)
        return;
    m_currentIndex = index;
    m_gridPageIndex = pageOf(index);
    redisplay();
}

void ImagePreviewController::bindPaths(std::shared_ptr<ReadWriteVariableType<QStringList>> variable)
{
    m_pathsVariable = std::move(variable);
    if (!m_pathsVariable)
        return;
    m_pathsVariable->addHotListener([weak = weak_from_this()](const QStringList &paths) {
        if (const auto self = weak.lock())
            self->setFilePaths(paths);
    });
}

void ImagePreviewController::bindSelection(std::shared_ptr<ReadWriteVariableType<int>> variable)
{
    m_selectionVariable = std::move(variable);
    if (!m_selectionVariable)
        return;
    m_selectionVariable->addHotListener([weak = weak_from_this()](const int &index) {
        if (const auto self = weak.lock())
            self->updateCurrentIndex(index);
    });
}

void ImagePreviewController::refreshOverviewLayout()
{
    m_overviewLayout = resolveOverviewLayout(m_configuration, int(m_items.size()));
    // A single layout still leaves the grid a shape for a later toggle.
    m_activeGridLayout = m_overviewLayout.isGrid()
        ? m_overviewLayout.gridLayout
        : ImagePreviewGridLayout {std::max(m_configuration.maxColumns, 1),
                                  std::max(m_configuration.maxRows, 1)};
}

int ImagePreviewController::pageOf(int index) const
{
    return m_overviewLayout.isGrid() ? index / m_overviewLayout.gridLayout.cells() : 0;
}

void ImagePreviewController::applyPreferredLayoutForCurrentItems()
{
    refreshOverviewLayout();
    m_displayMode = m_configuration.layoutPolicy == ImagePreviewLayoutPolicy::manual
        ? ImagePreviewDisplayMode::single
        : m_overviewLayout.mode;
    m_gridPageIndex = pageOf(m_currentIndex);
    redisplay();
}

void ImagePreviewController::showOverviewLayout()
{
    refreshOverviewLayout();
    m_displayMode = m_overviewLayout.mode;
    m_gridPageIndex = pageOf(m_currentIndex);
    redisplay();
}

void ImagePreviewController::toggleGridMode()
{
    if (m_displayMode == ImagePreviewDisplayMode::grid) {
        m_displayMode = ImagePreviewDisplayMode::single;
        redisplay();
    } else {
        showOverviewLayout();
    }
}

void ImagePreviewController::navigateBackward()
{
    if (m_displayMode == ImagePreviewDisplayMode::single) {
        if (m_currentIndex >= 1)
            setSelectedIndex(m_currentIndex - 1);
    } else if (m_gridPageIndex >= 1) {
        --m_gridPageIndex;
        redisplay();
    }
    updateControlsVisibility();
}

void ImagePreviewController::navigateForward()
{
    if (m_displayMode == ImagePreviewDisplayMode::single) {
        if (m_currentIndex < m_items.size() - 1)
            setSelectedIndex(m_currentIndex + 1);
    } else if (m_gridPageIndex < lastGridPage()) {
        ++m_gridPageIndex;
        redisplay();
    }
    updateControlsVisibility();
}

void ImagePreviewController::gridCellClicked(int previewIndex)
{
    if (previewIndex < 0 || previewIndex >= m_items.size())
        return;
    m_displayMode = ImagePreviewDisplayMode::single;
    setSelectedIndex(previewIndex);
    redisplay();
}

void ImagePreviewController::setMouseInside(bool inside)
{
    m_isMouseInside = inside;
    updateControlsVisibility();
}

void ImagePreviewController::redisplay()
{
    drawModeDisplay();
    updateControlsVisibility();
    requestVisibleThumbnails();
}

void ImagePreviewController::drawModeDisplay()
{
    if (!m_display)
        return;
    if (m_displayMode == ImagePreviewDisplayMode::grid)
        m_display->updateGridModeDisplay();
    else
        m_display->updateSingleModeDisplay();
}

void ImagePreviewController::updateControlsVisibility()
{
    if (m_display)
        m_display->updateControlsVisibility();
}

QList<int> ImagePreviewController::gridPageIndices() const
{
    QList<int> indices;
    const int cells = m_activeGridLayout.cells();
    const int end = std::min<int>((m_gridPageIndex + 1) * cells, int(m_items.size()));
    for (int i = m_gridPageIndex * cells; i < end; ++i)
        indices.append(i);
    return indices;
}

int ImagePreviewController::lastGridPage() const
{
    return m_items.isEmpty() ? 0 : int(m_items.size() - 1) / m_activeGridLayout.cells();
}

QSizeF ImagePreviewController::gridCellSize() const
{
    const QSizeF bounds = m_display ? m_display->previewBounds() : QSizeF();
    const int columns = m_activeGridLayout.columns;
    const int rows = m_activeGridLayout.rows;
    return QSizeF((bounds.width() - 2 * outerMargin - (columns - 1) * gridGap) / columns,
                  (bounds.height() - 2 * outerMargin - (rows - 1) * gridGap) / rows);
}

QSizeF ImagePreviewController::thumbnailSize() const
{
    const QSizeF bounds = m_display ? m_display->previewBounds() : QSizeF();
    const QSizeF inner(bounds.width() - 2 * outerMargin, bounds.height() - 2 * outerMargin);
    if (m_displayMode == ImagePreviewDisplayMode::grid)
        return QSizeF(inner.width() / m_activeGridLayout.columns,
                      inner.height() / m_activeGridLayout.rows);
    return inner;
}

bool ImagePreviewController::backEnabled() const
{
    return m_displayMode == ImagePreviewDisplayMode::grid ? m_gridPageIndex >= 1
                                                          : m_currentIndex >= 1;
}

bool ImagePreviewController::forwardEnabled() const
{
    return m_displayMode == ImagePreviewDisplayMode::grid ? m_gridPageIndex < lastGridPage()
                                                          : m_currentIndex < m_items.size() - 1;
}

bool ImagePreviewController::controlsShown() const
{
    return m_isMouseInside && m_items.size() > 1;
}

void ImagePreviewController::requestVisibleThumbnails()
{
    // A view that has not been laid out would ask for images of no size; its first layout
    // pass asks again.
    const QSizeF bounds = m_display ? m_display->previewBounds() : QSizeF();
    if (bounds.width() <= 0 || bounds.height() <= 0 || m_items.isEmpty())
        return;
    const QSizeF size = thumbnailSize();
    if (size.width() <= 0 || size.height() <= 0)
        return;
    if (m_lastThumbnailSize.isValid()
        && (size.width() > m_lastThumbnailSize.width() * noticeableGrowth
            || size.height() > m_lastThumbnailSize.height() * noticeableGrowth))
        m_thumbnailGenerator->clearCache();
    m_lastThumbnailSize = size;

    if (m_displayMode == ImagePreviewDisplayMode::single) {
        if (m_currentIndex < m_items.size())
            request(m_currentIndex, size);
        return;
    }
    for (int index : gridPageIndices()) {
        if (std::optional<QImage> cached
            = m_thumbnailGenerator->getCachedThumbnail(m_items[index].path)) {
            thumbnailGenerator(*m_thumbnailGenerator,
                               {index, m_items[index].path, cached, QUuid::createUuid(), true});
        } else {
            request(index, size);
        }
    }
}

// An item already on its way is not asked for again: its result will come.
void ImagePreviewController::request(int index, const QSizeF &size)
{
    if (m_items[index].isLoading)
        return;
    m_items[index].isLoading = true;
    const QUuid id = m_thumbnailGenerator->requestThumbnail(m_items[index], index, size);
    // A cache hit has been delivered already and cleared the flag.
    if (index < m_items.size() && m_items[index].isLoading)
        m_pendingThumbnailRequests.append(id);
}

void ImagePreviewController::thumbnailGenerator(ThumbnailGenerator &, const ThumbnailResult &result)
{
    m_pendingThumbnailRequests.removeOne(result.requestId);
    // The path decides, not the index: the list may have been replaced since the request.
    if (result.index < 0 || result.index >= m_items.size()
        || m_items[result.index].path != result.path)
        return;
    ImagePreviewItem &item = m_items[result.index];
    item.thumbnail = result.image;
    item.isLoading = false;
    item.loadFailed = !result.success;
    if (m_display)
        m_display->updateImageView(result.index, result.image.value_or(QImage()));
}
