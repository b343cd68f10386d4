#pragma once

#include "ImagePreviewConfiguration.h"
#include "ImagePreviewItem.h"
#include "NonExpandingImageView.h"
#include "ThumbnailGenerator.h"
#include "commons/NiblessViewController.h"

#include <QLabel>
#include <QList>
#include <QMargins>
#include <QPointer>
#include <QToolButton>

#include <functional>
#include <memory>

// The content of the preview's popover: one file at up to maxPopoverWidth by maxPopoverHeight,
// its name, a close button and back and forward. It loads its pictures with a generator of its
// own, one at a time, keeping only the last. Escape closes; the arrow keys step. Make it with
// NiblessViewController::make.
class ImagePreviewPopoverViewController : public NiblessViewController
{
    Q_OBJECT

public:
    static constexpr QMargins imageInsets {8, 40, 8, 8};

    ImagePreviewPopoverViewController(const QList<ImagePreviewItem> &items, int currentIndex,
                                      const ImagePreviewConfiguration &configuration);
    ~ImagePreviewPopoverViewController() override;

    int currentIndex() const { return m_currentIndex; }
    const QList<ImagePreviewItem> &items() const { return m_items; }
    NonExpandingImageView *imageView() const { return m_imageView; }
    QToolButton *backButton() const { return m_backButton; }
    QToolButton *forwardButton() const { return m_forwardButton; }
    QToolButton *closeButton() const { return m_closeButton; }
    QString title() const;
    // The root view's size: the largest picture and the insets around it.
    QSize viewSize() const;

    void navigateBack();
    void navigateForward();

    std::function<void(int)> onNavigate;
    std::function<void()> onClose;

protected:
    QWidget *build() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    class GeneratorDelegate;

    void updateDisplay();
    void updateNavigationButtons();
    void closeClicked();
    void didGenerate(const ThumbnailResult &result);

    QList<ImagePreviewItem> m_items;
    int m_currentIndex;
    const ImagePreviewConfiguration m_configuration;
    std::shared_ptr<ThumbnailGenerator> m_thumbnailGenerator;
    std::shared_ptr<GeneratorDelegate> m_delegate;
    QPointer<NonExpandingImageView> m_imageView;
    QPointer<QLabel> m_titleLabel;
    QPointer<QToolButton> m_backButton;
    QPointer<QToolButton> m_forwardButton;
    QPointer<QToolButton> m_closeButton;
};
