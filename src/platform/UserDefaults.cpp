#include "UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QSettings>
#include <QStandardPaths>

#include <cstdio>

namespace {

QSettings::Format jsonFormat()
{
    static const QSettings::Format format = QSettings::registerFormat(
        "json",
        [](QIODevice &device, QSettings::SettingsMap &map) {
            const QJsonDocument document = QJsonDocument::fromJson(device.readAll());
            if (!document.isObject())
                return device.size() == 0;
            map = document.object().toVariantMap();
            return true;
        },
        [](QIODevice &device, const QSettings::SettingsMap &map) {
            const QByteArray json = QJsonDocument(QJsonObject::fromVariantMap(map)).toJson();
            return device.write(json) == json.size();
        });
    return format;
}

// JSON has one kind of number: whole numbers come back as integers.
QVariant normalized(const QVariant &value)
{
    if (value.typeId() == QMetaType::Double) {
        const double d = value.toDouble();
        if (d == double(qint64(d)) && qAbs(d) < 9.0e15)
            return QVariant::fromValue(qint64(d));
    }
    return value;
}

std::mutex s_standardMutex;
QString s_standardPath;
std::unique_ptr<UserDefaults> s_standard;

} // namespace

UserDefaults::UserDefaults(const QString &filePath)
{
    QDir().mkpath(QFileInfo(filePath).absolutePath());
    m_settings = std::make_unique<QSettings>(filePath, jsonFormat());
    // A file that is not a JSON object reads as empty, so every setting takes its default. It is
    // moved aside under another name and said once; the store starts afresh, since QSettings
    // would keep reporting the error on every later sync.
    if (m_settings->status() == QSettings::FormatError) {
        const QString kept = filePath + QStringLiteral(".damaged");
        QFile::remove(kept);
        if (!QFile::rename(filePath, kept)) {
            QFile::copy(filePath, kept);
            QFile::remove(filePath);
        }
        m_settings = std::make_unique<QSettings>(filePath, jsonFormat());
        std::fprintf(stderr,
                     "Palomet: the preferences file %s could not be read; every setting "
                     "takes its default (the file is kept as %s)\n",
                     qPrintable(filePath), qPrintable(kept));
    }
}

UserDefaults::~UserDefaults() = default;

UserDefaults &UserDefaults::standard()
{
    std::lock_guard lock(s_standardMutex);
    if (!s_standard) {
        QString path = s_standardPath;
        if (path.isEmpty())
            path = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation)
                + QStringLiteral("/preferences.json");
        s_standard = std::make_unique<UserDefaults>(path);
    }
    return *s_standard;
}

void UserDefaults::setStandardFilePath(const QString &filePath)
{
    std::lock_guard lock(s_standardMutex);
    if (s_standard)
        qFatal("UserDefaults::setStandardFilePath must come before the first use of the store");
    s_standardPath = filePath;
}

QString UserDefaults::filePath() const
{
    std::lock_guard lock(m_mutex);
    return m_settings->fileName();
}

void UserDefaults::registerDefaults(const QVariantMap &defaults)
{
    std::lock_guard lock(m_mutex);
    for (auto it = defaults.cbegin(); it != defaults.cend(); ++it)
        m_registered.insert(it.key(), it.value());
}

QVariant UserDefaults::objectForKey(const QString &key) const
{
    std::lock_guard lock(m_mutex);
    const QVariant stored = m_settings->value(key);
    if (stored.isValid())
        return normalized(stored);
    return m_registered.value(key);
}

QString UserDefaults::stringForKey(const QString &key) const
{
    const QVariant object = objectForKey(key);
    if (object.typeId() != QMetaType::QString)
        return {};
    return object.toString();
}

void UserDefaults::setObject(const QVariant &value, const QString &key)
{
    {
        std::lock_guard lock(m_mutex);
        if (value.isValid())
            m_settings->setValue(key, value);
        else
            m_settings->remove(key);
    }
    notify(key);
}

void UserDefaults::removeObjectForKey(const QString &key)
{
    setObject(QVariant(), key);
}

bool UserDefaults::synchronize()
{
    std::lock_guard lock(m_mutex);
    m_settings->sync();
    return m_settings->status() == QSettings::NoError;
}

UserDefaults::ObserverId UserDefaults::addObserver(const QString &key,
                                                   std::function<void(const QString &)> observer)
{
    std::lock_guard lock(m_mutex);
    const ObserverId id = m_nextObserverId++;
    m_observers.insert(id, Observer {key, std::move(observer)});
    return id;
}

void UserDefaults::removeObserver(ObserverId id)
{
    std::lock_guard lock(m_mutex);
    m_observers.remove(id);
}

void UserDefaults::notify(const QString &key)
{
    // Called without holding the lock so that an observer may read or write the store.
    QList<std::function<void(const QString &)>> callbacks;
    {
        std::lock_guard lock(m_mutex);
        for (const Observer &observer : std::as_const(m_observers)) {
            if (observer.key == key)
                callbacks.append(observer.callback);
        }
    }
    for (const auto &callback : std::as_const(callbacks))
        callback(key);
}
