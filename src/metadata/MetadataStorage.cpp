#include "MetadataStorage.h"

#include <functional>

namespace {

// 2001-01-01T00:00:00Z, the origin of the time intervals that callers expect.
constexpr qint64 referenceDateMSecsSinceEpoch = 978307200000;

} // namespace

MetadataStorage::MetadataStorage()
    // Composite first, then ExifTool's overall result, its groups with XMP between RIFF and
    // QuickTime, the catch-all, the search index and the platform image reader last.
    : m_preferredSourceOrder {MetadataSource::Composite, MetadataSource::ExifToolGeneric,
                              MetadataSource::Exif,      MetadataSource::IPTC,
                              MetadataSource::JFIF,      MetadataSource::JPEG,
                              MetadataSource::JPEG2000,  MetadataSource::PNG,
                              MetadataSource::RAF,       MetadataSource::PanasonicRaw,
                              MetadataSource::DNG,       MetadataSource::RIFF,
                              MetadataSource::XMP,       MetadataSource::QuickTime,
                              MetadataSource::H264,      MetadataSource::MPEG,
                              MetadataSource::Matroska,  MetadataSource::MakerNotes,
                              MetadataSource::PDF,       MetadataSource::ID3,
                              MetadataSource::AIFF,      MetadataSource::Vorbis,
                              MetadataSource::FLAC,      MetadataSource::Ogg,
                              MetadataSource::GIF,       MetadataSource::Photoshop,
                              MetadataSource::Other,     MetadataSource::Spotlight,
                              MetadataSource::ImageIO}
    , m_serialQueue(QStringLiteral("metadatastorage"))
{ }

MetadataStorage &MetadataStorage::shared()
{
    // Never destroyed: background reads may still store while the program exits.
    static MetadataStorage &instance = *new MetadataStorage;
    return instance;
}

quint32 MetadataStorage::keyIdForStoring(const QString &key)
{
    const auto found = m_keyIds.constFind(key);
    if (found != m_keyIds.cend())
        return *found;
    const auto id = quint32(m_keys.size());
    if (id > CompactValueMap<QString>::maxKeyId)
        qFatal("MetadataStorage: more distinct keys than a container can address");
    m_keyIds.insert(key, id);
    m_keys.append(key);
    return id;
}

std::optional<quint32> MetadataStorage::keyIdForReading(const QString &key) const
{
    const auto found = m_keyIds.constFind(key);
    if (found == m_keyIds.cend())
        return std::nullopt;
    return *found;
}

template<typename T>
void MetadataStorage::enqueueStore(const QString &fullPath, MetadataSource source,
                                   const QString &key, T value,
                                   CompactValueMap<T> PathMetadataContainer::*map)
{
    m_serialQueue.async([this, path = m_stringPool.intern(fullPath), key = m_stringPool.intern(key),
                         source, value = std::move(value), map] {
        PathMetadataContainer &container = m_metadataForPath[path];
        (container.*map).set(keyIdForStoring(key), source, value);
    });
    m_itemCounter.fetch_add(1, std::memory_order_relaxed);
}

void MetadataStorage::store(const QString &fullPath, MetadataSource source, const QString &key,
                            const QString &string)
{
    enqueueStore(fullPath, source, key, m_stringPool.intern(string),
                 &PathMetadataContainer::stringValues);
}

void MetadataStorage::store(const QString &fullPath, MetadataSource source, const QString &key,
                            const QDateTime &date)
{
    enqueueStore(fullPath, source, key, date, &PathMetadataContainer::dateValues);
}

void MetadataStorage::store(const QString &fullPath, MetadataSource source, const QString &key,
                            bool boolValue)
{
    enqueueStore(fullPath, source, key, quint8(boolValue), &PathMetadataContainer::boolValues);
}

void MetadataStorage::store(const QString &fullPath, MetadataSource source, const QString &key,
                            qint64 value)
{
    enqueueStore(fullPath, source, key, value, &PathMetadataContainer::integerValues);
}

