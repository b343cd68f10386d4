#include "LayoutConstraint.h"

#include "LayoutGuide.h"

LayoutItem::LayoutItem(LayoutGuide *guide)
    : m_guide(guide)
{ }

QWidget *LayoutItem::owningView() const
{
    QWidget *owner = nullptr;
    if (m_view)
        owner = m_view->parentWidget() ? m_view->parentWidget() : m_view.data();
    else if (m_guide)
        owner = m_guide->owningView();
    if (!owner)
        qFatal("LayoutItem has no owning view for constraint installation");
    return owner;
}

QString LayoutItem::debugName() const
{
    if (m_guide)
        return QStringLiteral("LayoutGuide(%1)").arg(m_guide->identifier());
    if (!m_view)
        return QStringLiteral("nil");
    const QString name = m_view->objectName();
    return QStringLiteral("%1(%2)").arg(
        QString::fromLatin1(m_view->metaObject()->className()),
        name.isEmpty() ? QStringLiteral("%1").arg(quintptr(m_view.data()), 0, 16) : name);
}

QString LayoutConstraint::debugDescription() const
{
    static const char *const relations[] = {"<=", "==", ">="};
    QString text = QStringLiteral("%1.%2 %3 ")
                       .arg(first.debugName())
                       .arg(int(firstAttribute))
                       .arg(QLatin1String(relations[int(relation) + 1]));
    if (!second.isNull())
        text += QStringLiteral("%1.%2 * %3 + ")
                    .arg(second.debugName())
                    .arg(int(secondAttribute))
                    .arg(multiplier);
    return text + QStringLiteral("%1 @%2").arg(constant).arg(priority);
}
