#pragma once

// The shapes an image preview can take.

enum class ImagePreviewDisplayMode { single = 0, grid = 1 };

struct ImagePreviewGridLayout
{
    int columns = 3;
    int rows = 2;
    int cells() const { return columns * rows; }
    bool operator==(const ImagePreviewGridLayout &) const = default;
};

// Either one image, or a grid of the given shape.
struct ImagePreviewResolvedLayout
{
    static ImagePreviewResolvedLayout single() { return {}; }
    static ImagePreviewResolvedLayout grid(int columns, int rows)
    {
        return {ImagePreviewDisplayMode::grid, {columns, rows}};
    }
    bool isGrid() const { return mode == ImagePreviewDisplayMode::grid; }
    bool operator==(const ImagePreviewResolvedLayout &) const = default;

    ImagePreviewDisplayMode mode = ImagePreviewDisplayMode::single;
    ImagePreviewGridLayout gridLayout; // meaningful for a grid only
};
