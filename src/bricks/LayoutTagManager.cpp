#include "LayoutTagManager.h"

#include <QWidget>

LayoutTagManager &LayoutTagManager::shared()
{
    static LayoutTagManager manager;
    return manager;
}

void LayoutTagManager::addTag(QWidget *view, const LayoutTag &tag)
{
    auto it = tagsByView.find(view);
    if (it == tagsByView.end()) {
        it = tagsByView.insert(view, {});
        QObject::connect(view, &QObject::destroyed, view,
                         [this, view] { tagsByView.remove(view); });
    }
    it->append(tag);
}

QList<LayoutTag> LayoutTagManager::layoutTags(QWidget *view) const
{
    return tagsByView.value(view);
}

QWidget *LayoutTagManager::firstView(const LayoutTag &tag, QWidget *anchored) const
{
    if (!anchored)
        return nullptr;
    if (tagsByView.value(anchored).contains(tag))
        return anchored;
    for (QObject *child : anchored->children()) {
        if (auto *widget = qobject_cast<QWidget *>(child)) {
            if (QWidget *found = firstView(tag, widget))
                return found;
        }
    }
    return nullptr;
}