template<typename Result, typename Read>
Result MetadataStorage::readPath(const QString &fullPath, const QString &key, Result absent,
                                 Read read)
{
    Result result = std::move(absent);
    auto block = [&] {
        const auto container = m_metadataForPath.constFind(fullPath);
        if (container == m_metadataForPath.cend())
            return;
        if (const auto keyId = keyIdForReading(key))
            read(*container, *keyId, result);
    };
    // By reference, so that std::function holds the block without allocating on every read.
    m_serialQueue.sync(std::ref(block));
    return result;
}

std::optional<QString> MetadataStorage::getStringValue(const QString &fullPath, const QString &key,
                                                       MetadataSource source)
{
    return readPath(fullPath, key, std::optional<QString>(),
                    [source](const PathMetadataContainer &container, quint32 keyId,
                             std::optional<QString> &result) {
                        if (const QString *value = container.stringValues.find(keyId, source))
                            result = *value;
                    });
}

QList<std::optional<QString>> MetadataStorage::getStringValues(const QString &fullPath,
                                                               const QStringList &keys,
                                                               MetadataSource source)
{
    QList<std::optional<QString>> result(keys.size());
    auto block = [&] {
        const auto container = m_metadataForPath.constFind(fullPath);
        if (container == m_metadataForPath.cend())
            return;
        for (qsizetype i = 0; i < keys.size(); ++i) {
            const auto keyId = keyIdForReading(keys.at(i));
            if (!keyId)
                continue;
            if (const QString *value = container->stringValues.find(*keyId, source))
                result[i] = *value;
        }
    };
    m_serialQueue.sync(std::ref(block));
    return result;
}

qint64 MetadataStorage::getObjCIntegerValue(const QString &fullPath, const QString &key,
                                            MetadataSource source)
{
    return readPath(
        fullPath, key, qint64(-1),
        [source](const PathMetadataContainer &container, quint32 keyId, qint64 &result) {
            if (const qint64 *value = container.integerValues.find(keyId, source))
                result = *value;
        });
}

double MetadataStorage::getTimeIntervalValue(const QString &fullPath, const QString &key,
                                             MetadataSource source)
{
    return readPath(
        fullPath, key, distantPastTimeInterval,
        [source](const PathMetadataContainer &container, quint32 keyId, double &result) {
            if (const QDateTime *value = container.dateValues.find(keyId, source)) {
                result = double(value->toMSecsSinceEpoch() - referenceDateMSecsSinceEpoch) / 1000.0;
            }
        });
}

bool MetadataStorage::boolValueExistsAndIsTrue(const QString &fullPath, const QString &key,
                                               MetadataSource source)
{
    return readPath(fullPath, key, false,
                    [source](const PathMetadataContainer &container, quint32 keyId, bool &result) {
                        if (const quint8 *value = container.boolValues.find(keyId, source))
                            result = *value != 0;
                    });
}

namespace {

WrappedMetaDataValue wrappedValue(const PathMetadataContainer &container, quint32 keyId,
                                  MetadataSource source)
{
    if (const QString *value = container.stringValues.find(keyId, source))
        return WrappedMetaDataValue::string(*value);
    if (const quint8 *flag = container.boolValues.find(keyId, source))
        return WrappedMetaDataValue::boolean(*flag != 0);
    if (const QDateTime *date = container.dateValues.find(keyId, source))
        return WrappedMetaDataValue::date(*date);
    if (const qint64 *number = container.integerValues.find(keyId, source))
        return WrappedMetaDataValue::integer(*number);
    return WrappedMetaDataValue();
}

} // namespace

WrappedMetaDataValue MetadataStorage::getWrappedValue(const QString &fullPath, const QString &key,
                                                      MetadataSource source)
{
    return readPath(fullPath, key, WrappedMetaDataValue(),
                    [source](const PathMetadataContainer &container, quint32 keyId,
                             WrappedMetaDataValue &result) {
                        result = wrappedValue(container, keyId, source);
                    });
}

