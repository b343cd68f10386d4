#include "KVOResponder.h"

#include "platform/UserDefaults.h"

KVOResponder::KVOResponder(const QString &keyPath, UserDefaults &object, bool hot,
                           ReactingFunc reactingFunc)
    : m_keyPath(keyPath)
    , m_observedObject(&object)
    , m_reactingFunc(std::move(reactingFunc))
{
    const UserDefaults::ObserverId id
        = object.addObserver(keyPath, [this](const QString &key) { observeValue(key); });
    if (hot)
        observeValue(keyPath);
    m_endOfLifeBag.add([this, id] { m_observedObject->removeObserver(id); });
}

void KVOResponder::observeValue(const QString &keyPath)
{
    if (!m_reactingFunc)
        qFatal("KVOResponder: no reacting function for key path %s", qPrintable(keyPath));
    // The change record is not passed on: the callback reads what it needs.
    m_reactingFunc(QVariant::fromValue(static_cast<void *>(m_observedObject)), keyPath);
}
