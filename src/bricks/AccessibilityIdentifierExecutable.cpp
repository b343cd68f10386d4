#include "AccessibilityIdentifierExecutable.h"

#include <QVariant>

void AccessibilityIdentifierExecutable::execute(QWidget *view, Binding *, Assembly *)
{
    if (view)
        view->setProperty(property, tag.description());
}
