#pragma once

// How an image preview chooses its layout and how much work it may run at once.
enum class ImagePreviewLayoutPolicy {
    // One image for a new selection; the grid toggle shows maxColumns by maxRows.
    manual,
    // The grid's shape follows the number of files: 2 by 1 for two, up to 3 by 2 for five and more.
    automaticSelectionCount,
};

struct ImagePreviewConfiguration
{
    ImagePreviewLayoutPolicy layoutPolicy = ImagePreviewLayoutPolicy::manual;
    int maxColumns = 3;
    int maxRows = 2;
    int maxConcurrentThumbnails = 8;
    bool clickToPreview = true;
    double maxPopoverWidth = 600;
    double maxPopoverHeight = 400;
};
