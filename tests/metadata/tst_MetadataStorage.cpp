#include "metadata/MetadataStorage.h"

#include <QTest>

#include <atomic>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

const QString path = u"/photos/2024/IMG_0001.JPG"_s;
const QString otherPath = u"/photos/2024/IMG_0002.JPG"_s;
const QString retrieved = u"retrieved"_s;

QDateTime utc(const char *text)
{
    return QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate);
}

} // namespace

class tst_MetadataStorage : public QObject
{
    Q_OBJECT

private slots:
    void readSeesStoreMadeJustBefore_data();
    void readSeesStoreMadeJustBefore();
    void absentValues();
    void laterStoreOverwritesAndSourcesStandApart();
    void wrappedValueLooksAtStringsBooleansDatesIntegers();
    void timeIntervalsCountFrom2001();
    void preferredStringValue_data();
    void preferredStringValue();
    void keysAndValuesAcrossPaths();
    void equalStringsShareOneBuffer();
    void removeAllValuesForgetsOnePathAndEmptiesThePool();
    void clearForgetsEverythingButKeepsThePool();
    void storesFromManyThreadsAllArrive();
    void markerFoundMeansValuesFound();
    void destructionFinishesQueuedStores();
};

void tst_MetadataStorage::readSeesStoreMadeJustBefore_data()
{
    QTest::addColumn<WrappedMetaDataValue>("value");
    QTest::newRow("string") << WrappedMetaDataValue::string(u"Lisbon"_s);
    QTest::newRow("empty string") << WrappedMetaDataValue::string(QString());
    QTest::newRow("date") << WrappedMetaDataValue::date(utc("2023-05-14T12:34:56Z"));
    QTest::newRow("true") << WrappedMetaDataValue::boolean(true);
    QTest::newRow("false") << WrappedMetaDataValue::boolean(false);
    QTest::newRow("large integer") << WrappedMetaDataValue::integer(-(qint64(1) << 40));
}

void tst_MetadataStorage::readSeesStoreMadeJustBefore()
{
    QFETCH(WrappedMetaDataValue, value);
    MetadataStorage storage;
    const auto source = MetadataSource::XMP;
    // Many stores ahead in the queue, so that the last one is surely still waiting.
    for (int i = 0; i < 2000; ++i)
        storage.store(otherPath, source, u"filler"_s, QString::number(i));

    switch (value.kind()) {
    case WrappedMetaDataValue::Kind::StringValue:
        storage.store(path, source, u"key"_s, value.stringValue());
        QCOMPARE(storage.getStringValue(path, u"key"_s, source), value.stringValue());
        break;
    case WrappedMetaDataValue::Kind::DateValue:
        storage.store(path, source, u"key"_s, value.dateValue());
        QCOMPARE(storage.getTimeIntervalValue(path, u"key"_s, source), 705760496.0);
        break;
    case WrappedMetaDataValue::Kind::BoolValue:
        storage.store(path, source, u"key"_s, value.boolValue());
        QCOMPARE(storage.boolValueExistsAndIsTrue(path, u"key"_s, source), value.boolValue());
        break;
    case WrappedMetaDataValue::Kind::NSInteger:
        storage.store(path, source, u"key"_s, value.integerValue());
        QCOMPARE(storage.getObjCIntegerValue(path, u"key"_s, source), value.integerValue());
        break;
    case WrappedMetaDataValue::Kind::None:
        QFAIL("no such row");
    }
    QCOMPARE(storage.getWrappedValue(path, u"key"_s, source), value);
    QCOMPARE(storage.getStringValue(otherPath, u"filler"_s, source), u"1999"_s);
}

