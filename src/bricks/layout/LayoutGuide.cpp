#include "LayoutGuide.h"

#include "bricks/ViewAttachments.h"

#include <QWidget>

LayoutGuide::LayoutGuide(QWidget *owningView, const QString &identifier)
    : QObject(owningView)
{
    setObjectName(identifier);
}

QWidget *LayoutGuide::owningView() const
{
    return qobject_cast<QWidget *>(parent());
}

void LayoutGuide::setTaggedLayoutGuide(QWidget *view, const LayoutTag &tag, LayoutGuide *guide)
{
    ViewAttachments::of(view).taggedLayoutGuides.insert(tag, guide);
}

LayoutGuide *LayoutGuide::taggedLayoutGuide(QWidget *view, const LayoutTag &tag)
{
    const ViewAttachment *attached = ViewAttachments::find(view);
    return attached ? attached->taggedLayoutGuides.value(tag) : nullptr;
}
