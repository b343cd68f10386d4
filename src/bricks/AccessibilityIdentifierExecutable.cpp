#include "AccessibilityIdentifierExecutable.h"

#include "ViewAttachments.h"

void AccessibilityIdentifierExecutable::execute(QWidget *view, Binding *, Assembly *)
{
    if (view)
        ViewAttachments::of(view).accessibilityIdentifier = tag.description();
}

QString AccessibilityIdentifierExecutable::identifier(const QWidget *view)
{
    const ViewAttachment *attached = ViewAttachments::find(view);
    return attached ? attached->accessibilityIdentifier : QString();
}