void tst_MetadataStorage::absentValues()
{
    MetadataStorage storage;
    storage.store(path, MetadataSource::Exif, u"City"_s, u"Porto"_s);
    storage.store(path, MetadataSource::Exif, u"Count"_s, 5);

    struct Address
    {
        QString path;
        QString key;
        MetadataSource source;
    };
    const Address absent[] = {
        {otherPath, u"City"_s, MetadataSource::Exif},
        {path, u"Country"_s, MetadataSource::Exif},
        {path, u"City"_s, MetadataSource::IPTC},
    };
    for (const Address &at : absent) {
        QCOMPARE(storage.getStringValue(at.path, at.key, at.source), std::nullopt);
        QCOMPARE(storage.getObjCIntegerValue(at.path, at.key, at.source), -1);
        QCOMPARE(storage.getTimeIntervalValue(at.path, at.key, at.source), -63113904000.0);
        QVERIFY(!storage.boolValueExistsAndIsTrue(at.path, at.key, at.source));
        QVERIFY(storage.getWrappedValue(at.path, at.key, at.source).isNone());
    }
    // A value of another type is not there for a typed getter.
    QCOMPARE(storage.getObjCIntegerValue(path, u"City"_s, MetadataSource::Exif), -1);
    QCOMPARE(storage.getStringValue(path, u"Count"_s, MetadataSource::Exif), std::nullopt);
    QCOMPARE(storage.getPreferredStringValue(otherPath, u"City"_s), std::nullopt);
    QVERIFY(storage.getKeysForAllAvailableStringValues(otherPath, MetadataSource::Exif).isEmpty());
    QVERIFY(storage.getAllCurrentStringValues(u"Nothing"_s, MetadataSource::Exif).isEmpty());
}

void tst_MetadataStorage::laterStoreOverwritesAndSourcesStandApart()
{
    MetadataStorage storage;
    storage.store(path, MetadataSource::Exif, u"City"_s, u"Porto"_s);
    storage.store(path, MetadataSource::XMP, u"City"_s, u"Lisbon"_s);
    storage.store(path, MetadataSource::Exif, u"City"_s, u"Braga"_s);
    storage.store(otherPath, MetadataSource::Exif, u"City"_s, u"Faro"_s);
    QCOMPARE(storage.getStringValue(path, u"City"_s, MetadataSource::Exif), u"Braga"_s);
    QCOMPARE(storage.getStringValue(path, u"City"_s, MetadataSource::XMP), u"Lisbon"_s);
    QCOMPARE(storage.getStringValue(otherPath, u"City"_s, MetadataSource::Exif), u"Faro"_s);
}

void tst_MetadataStorage::wrappedValueLooksAtStringsBooleansDatesIntegers()
{
    MetadataStorage storage;
    const auto source = MetadataSource::ExifToolGeneric;
    const QDateTime date = utc("2020-01-02T03:04:05Z");
    storage.store(path, source, u"all"_s, 7);
    storage.store(path, source, u"all"_s, date);
    storage.store(path, source, u"all"_s, true);
    storage.store(path, source, u"all"_s, u"text"_s);
    storage.store(path, source, u"noString"_s, 7);
    storage.store(path, source, u"noString"_s, date);
    storage.store(path, source, u"noString"_s, false);
    storage.store(path, source, u"dateAndInteger"_s, 7);
    storage.store(path, source, u"dateAndInteger"_s, date);
    storage.store(path, source, u"integer"_s, 7);

    QCOMPARE(storage.getWrappedValue(path, u"all"_s, source),
             WrappedMetaDataValue::string(u"text"_s));
    QCOMPARE(storage.getWrappedValue(path, u"noString"_s, source),
             WrappedMetaDataValue::boolean(false));
    QCOMPARE(storage.getWrappedValue(path, u"dateAndInteger"_s, source),
             WrappedMetaDataValue::date(date));
    QCOMPARE(storage.getWrappedValue(path, u"integer"_s, source), WrappedMetaDataValue::integer(7));
    // Each type keeps its own value alongside.
    QCOMPARE(storage.getObjCIntegerValue(path, u"all"_s, source), 7);
}

