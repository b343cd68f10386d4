#include "acquisition/ExifToolHelper.h"
#include "acquisition/ModernExifExtraction.h"

#include "Fixtures.h"

#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

// The single reader: one worker kept across reads, one file at a time, and what follows when
// the worker dies.
class tst_ModernExifExtraction : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void keepsOneWorkerAcrossReads();
    void readsFromManyThreadsOneAtATime();
    void pathWithLineFeedDoesNotHang();
    void workerKilledBetweenReads();
    void workerKilledMidResponse();

private:
    static QString valueOf(const QList<ExtractedTag> &tags, const QString &key);
    static void useApplicationLists(ModernExifExtraction &extraction);

    QTemporaryDir m_directory;
    QStringList m_files;
};

QString tst_ModernExifExtraction::valueOf(const QList<ExtractedTag> &tags, const QString &key)
{
    QString found;
    for (const ExtractedTag &tag : tags) {
        if (tag.source == MetadataSource::ExifToolGeneric && tag.key == key)
            found = tag.value;
    }
    return found;
}

void tst_ModernExifExtraction::useApplicationLists(ModernExifExtraction &extraction)
{
    extraction.whiteList = ExifToolHelper::sharedInstance().whiteList();
    extraction.rawWhiteList = ExifToolHelper::sharedInstance().rawWhiteList();
}

void tst_ModernExifExtraction::initTestCase()
{
    // Four files that differ in latitude and city, to tell the answers apart.
    for (int index = 0; index < 4; ++index) {
        m_files << Fixtures::makeJpeg(m_directory.path(), u"file%1.jpg"_s.arg(index),
                                      {u"-GPSLatitude=%1.5"_s.arg(10 + index),
                                       u"-GPSLatitudeRef=N"_s, u"-GPSLongitude=20.25"_s,
                                       u"-GPSLongitudeRef=E"_s,
                                       u"-IPTC:City=City %1"_s.arg(index)});
    }
}

void tst_ModernExifExtraction::keepsOneWorkerAcrossReads()
{
    ModernExifExtraction extraction;
    useApplicationLists(extraction);
    QCOMPARE(extraction.workerProcessIdentifier(), pid_t(-1));
    const QList<ExtractedTag> first = extraction.extractTagsFor(m_files[0], true);
    const pid_t worker = extraction.workerProcessIdentifier();
    QVERIFY(worker > 0);
    QCOMPARE(valueOf(first, u"GPSLatitude#"_s), u"10.5"_s);
    QCOMPARE(valueOf(first, u"City"_s), u"City 0"_s);
    for (int round = 0; round < 3; ++round) {
        const QList<ExtractedTag> again = extraction.extractTagsFor(m_files[1], true);
        QCOMPARE(valueOf(again, u"GPSLatitude#"_s), u"11.5"_s);
    }
    QCOMPARE(extraction.workerProcessIdentifier(), worker);
}

void tst_ModernExifExtraction::readsFromManyThreadsOneAtATime()
{
    ModernExifExtraction extraction;
    useApplicationLists(extraction);
    std::vector<QString> latitudes(8);
    std::vector<std::thread> readers;
    for (size_t index = 0; index < latitudes.size(); ++index) {
        readers.emplace_back([&, index] {
            const QList<ExtractedTag> tags
                = extraction.extractTagsFor(m_files[qsizetype(index % 4)], false);
            latitudes[index] = valueOf(tags, u"GPSLatitude#"_s);
        });
    }
    for (std::thread &reader : readers)
        reader.join();
    for (size_t index = 0; index < latitudes.size(); ++index)
        QCOMPARE(latitudes[index], u"%1.5"_s.arg(10 + index % 4));
}

void tst_ModernExifExtraction::pathWithLineFeedDoesNotHang()
{
    ModernExifExtraction extraction;
    useApplicationLists(extraction);
    QVERIFY(extraction.extractTagsFor(m_files[0] + u"\n"_s + m_files[1], false).isEmpty());
    QCOMPARE(valueOf(extraction.extractTagsFor(m_files[2], false), u"GPSLatitude#"_s), u"12.5"_s);
}

void tst_ModernExifExtraction::workerKilledBetweenReads()
{
    ModernExifExtraction extraction;
    useApplicationLists(extraction);
    QCOMPARE(valueOf(extraction.extractTagsFor(m_files[0], false), u"City"_s), u"City 0"_s);
    const pid_t worker = extraction.workerProcessIdentifier();
    kill(worker, SIGKILL);

    // The dead worker is not noticed: it isn't replaced, and each later read finds nothing.
    QVERIFY(extraction.extractTagsFor(m_files[1], false).isEmpty());
    QVERIFY(extraction.extractTagsFor(m_files[2], false).isEmpty());
    QCOMPARE(extraction.workerProcessIdentifier(), worker);
}

void tst_ModernExifExtraction::workerKilledMidResponse()
{
    // A worker that dies half way through its first answer.
    const QString worker = Fixtures::makeScript(
        m_directory.path(), u"dying.pl"_s,
        "#!/usr/bin/perl\n$| = 1;\nmy $line = <STDIN>;\n"
        "print \"{extracted-key}:City\\nParis\\n{extracted-key}:GPSLatitude#\\n48.85\\n"
        "{extracted-key}:Coun\";\nkill 'KILL', $$;\n");
    ModernExifExtraction extraction(worker);
    const QList<ExtractedTag> partial = extraction.extractTagsFor(m_files[0], false);
    QCOMPARE(
        partial,
        QList<ExtractedTag>({{MetadataSource::ExifToolGeneric, u"City"_s, u"Paris"_s},
                             {MetadataSource::ExifToolGeneric, u"GPSLatitude#"_s, u"48.85"_s}}));
    QVERIFY(extraction.extractTagsFor(m_files[1], false).isEmpty());
}

QTEST_GUILESS_MAIN(tst_ModernExifExtraction)
#include "tst_ModernExifExtraction.moc"
