#pragma once

#include "metadata/MetadataSource.h"
#include "metadata/PathMetadataContainer.h"
#include "metadata/StringPool.h"
#include "metadata/WrappedMetaDataValue.h"
#include "platform/SerialQueue.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <atomic>
#include <optional>

// The one in-memory store of all metadata of all files. A value is addressed by the file's full
// path, its key and the source that delivered it; values of different sources stand side by side
// and are never merged. Stores are asynchronous and reads synchronous on one serial queue, so a
// read sees every store made before it on the same thread: readers store their values and then
// their "retrieved" marker, and whoever finds the marker also finds the values.
class MetadataStorage
{
public:
    MetadataStorage();
    MetadataStorage(const MetadataStorage &) = delete;
    MetadataStorage &operator=(const MetadataStorage &) = delete;

    static MetadataStorage &shared();

    void store(const QString &fullPath, MetadataSource source, const QString &key,
               const QString &string);
    void store(const QString &fullPath, MetadataSource source, const QString &key,
               const QDateTime &date);
    void store(const QString &fullPath, MetadataSource source, const QString &key, bool boolValue);
    void store(const QString &fullPath, MetadataSource source, const QString &key, qint64 value);
    void store(const QString &fullPath, MetadataSource source, const QString &key, int value)
    {
        store(fullPath, source, key, qint64(value));
    }
    // A character literal would otherwise quietly become a boolean.
    void store(const QString &, MetadataSource, const QString &, const char *) = delete;

    std::optional<QString> getStringValue(const QString &fullPath, const QString &key,
                                          MetadataSource source);
    // Several keys of one path and source in one visit of the queue, in the order asked.
    QList<std::optional<QString>> getStringValues(const QString &fullPath, const QStringList &keys,
                                                  MetadataSource source);
    // -1 when there is none.
    qint64 getObjCIntegerValue(const QString &fullPath, const QString &key, MetadataSource source);
    // Seconds since 2001-01-01T00:00:00Z, or distantPastTimeInterval when there is none.
    double getTimeIntervalValue(const QString &fullPath, const QString &key, MetadataSource source);
    bool boolValueExistsAndIsTrue(const QString &fullPath, const QString &key,
                                  MetadataSource source);
    // Strings first, then booleans, dates and integers: the first type that has the key wins.
    WrappedMetaDataValue getWrappedValue(const QString &fullPath, const QString &key,
                                         MetadataSource source);
    // The value as getWrappedValue gives it, but only once the source has been read, that is
    // once its readKey is stored as true; one lookup where a view would otherwise make two.
    std::optional<WrappedMetaDataValue> getWrappedValueIfRead(const QString &fullPath,
                                                              const QString &key,
                                                              const QString &readKey,
                                                              MetadataSource source);
    // getWrappedValueIfRead for many paths in one visit to the store, in the paths' order: a
    // large selection is looked up without a round through the queue for every file.
    QList<std::optional<WrappedMetaDataValue>> getWrappedValuesIfRead(const QStringList &paths,
                                                                      const QString &key,
                                                                      const QString &readKey,
                                                                      MetadataSource source);
    // The string of the first source in preferredSourceOrder that has one.
    std::optional<QString> getPreferredStringValue(const QString &fullPath, const QString &key);
    // In no particular order; empty for an unknown path.
    QStringList getKeysForAllAvailableStringValues(const QString &fullPath, MetadataSource source);
    // One entry per path that has the key from the source, duplicates included.
    QStringList getAllCurrentStringValues(const QString &key, MetadataSource source);

    // Synchronous. Also empties the string pool, the one point where it shrinks.
    void removeAllValues(const QString &fullPath);
    // Asynchronous: forgets every path and resets itemCounter once the queue reaches it.
    void clear();

    // Store calls since the last clear(), for the status line; not a count of distinct values.
    qint64 itemCounter() const { return m_itemCounter.load(std::memory_order_relaxed); }
    const QList<MetadataSource> &preferredSourceOrder() const { return m_preferredSourceOrder; }
    StringPool &stringPool() { return m_stringPool; }

    // 0001-01-01T00:00:00Z in seconds since 2001-01-01T00:00:00Z.
    static constexpr double distantPastTimeInterval = -63113904000.0;

private:
    template<typename T>
    void enqueueStore(const QString &fullPath, MetadataSource source, const QString &key, T value,
                      CompactValueMap<T> PathMetadataContainer::*map);
    template<typename Result, typename Read>
    Result readPath(const QString &fullPath, const QString &key, Result absent, Read read);

    // Registry of key ids, which the containers store in place of the keys' strings. Keys are a
    // bounded vocabulary, so the registry only grows.
    quint32 keyIdForStoring(const QString &key);
    std::optional<quint32> keyIdForReading(const QString &key) const;

    StringPool m_stringPool;
    // Owned by m_serialQueue: the three containers below.
    QHash<QString, PathMetadataContainer> m_metadataForPath;
    QHash<QString, quint32> m_keyIds;
    QStringList m_keys;
    // Counted on the callers' threads and reset on the queue, so a count made between a call of
    // clear() and its run is lost; the status line only needs it roughly.
    std::atomic<qint64> m_itemCounter = 0;
    const QList<MetadataSource> m_preferredSourceOrder;
    // Declared last so that it is destroyed first: its worker finishes the queued stores while
    // the maps they write to still exist.
    SerialQueue m_serialQueue;
};
