#pragma once

#include "ImagePreviewController.h"
#include "ImagePreviewDisplay.h"
#include "ImagePreviewPopover.h"
#include "NonExpandingImageView.h"

#include <QPointer>
#include <QWidget>

#include <memory>

class ControlsOverlayView;

// The selected files as pictures: one large image, or a grid of up to maxColumns by maxRows
// paged through longer lists, with paging controls that fade in while the mouse is over the
// view. A click on a grid cell shows that file alone; a click on the single image opens a larger
// view in a popover. The left and right arrow keys page or step. The logic lives in
// ImagePreviewController; this view draws it and forwards the user's actions.
class ImagePreviewView
    : public QWidget
    , public ImagePreviewDisplay
{
    Q_OBJECT

public:
    static constexpr double stackStep = 4.0;

    explicit ImagePreviewView(const ImagePreviewConfiguration &configuration = {},
                              QWidget *parent = nullptr);
    ~ImagePreviewView() override;

    ImagePreviewController &controller() { return *m_controller; }
    const ImagePreviewConfiguration &configuration() const { return m_controller->configuration(); }

    void setFilePaths(const QStringList &paths) { m_controller->setFilePaths(paths); }
    void setSelectedIndex(int index) { m_controller->setSelectedIndex(index); }
    void bindPaths(std::shared_ptr<ReadWriteVariableType<QStringList>> variable);
    void bindSelection(std::shared_ptr<ReadWriteVariableType<int>> variable);

    // The image views on show: the single image, or the cells of the grid's page.
    const QList<NonExpandingImageView *> &imageViews() const { return m_imageViews; }
    NonExpandingImageView *singleImageView() const { return m_singleImageView; }
    const QList<QWidget *> &stackIndicatorViews() const { return m_stackIndicatorViews; }
    ControlsOverlayView *controlsContainer() const { return m_controlsContainer; }
    ImagePreviewPopover *previewPopover() const { return m_previewPopover; }

    QSizeF previewBounds() const override;
    void updateSingleModeDisplay() override;
    void updateGridModeDisplay() override;
    void updateControlsVisibility() override;
    void updateImageView(int index, const QImage &image) override;

    // The picture shown for a file that gave none.
    static QImage documentIcon(const QSize &size);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void clearContent();
    NonExpandingImageView *createGridCell(int index, const QRectF &frame);
    void createStackIndicator(NonExpandingImageView *behind);
    void updateStackIndicatorLayout(double stepSize);
    void showImage(NonExpandingImageView *view, const ImagePreviewItem &item);
    void singleImageClicked();
    void showPopover();

    std::shared_ptr<ImagePreviewController> m_controller;
    QWidget *m_contentView;
    QList<QWidget *> m_stackIndicatorViews;
    QPointer<NonExpandingImageView> m_singleImageView;
    QList<NonExpandingImageView *> m_imageViews;
    ControlsOverlayView *m_controlsContainer;
    double m_controlsAlphaTarget = 0.0;
    QPointer<ImagePreviewPopover> m_previewPopover;
};
