#pragma once

#include "bricks/BuildDirectivesCore.h"
#include "bricks/Variables.h"

#include <QPointer>
#include <QStringList>

#include <memory>

class ImagePreviewView;

// Connects an image preview to a list of paths and the index of the selected one. The variables
// may be given before or after the view exists; activation applies whichever are there.
class ImagePreviewBinding : public Binding
{
public:
    explicit ImagePreviewBinding(ImagePreviewView *view)
        : view(view)
    { }

    void bindPaths(std::shared_ptr<ReadWriteVariableType<QStringList>> variable)
    {
        pathsVariable = std::move(variable);
    }
    void bindSelection(std::shared_ptr<ReadWriteVariableType<int>> variable)
    {
        selectionVariable = std::move(variable);
    }
    Binding *activate() override;

    QPointer<ImagePreviewView> view;
    std::shared_ptr<ReadWriteVariableType<QStringList>> pathsVariable;
    std::shared_ptr<ReadWriteVariableType<int>> selectionVariable;
};
