#include "ImagePreviewBinding.h"

#include "ImagePreviewView.h"

Binding *ImagePreviewBinding::activate()
{
    if (!view)
        return this;
    if (pathsVariable)
        view->bindPaths(pathsVariable);
    if (selectionVariable)
        view->bindSelection(selectionVariable);
    return this;
}
