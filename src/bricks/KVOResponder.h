#pragma once

#include "EndOfLifeBag.h"

#include <QString>
#include <QVariant>

#include <functional>

class UserDefaults;

// Calls reactingFunc whenever the observed key of the store changes, on the thread that changed
// it; with hot, once at construction as well. The observation ends with the responder.
class KVOResponder
{
public:
    using ReactingFunc = std::function<void(const QVariant &object, const QString &keyPath)>;

    KVOResponder(const QString &keyPath, UserDefaults &object, bool hot, ReactingFunc reactingFunc);
    KVOResponder(const KVOResponder &) = delete;
    KVOResponder &operator=(const KVOResponder &) = delete;

    const QString &keyPath() const { return m_keyPath; }

private:
    void observeValue(const QString &keyPath);

    QString m_keyPath;
    UserDefaults *m_observedObject;
    ReactingFunc m_reactingFunc;
    // Declared last so that it runs its removal while the fields above still exist.
    EndOfLifeBag m_endOfLifeBag;
};
