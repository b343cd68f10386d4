#pragma once

#include <QImage>
#include <QSizeF>

// What the image preview's logic needs of the view that draws it. The view reads the state it
// draws from the controller.
class ImagePreviewDisplay
{
public:
    virtual ~ImagePreviewDisplay() = default;
    // The view's bounds in points; empty while it has not been laid out.
    virtual QSizeF previewBounds() const = 0;
    // Rebuild the content for the current item, or for the cells of the current grid page.
    virtual void updateSingleModeDisplay() = 0;
    virtual void updateGridModeDisplay() = 0;
    // Enable, show or hide the paging controls.
    virtual void updateControlsVisibility() = 0;
    // The image of the item at index arrived.
    virtual void updateImageView(int index, const QImage &image) = 0;
};
