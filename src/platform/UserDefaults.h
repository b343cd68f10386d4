#pragma once

#include <QHash>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>
#include <mutex>

class QSettings;

// The persistent key-value store of the user's preferences: a QSettings file in JSON, a layer of
// registered defaults under it, and change observers per key. Observers run synchronously on
// the thread that made the change, after the new value is in place.
class UserDefaults
{
public:
    using ObserverId = quint64;

    explicit UserDefaults(const QString &filePath);
    ~UserDefaults();

    // The application's store; tests point it at a temporary file before first use.
    static UserDefaults &standard();
    static void setStandardFilePath(const QString &filePath);

    QString filePath() const;

    void registerDefaults(const QVariantMap &defaults);
    QVariant objectForKey(const QString &key) const; // invalid when neither stored nor registered
    QString stringForKey(const QString &key) const; // null unless the object is a string
    void setObject(const QVariant &value, const QString &key);
    void removeObjectForKey(const QString &key);
    bool synchronize();

    ObserverId addObserver(const QString &key, std::function<void(const QString &key)> observer);
    void removeObserver(ObserverId id);

private:
    void notify(const QString &key);

    struct Observer
    {
        QString key;
        std::function<void(const QString &)> callback;
    };

    // Owned by m_mutex: everything below.
    mutable std::recursive_mutex m_mutex;
    std::unique_ptr<QSettings> m_settings;
    QVariantMap m_registered;
    QMap<ObserverId, Observer> m_observers;
    ObserverId m_nextObserverId = 1;
};
