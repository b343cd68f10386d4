// Fills the metadata store as a large photo library would and reads every value back once.
// Prints the resident memory growth per stored value and the rate of synchronous reads.

#include "metadata/MetadataStorage.h"
#include "metadata/TagManager.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int pathCount = 100000;
constexpr int keysPerPath = 60;
constexpr int photosPerFolder = 250;

qint64 residentBytes()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        qFatal("cannot read /proc/self/statm");
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

QString pathOf(int photo)
{
    const int folder = photo / photosPerFolder;
    return QStringLiteral("/home/alex/Pictures/%1/%1-%2 Journey %3/IMG_%4.JPG")
        .arg(2010 + folder % 14)
        .arg(folder % 12 + 1, 2, 10, QLatin1Char('0'))
        .arg(folder)
        .arg(photo % 10000, 4, 10, QLatin1Char('0'));
}

// The catalogue's keys that ExifTool and the search index deliver, 60 of them.
QList<std::pair<QString, MetadataSource>> benchKeys()
{
    QList<std::pair<QString, MetadataSource>> keys;
    const auto &mapping = TagManager::shared().metaDataKeysToSourceMapping();
    for (auto it = mapping.cbegin(); it != mapping.cend(); ++it) {
        if (it.value() == MetadataSource::ExifToolGeneric)
            keys.append({it.key(), it.value()});
    }
    keys.append({QStringLiteral("make"), MetadataSource::Spotlight});
    keys.append({QStringLiteral("model"), MetadataSource::Spotlight});
    std::sort(keys.begin(), keys.end());
    Q_ASSERT(keys.size() == keysPerPath);
    return keys;
}

// Values as a camera and a geotagger leave them: dates and coordinates differ from photo to
// photo, while makes, models, exposure settings and place names repeat.
class PhotoValues
{
public:
    explicit PhotoValues(int photo)
        : random(quint32(photo))
    {
        const qint64 shot = 1262304000 + qint64(photo) * 37 + random.bounded(30);
        const QDateTime taken = QDateTime::fromSecsSinceEpoch(shot, Qt::UTC);
        takenText = taken.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss"));
        modifiedText
            = taken.addDays(random.bounded(400)).toString(QStringLiteral("yyyy:MM:dd HH:mm:ss"));
        latitude = 35.0 + (photo / photosPerFolder % 200) * 0.1 + random.bounded(0.05);
        longitude = -10.0 + (photo / photosPerFolder % 300) * 0.1 + random.bounded(0.05);
        altitude = random.bounded(2000.0);
        camera = photo / 5000 % 8;
        place = photo / photosPerFolder;
    }

