#include "LayoutGuide.h"

#include <QVariant>
#include <QWidget>

namespace {
// Guides are children of their view, so the table lives on the view as well.
QHash<LayoutTag, LayoutGuide *> &tableOf(QWidget *view)
{
    static QHash<QWidget *, QHash<LayoutTag, LayoutGuide *>> tables;
    if (!tables.contains(view))
        QObject::connect(view, &QObject::destroyed, [view] { tables.remove(view); });
    return tables[view];
}
} // namespace

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
    tableOf(view).insert(tag, guide);
}

LayoutGuide *LayoutGuide::taggedLayoutGuide(QWidget *view, const LayoutTag &tag)
{
    return tableOf(view).value(tag);
}
