#pragma once

#include "ImagePreviewConfiguration.h"
#include "bricks/controls/ControlDirectives.h"

#include <QStringList>

namespace BuildDirectivesNamespace {

// An image preview of the files in pathsVariable, showing the one at selectionVariable; either
// variable may be absent.
class ImagePreview : public LeafDirective<ImagePreview>
{
public:
    ImagePreview(ImagePreviewConfiguration configuration, ReadWrite<QStringList> pathsVariable,
                 ReadWrite<int> selectionVariable)
        : configuration(configuration)
        , pathsVariable(std::move(pathsVariable))
        , selectionVariable(std::move(selectionVariable))
    { }
    QString description() const override { return QStringLiteral("ImagePreview"); }
    BuiltView buildLeaf() const override;

    ImagePreviewConfiguration configuration;
    ReadWrite<QStringList> pathsVariable;
    ReadWrite<int> selectionVariable;
};

} // namespace BuildDirectivesNamespace
