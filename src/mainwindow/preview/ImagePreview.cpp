#include "ImagePreview.h"

#include "ImagePreviewBinding.h"
#include "ImagePreviewView.h"

namespace BuildDirectivesNamespace {

BuiltView ImagePreview::buildLeaf() const
{
    auto *view = new ImagePreviewView(configuration);
    auto binding = std::make_shared<ImagePreviewBinding>(view);
    binding->bindPaths(pathsVariable);
    binding->bindSelection(selectionVariable);
    return {view, binding};
}

} // namespace BuildDirectivesNamespace
