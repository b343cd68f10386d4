#pragma once

#include "ImagePreviewConfiguration.h"
#include "ImagePreviewItem.h"
#include "ImagePreviewLayout.h"
#include "ThumbnailGenerator.h"
#include "bricks/Variables.h"

#include <QList>
#include <QSizeF>
#include <QStringList>
#include <QUuid>

#include <memory>

class ImagePreviewDisplay;

// The logic of the image preview: the list of files, which of them is current, whether one
// image or a grid is shown and which page of it, and which thumbnails to ask for. It chooses the
// grid's shape by itself, asks only for what is visible, and drops a thumbnail whose file has
// left the list, whatever its index. The view draws what this holds and forwards the user's
// actions. Main thread only; always owned through a shared_ptr (create), since the thumbnail
// generator and the bound variables hold it weakly.
class ImagePreviewController
    : public ThumbnailGeneratorDelegate
    , public std::enable_shared_from_this<ImagePreviewController>
{
    struct Passkey
    { };

public:
    static constexpr double outerMargin = 8;
    static constexpr double gridGap = 4;

    static std::shared_ptr<ImagePreviewController> create(
        const ImagePreviewConfiguration &configuration = {});
    ImagePreviewController(Passkey, const ImagePreviewConfiguration &configuration);
    ~ImagePreviewController() override;

    // Not owned. Without a display nothing is drawn or asked for.
    void setDisplay(ImagePreviewDisplay *display) { m_display = display; }

    const ImagePreviewConfiguration &configuration() const { return m_configuration; }
    const QList<ImagePreviewItem> &items() const { return m_items; }
    ImagePreviewDisplayMode displayMode() const { return m_displayMode; }
    const ImagePreviewResolvedLayout &overviewLayout() const { return m_overviewLayout; }
    const ImagePreviewGridLayout &activeGridLayout() const { return m_activeGridLayout; }
    int currentIndex() const { return m_currentIndex; }
    int gridPageIndex() const { return m_gridPageIndex; }
    ThumbnailGenerator &thumbnailGenerator() { return *m_thumbnailGenerator; }
    const QList<QUuid> &pendingThumbnailRequests() const { return m_pendingThumbnailRequests; }

    static ImagePreviewResolvedLayout resolveOverviewLayout(
        const ImagePreviewConfiguration &configuration, int count);

    // The list of files: keeps the current file if it is still there, drops all thumbnail work.
    void setFilePaths(const QStringList &paths);
    // Through the bound selection variable when there is one.
    void setSelectedIndex(int index);
    void updateCurrentIndex(int index);
    // The variables' values are applied at once and on every change.
    void bindPaths(std::shared_ptr<ReadWriteVariableType<QStringList>> variable);
    void bindSelection(std::shared_ptr<ReadWriteVariableType<int>> variable);

    void applyPreferredLayoutForCurrentItems();
    void showOverviewLayout();
    void toggleGridMode();
    void navigateBackward();
    void navigateForward();
    void gridCellClicked(int previewIndex);
    void setMouseInside(bool inside);

    // A layout pass: draw the mode's display, the controls, and ask for visible thumbnails.
    void redisplay();
    void requestVisibleThumbnails();

    // What the view draws.
    QList<int> gridPageIndices() const;
    int lastGridPage() const;
    QSizeF gridCellSize() const;
    QSizeF thumbnailSize() const;
    bool backEnabled() const;
    bool forwardEnabled() const;
    bool controlsShown() const;

    void thumbnailGenerator(ThumbnailGenerator &generator, const ThumbnailResult &result) override;

private:
    void refreshOverviewLayout();
    void drawModeDisplay();
    void updateControlsVisibility();
    int pageOf(int index) const;
    void request(int index, const QSizeF &size);

    const ImagePreviewConfiguration m_configuration;
    QList<ImagePreviewItem> m_items;
    ImagePreviewDisplayMode m_displayMode = ImagePreviewDisplayMode::single;
    ImagePreviewResolvedLayout m_overviewLayout;
    ImagePreviewGridLayout m_activeGridLayout {3, 2};
    int m_currentIndex = 0;
    int m_gridPageIndex = 0;
    std::shared_ptr<ReadWriteVariableType<QStringList>> m_pathsVariable;
    std::shared_ptr<ReadWriteVariableType<int>> m_selectionVariable;
    std::shared_ptr<ThumbnailGenerator> m_thumbnailGenerator;
    QList<QUuid> m_pendingThumbnailRequests;
    bool m_isMouseInside = false;
    // The thumbnail size of the last request pass: a cached thumbnail made for a clearly smaller
    // area is not reused, so growing from grid to one image shows a sharp picture.
    QSizeF m_lastThumbnailSize;
    ImagePreviewDisplay *m_display = nullptr;
};