void tst_MetadataStorage::timeIntervalsCountFrom2001()
{
    MetadataStorage storage;
    const auto source = MetadataSource::Basic;
    storage.store(path, source, u"reference"_s, utc("2001-01-01T00:00:00Z"));
    storage.store(path, source, u"later"_s, utc("2001-01-01T00:00:10.250Z"));
    storage.store(path, source, u"epoch"_s, utc("1970-01-01T00:00:00Z"));
    storage.store(path, source, u"zoned"_s, utc("2001-01-01T02:00:00+02:00"));
    QCOMPARE(storage.getTimeIntervalValue(path, u"reference"_s, source), 0.0);
    QCOMPARE(storage.getTimeIntervalValue(path, u"later"_s, source), 10.25);
    QCOMPARE(storage.getTimeIntervalValue(path, u"epoch"_s, source), -978307200.0);
    QCOMPARE(storage.getTimeIntervalValue(path, u"zoned"_s, source), 0.0);
}

void tst_MetadataStorage::preferredStringValue_data()
{
    QTest::addColumn<QList<MetadataSource>>("sources");
    QTest::addColumn<std::optional<QString>>("expected");
    using S = MetadataSource;
    auto named = [](S source) {
        return std::optional(QString::number(int(source)));
    };
    QTest::newRow("file system is not preferred") << QList {S::Basic} << std::optional<QString>();
    QTest::newRow("none of 0, 1, 4, 5 is preferred")
        << QList {S::Node, S::Basic, S::AVKit, S::Computed} << std::optional<QString>();
    QTest::newRow("composite before everything")
        << QList {S::ImageIO, S::XMP, S::ExifToolGeneric, S::Composite} << named(S::Composite);
    QTest::newRow("overall result before the groups")
        << QList {S::Exif, S::ExifToolGeneric} << named(S::ExifToolGeneric);
    QTest::newRow("XMP after RIFF") << QList {S::XMP, S::RIFF} << named(S::RIFF);
    QTest::newRow("XMP before QuickTime") << QList {S::QuickTime, S::XMP} << named(S::XMP);
    QTest::newRow("catch-all before search index")
        << QList {S::Spotlight, S::Other} << named(S::Other);
    QTest::newRow("image reader last") << QList {S::ImageIO, S::Spotlight} << named(S::Spotlight);
    QTest::newRow("image reader alone") << QList {S::ImageIO, S::Basic} << named(S::ImageIO);
}

void tst_MetadataStorage::preferredStringValue()
{
    QFETCH(QList<MetadataSource>, sources);
    QFETCH(std::optional<QString>, expected);
    MetadataStorage storage;
    for (MetadataSource source : sources)
        storage.store(path, source, u"City"_s, QString::number(int(source)));
    // Other keys and other types must not count.
    storage.store(path, MetadataSource::Composite, u"Town"_s, u"elsewhere"_s);
    storage.store(path, MetadataSource::Composite, u"City"_s, 1);
    QCOMPARE(storage.getPreferredStringValue(path, u"City"_s), expected);
    QCOMPARE(storage.preferredSourceOrder().size(), 29);
}

void tst_MetadataStorage::keysAndValuesAcrossPaths()
{
    MetadataStorage storage;
    storage.store(path, MetadataSource::Exif, u"Make"_s, u"Canon"_s);
    storage.store(path, MetadataSource::Exif, u"City"_s, u"Porto"_s);
    storage.store(path, MetadataSource::XMP, u"Country"_s, u"Portugal"_s);
    storage.store(path, MetadataSource::Exif, u"Width"_s, 6000);
    storage.store(otherPath, MetadataSource::Exif, u"City"_s, u"Porto"_s);
    storage.store(u"/photos/3.jpg"_s, MetadataSource::XMP, u"City"_s, u"Faro"_s);

    QStringList keys = storage.getKeysForAllAvailableStringValues(path, MetadataSource::Exif);
    keys.sort();
    QCOMPARE(keys, (QStringList {u"City"_s, u"Make"_s}));

    QStringList cities = storage.getAllCurrentStringValues(u"City"_s, MetadataSource::Exif);
    QCOMPARE(cities, (QStringList {u"Porto"_s, u"Porto"_s}));
}

