#pragma once

#include "ImagePreviewConfiguration.h"
#include "ImagePreviewItem.h"
#include "ThumbnailGenerator.h"

#include <QList>
#include <QMargins>
#include <QWidget>

#include <functional>
#include <memory>

class NonExpandingImageView;
class QLabel;
class QToolButton;

// The content of the preview's popover: one file at up to maxPopoverWidth by maxPopoverHeight,
// its name, a close button and back and forward. It loads its pictures with a generator of its
// own, one at a time, keeping only the last. Escape closes; the arrow keys step.
class ImagePreviewPopoverViewController : public QWidget
{
    Q_OBJECT

public:
    static constexpr QMargins imageInsets {8, 40, 8, 8};

    ImagePreviewPopoverViewController(const QList<ImagePreviewItem> &items, int currentIndex,
                                      const ImagePreviewConfiguration &configuration,
                                      QWidget *parent = nullptr);
    ~ImagePreviewPopoverViewController() override;

    int currentIndex() const { return m_currentIndex; }
    const QList<ImagePreviewItem> &items() const { return m_items; }
    NonExpandingImageView *imageView() const { return m_imageView; }
    QToolButton *backButton() const { return m_backButton; }
    QToolButton *forwardButton() const { return m_forwardButton; }
    QToolButton *closeButton() const { return m_closeButton; }
    QString title() const;

    void navigateBack();
    void navigateForward();

    std::function<void(int)> onNavigate;
    std::function<void()> onClose;

    QSize sizeHint() const override;

protected:
    void keyPressEvent(QKeyEvent *event) override;

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
    NonExpandingImageView *m_imageView;
    QLabel *m_titleLabel;
    QToolButton *m_backButton;
    QToolButton *m_forwardButton;
    QToolButton *m_closeButton;
};