    QString valueFor(const QString &key)
    {
        static const QStringList makes
            = {u"Canon"_s, u"NIKON CORPORATION"_s, u"SONY"_s,      u"FUJIFILM"_s,
               u"Apple"_s, u"OLYMPUS"_s,           u"Panasonic"_s, u"Google"_s};
        static const QStringList cities
            = {u"Lisbon"_s,    u"Porto"_s,     u"Sevilla"_s,  u"Granada"_s,
               u"Marseille"_s, u"Lyon"_s,      u"Torino"_s,   u"Firenze"_s,
               u"Bern"_s,      u"Innsbruck"_s, u"Salzburg"_s, u"Ljubljana"_s};
        static const QStringList countries
            = {u"Portugal"_s,    u"Spain"_s,   u"France"_s,  u"Italy"_s,
               u"Switzerland"_s, u"Austria"_s, u"Slovenia"_s};
        if (key.contains(u"Date") || key == u"dateadded")
            return key.startsWith(u"Modify") || key.contains(u"modification") ? modifiedText
                                                                              : takenText;
        if (key.startsWith(u"SubSecTime"))
            return QString::number(random.bounded(100));
        if (key.startsWith(u"OffsetTime"))
            return u"+0%1:00"_s.arg(place % 3);
        if (key.endsWith(u"Latitude#"))
            return QString::asprintf("%+.6f", latitude);
        if (key.endsWith(u"Longitude#"))
            return QString::asprintf("%+.6f", longitude);
        if (key == u"GPSLatitude" || key == u"GPSLongitude")
            return degrees(key == u"GPSLatitude" ? latitude : longitude);
        if (key.startsWith(u"GPSAltitude"))
            return key.endsWith(u"Ref") ? u"Above Sea Level"_s
                                        : QString::asprintf("%.1f m", altitude);
        if (key.endsWith(u"Ref"))
            return key.contains(u"Lat") ? u"North"_s : u"West"_s;
        if (key.contains(u"City"))
            return cities.at(place % cities.size());
        if (key.contains(u"Country"))
            return countries.at(place % countries.size());
        if (key.contains(u"State") || key.contains(u"Region"))
            return u"Region %1"_s.arg(place % 40);
        if (key.contains(u"ocation") || key.contains(u"Subregion"))
            return u"Quarter %1"_s.arg(place % 500);
        if (key.compare(u"make", Qt::CaseInsensitive) == 0)
            return makes.at(camera);
        if (key == u"model" || key == u"LensModel")
            return makes.at(camera) + u" Model "_s + QString::number(camera * 3);
        if (key.endsWith(u"SerialNumber"))
            return QString::number(480000 + camera * 77);
        if (key.endsWith(u"Width") || key.endsWith(u"Height"))
            return QString::number(key.endsWith(u"Width") ? 6000 : 4000);
        if (key == u"ExposureTime" || key == u"ShutterSpeedValue")
            return u"1/%1"_s.arg(60 << random.bounded(5));
        if (key == u"FNumber" || key == u"ApertureValue")
            return QString::number(2.8 + random.bounded(8) * 0.7, 'f', 1);
        if (key == u"ISOSpeed")
            return QString::number(100 << random.bounded(6));
        return key + u" "_s + QString::number(random.bounded(6));
    }

private:
    static QString degrees(double value)
    {
        const double absolute = std::abs(value);
        const int whole = int(absolute);
        const double minutes = (absolute - whole) * 60.0;
        return QString::asprintf("%d deg %d' %.2f\"", whole, int(minutes),
                                 (minutes - int(minutes)) * 60.0);
    }

    QRandomGenerator random;
    QString takenText;
    QString modifiedText;
    double latitude = 0;
    double longitude = 0;
    double altitude = 0;
    int camera = 0;
    int place = 0;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    MetadataStorage &storage = MetadataStorage::shared();
    const QList<std::pair<QString, MetadataSource>> keys = benchKeys();

    const qint64 residentBefore = residentBytes();
    QElapsedTimer timer;
    timer.start();
    for (int photo = 0; photo < pathCount; ++photo) {
        const QString path = pathOf(photo);
        PhotoValues values(photo);
        for (const auto &[key, source] : keys)
            storage.store(path, source, key, values.valueFor(key));
    }
    // A read waits for every store queued before it.
    storage.getStringValue(pathOf(0), keys.first().first, keys.first().second);
    const double storeSeconds = timer.nsecsElapsed() / 1e9;
    const qint64 residentAfter = residentBytes();
    const qint64 valuesStored = qint64(pathCount) * keysPerPath;

    QStringList paths;
    paths.reserve(pathCount);
    for (int photo = 0; photo < pathCount; ++photo)
        paths.append(pathOf(photo));
    qint64 found = 0;
    qint64 characters = 0;
    timer.restart();
    for (const QString &path : std::as_const(paths)) {
        for (const auto &[key, source] : keys) {
            if (const std::optional<QString> value = storage.getStringValue(path, key, source)) {
                ++found;
                characters += value->size();
            }
        }
    }
    const double readSeconds = timer.nsecsElapsed() / 1e9;
    if (found != valuesStored)
        qFatal("read back %lld of %lld values", found, valuesStored);

    const double bytesPerValue = double(residentAfter - residentBefore) / double(valuesStored);
    std::printf("stored %lld values of %lld characters in %.2f s (%.0f stores/s), "
                "item counter %lld, resident growth %.1f MiB\n",
                valuesStored, characters, storeSeconds, valuesStored / storeSeconds,
                storage.itemCounter(), (residentAfter - residentBefore) / 1048576.0);
    std::printf("read %lld values in %.2f s\n", found, readSeconds);
    std::printf("RESULT store_bytes_per_value=%.1f store_reads_per_s=%.0f\n", bytesPerValue,
                found / readSeconds);
    return 0;
}