std::optional<WrappedMetaDataValue> MetadataStorage::getWrappedValueIfRead(const QString &fullPath,
                                                                           const QString &key,
                                                                           const QString &readKey,
                                                                           MetadataSource source)
{
    std::optional<WrappedMetaDataValue> result;
    auto block = [&] {
        const auto container = m_metadataForPath.constFind(fullPath);
        if (container == m_metadataForPath.cend())
            return;
        const std::optional<quint32> readKeyId = keyIdForReading(readKey);
        const quint8 *read = readKeyId ? container->boolValues.find(*readKeyId, source) : nullptr;
        if (!read || *read == 0)
            return;
        const std::optional<quint32> keyId = keyIdForReading(key);
        result = keyId ? wrappedValue(*container, *keyId, source) : WrappedMetaDataValue();
    };
    m_serialQueue.sync(std::ref(block));
    return result;
}

QList<std::optional<WrappedMetaDataValue>> MetadataStorage::getWrappedValuesIfRead(
    const QStringList &paths, const QString &key, const QString &readKey, MetadataSource source)
{
    QList<std::optional<WrappedMetaDataValue>> results(paths.size());
    auto block = [&] {
        const std::optional<quint32> readKeyId = keyIdForReading(readKey);
        if (!readKeyId)
            return;
        const std::optional<quint32> keyId = keyIdForReading(key);
        for (qsizetype i = 0; i < paths.size(); ++i) {
            const auto container = m_metadataForPath.constFind(paths.at(i));
            if (container == m_metadataForPath.cend())
                continue;
            const quint8 *read = container->boolValues.find(*readKeyId, source);
            if (!read || *read == 0)
                continue;
            results[i] = keyId ? wrappedValue(*container, *keyId, source) : WrappedMetaDataValue();
        }
    };
    m_serialQueue.sync(std::ref(block));
    return results;
}

std::optional<QString> MetadataStorage::getPreferredStringValue(const QString &fullPath,
                                                                const QString &key)
{
    return readPath(fullPath, key, std::optional<QString>(),
                    [this](const PathMetadataContainer &container, quint32 keyId,
                           std::optional<QString> &result) {
                        // The key's sources, indexed by value; then the first preferred one wins.
                        const QString *bySource[MetadataSources::count] = {};
                        container.stringValues.forEachSourceOfKey(
                            keyId, [&](MetadataSource source, const QString &value) {
                                bySource[int(source)] = &value;
                            });
                        for (MetadataSource source : m_preferredSourceOrder) {
                            if (const QString *value = bySource[int(source)]) {
                                result = *value;
                                return;
                            }
                        }
                    });
}

QStringList MetadataStorage::getKeysForAllAvailableStringValues(const QString &fullPath,
                                                                MetadataSource source)
{
    QStringList keys;
    auto block = [&] {
        const auto container = m_metadataForPath.constFind(fullPath);
        if (container == m_metadataForPath.cend())
            return;
        container->stringValues.forEachKeyOfSource(
            source, [&](quint32 keyId) { keys.append(m_keys.at(qsizetype(keyId))); });
    };
    m_serialQueue.sync(std::ref(block));
    return keys;
}

QStringList MetadataStorage::getAllCurrentStringValues(const QString &key, MetadataSource source)
{
    QStringList values;
    auto block = [&] {
        const auto keyId = keyIdForReading(key);
        if (!keyId)
            return;
        for (const PathMetadataContainer &container : std::as_const(m_metadataForPath)) {
            if (const QString *value = container.stringValues.find(*keyId, source))
                values.append(*value);
        }
    };
    m_serialQueue.sync(std::ref(block));
    return values;
}

void MetadataStorage::removeAllValues(const QString &fullPath)
{
    auto block = [&] {
        m_metadataForPath.remove(fullPath);
        m_stringPool.removeAll();
    };
    m_serialQueue.sync(std::ref(block));
}

void MetadataStorage::clear()
{
    // The pool is left alone here, unlike in removeAllValues().
    m_serialQueue.async([this] {
        m_metadataForPath = {};
        m_itemCounter.store(0, std::memory_order_relaxed);
    });
}