void tst_MetadataStorage::equalStringsShareOneBuffer()
{
    MetadataStorage storage;
    // Built apart, so they start with separate buffers.
    const QString first = u"Lis"_s + u"bon"_s;
    const QString second = u"Lisb"_s + u"on"_s;
    QVERIFY(first.constData() != second.constData());
    storage.store(path, MetadataSource::Exif, u"City"_s, first);
    storage.store(otherPath, MetadataSource::Exif, u"City"_s, second);
    const QString a = *storage.getStringValue(path, u"City"_s, MetadataSource::Exif);
    const QString b = *storage.getStringValue(otherPath, u"City"_s, MetadataSource::Exif);
    QCOMPARE(a.constData(), b.constData());
    // Two paths, one key, one value.
    QCOMPARE(storage.stringPool().count(), 4);
}

void tst_MetadataStorage::removeAllValuesForgetsOnePathAndEmptiesThePool()
{
    MetadataStorage storage;
    storage.store(path, MetadataSource::Exif, u"City"_s, u"Porto"_s);
    storage.store(path, MetadataSource::Exif, retrieved, true);
    storage.store(otherPath, MetadataSource::Exif, u"City"_s, u"Faro"_s);
    QVERIFY(storage.stringPool().count() > 0);

    // The counter counts store calls: a removal takes nothing back.
    storage.removeAllValues(path);
    QCOMPARE(storage.itemCounter(), 3);
    QCOMPARE(storage.stringPool().count(), 0);
    QCOMPARE(storage.getStringValue(path, u"City"_s, MetadataSource::Exif), std::nullopt);
    QVERIFY(!storage.boolValueExistsAndIsTrue(path, retrieved, MetadataSource::Exif));
    QCOMPARE(storage.getStringValue(otherPath, u"City"_s, MetadataSource::Exif), u"Faro"_s);

    // The store works on as before, and the pool fills again.
    storage.store(path, MetadataSource::Exif, u"City"_s, u"Braga"_s);
    QCOMPARE(storage.getStringValue(path, u"City"_s, MetadataSource::Exif), u"Braga"_s);
    QCOMPARE(storage.stringPool().count(), 3);
}

void tst_MetadataStorage::clearForgetsEverythingButKeepsThePool()
{
    MetadataStorage storage;
    for (int i = 0; i < 100; ++i)
        storage.store(path + QString::number(i), MetadataSource::Exif, u"City"_s, u"Porto"_s);
    const qsizetype pooled = storage.stringPool().count();
    storage.clear();
    // Any read waits for the clear to run.
    QCOMPARE(storage.getStringValue(path + u"0"_s, u"City"_s, MetadataSource::Exif), std::nullopt);
    QCOMPARE(storage.itemCounter(), 0);
    QVERIFY(storage.getAllCurrentStringValues(u"City"_s, MetadataSource::Exif).isEmpty());
    QCOMPARE(storage.stringPool().count(), pooled);

    storage.store(path, MetadataSource::Exif, u"City"_s, u"Faro"_s);
    QCOMPARE(storage.getStringValue(path, u"City"_s, MetadataSource::Exif), u"Faro"_s);
    QCOMPARE(storage.itemCounter(), 1);
}

void tst_MetadataStorage::storesFromManyThreadsAllArrive()
{
    MetadataStorage storage;
    constexpr int threadCount = 4;
    constexpr int pathsPerThread = 300;
    constexpr int keysPerPath = 20;
    const auto pathOf = [](int n) {
        return u"/shared/%1.jpg"_s.arg(n);
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&, t] {
            // Every thread writes every path, each under its own source, so containers are
            // shared between threads while values stay apart.
            const auto source = MetadataSource(int(MetadataSource::Exif) + t);
            for (int p = 0; p < pathsPerThread; ++p) {
                for (int k = 0; k < keysPerPath; ++k) {
                    storage.store(pathOf(p), source, u"key%1"_s.arg(k),
                                  u"%1/%2/%3"_s.arg(t).arg(p).arg(k));
                }
                storage.store(pathOf(p), source, u"number"_s, p * 10 + t);
            }
        });
    }
    // Read meanwhile, so that reads and stores interleave on the queue.
    int seen = 0;
    while (seen < pathsPerThread) {
        if (storage.getObjCIntegerValue(pathOf(seen), u"number"_s, MetadataSource::Exif) >= 0)
            ++seen;
    }
    for (std::thread &thread : threads)
        thread.join();

    QCOMPARE(storage.itemCounter(), threadCount * pathsPerThread * (keysPerPath + 1));
    for (int t = 0; t < threadCount; ++t) {
        const auto source = MetadataSource(int(MetadataSource::Exif) + t);
        for (int p = 0; p < pathsPerThread; ++p) {
            QCOMPARE(storage.getKeysForAllAvailableStringValues(pathOf(p), source).size(),
                     keysPerPath);
            QCOMPARE(storage.getStringValue(pathOf(p), u"key7"_s, source),
                     u"%1/%2/7"_s.arg(t).arg(p));
            QCOMPARE(storage.getObjCIntegerValue(pathOf(p), u"number"_s, source), p * 10 + t);
        }
    }
    QCOMPARE(storage.getAllCurrentStringValues(u"key0"_s, MetadataSource::Exif).size(),
             pathsPerThread);
}

