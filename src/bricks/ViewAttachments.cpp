#include "ViewAttachments.h"

#include "layout/ConstraintSystem.h"

#include <QWidget>

namespace {
QHash<const QWidget *, ViewAttachment> &table()
{
    static QHash<const QWidget *, ViewAttachment> attachments;
    return attachments;
}
} // namespace

ViewAttachment &ViewAttachments::of(QWidget *view)
{
    auto it = table().find(view);
    if (it == table().end()) {
        it = table().insert(view, {});
        // Connected to the view itself, so that the connection ends with it too.
        QObject::connect(view, &QObject::destroyed, view, [view] { table().remove(view); });
    }
    return *it;
}

const ViewAttachment *ViewAttachments::find(const QWidget *view)
{
    const auto it = table().constFind(view);
    return it == table().cend() ? nullptr : &*it;
}
