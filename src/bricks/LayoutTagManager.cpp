#include "LayoutTagManager.h"

#include "ViewAttachments.h"

#include <QWidget>

LayoutTagManager &LayoutTagManager::shared()
{
    static LayoutTagManager manager;
    return manager;
}

void LayoutTagManager::addTag(QWidget *view, const LayoutTag &tag)
{
    ViewAttachments::of(view).tags.append(tag);
}

QList<LayoutTag> LayoutTagManager::layoutTags(const QWidget *view) const
{
    const ViewAttachment *attached = ViewAttachments::find(view);
    return attached ? attached->tags : QList<LayoutTag>();
}

QWidget *LayoutTagManager::firstView(const LayoutTag &tag, QWidget *anchored) const
{
    if (!anchored)
        return nullptr;
    if (layoutTags(anchored).contains(tag))
        return anchored;
    for (QObject *child : anchored->children()) {
        if (auto *widget = qobject_cast<QWidget *>(child)) {
            if (QWidget *found = firstView(tag, widget))
                return found;
        }
    }
    return nullptr;
}