void tst_MetadataStorage::markerFoundMeansValuesFound()
{
    // Readers store their values and then the marker; whoever finds the marker, on any thread,
    // must find every value stored before it.
    MetadataStorage storage;
    constexpr int writerCount = 3;
    constexpr int pathsPerWriter = 400;
    constexpr int valuesPerPath = 15;
    const auto pathOf = [](int writer, int p) {
        return u"/w%1/%2.mov"_s.arg(writer).arg(p);
    };
    std::atomic_int missing = 0;
    std::atomic_int markersSeen = 0;
    std::atomic_bool writersDone = false;

    std::vector<std::thread> writers;
    for (int w = 0; w < writerCount; ++w) {
        writers.emplace_back([&, w] {
            for (int p = 0; p < pathsPerWriter; ++p) {
                const QString at = pathOf(w, p);
                for (int v = 0; v < valuesPerPath; ++v)
                    storage.store(at, MetadataSource::QuickTime, u"v%1"_s.arg(v), u"x"_s);
                storage.store(at, MetadataSource::QuickTime, u"when"_s,
                              QDateTime::fromSecsSinceEpoch(p, Qt::UTC));
                storage.store(at, MetadataSource::QuickTime, retrieved, true);
            }
        });
    }
    std::vector<std::thread> readers;
    for (int r = 0; r < 2; ++r) {
        readers.emplace_back([&, r] {
            std::vector<bool> checked(size_t(writerCount * pathsPerWriter), false);
            bool finalPass = false;
            for (;;) {
                finalPass = writersDone.load();
                for (int w = 0; w < writerCount; ++w) {
                    for (int p = r; p < pathsPerWriter; p += 2) {
                        const size_t index = size_t(w * pathsPerWriter + p);
                        const QString at = pathOf(w, p);
                        if (checked[index]
                            || !storage.boolValueExistsAndIsTrue(at, retrieved,
                                                                 MetadataSource::QuickTime))
                            continue;
                        checked[index] = true;
                        ++markersSeen;
                        const QStringList keys = storage.getKeysForAllAvailableStringValues(
                            at, MetadataSource::QuickTime);
                        if (keys.size() != valuesPerPath
                            || storage.getTimeIntervalValue(at, u"when"_s,
                                                            MetadataSource::QuickTime)
                                == MetadataStorage::distantPastTimeInterval)
                            ++missing;
                    }
                }
                if (finalPass)
                    return;
            }
        });
    }
    for (std::thread &writer : writers)
        writer.join();
    writersDone = true;
    for (std::thread &reader : readers)
        reader.join();

    QCOMPARE(missing.load(), 0);
    QCOMPARE(markersSeen.load(), writerCount * pathsPerWriter);
}

void tst_MetadataStorage::destructionFinishesQueuedStores()
{
    // The queued blocks write into the maps, so these must outlive the queue's worker.
    auto storage = std::make_unique<MetadataStorage>();
    for (int i = 0; i < 20000; ++i)
        storage->store(path + QString::number(i % 50), MetadataSource::Exif, u"k"_s, i);
    storage.reset();
}

QTEST_GUILESS_MAIN(tst_MetadataStorage)
#include "tst_MetadataStorage.moc"
