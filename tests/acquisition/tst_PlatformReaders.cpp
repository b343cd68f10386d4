#include "acquisition/AVKitHelper.h"
#include "acquisition/ImageIOHelper.h"
#include "acquisition/SpotlightHelper.h"

#include "Fixtures.h"
#include "ReaderFixtures.h"
#include "TestSupport.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <thread>

// The three platform readers together: damaged and misleading files, and many threads at once.
class tst_PlatformReaders : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void badInputGivesAnEmptyOrPartialResultQuietly_data();
    void badInputGivesAnEmptyOrPartialResultQuietly();
    void readersGiveTheSameValuesOnManyThreads();

private:
    QString writeFile(const QString &name, const QByteArray &bytes);

    QTemporaryDir m_dir;
    QStringList m_goodFiles;
};

struct AllValues
{
    ExtractedValues imageIO;
    ExtractedValues spotlight;
    ExtractedValues avKit;
    bool operator==(const AllValues &) const = default;
};

static AllValues readAll(const QString &path)
{
    return {ImageIOHelper::shared().extract(path), SpotlightHelper::shared().extract(path),
            AVKitHelper::shared().extract(path)};
}

QString tst_PlatformReaders::writeFile(const QString &name, const QByteArray &bytes)
{
    const QString path = m_dir.filePath(QStringLiteral("bad/") + name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return {};
    return path;
}

void tst_PlatformReaders::initTestCase()
{
    QVERIFY(m_dir.isValid());
    QVERIFY(QDir(m_dir.path()).mkpath(QStringLiteral("bad")));
    const QString dir = m_dir.path();
    m_goodFiles = {ReaderFixtures::jpegWithMetadata(dir), ReaderFixtures::pngWithAlpha(dir),
                   ReaderFixtures::tiffWithCamera(dir),   ReaderFixtures::mp4WithLocation(dir),
                   ReaderFixtures::movWithLocation(dir),  ReaderFixtures::m4aWithLyrics(dir),
                   ReaderFixtures::mp3WithId3(dir),       ReaderFixtures::wavWithId3(dir),
                   ReaderFixtures::flacWithTitle(dir)};
    for (const QString &path : std::as_const(m_goodFiles))
        QVERIFY(!path.isEmpty());
}

void tst_PlatformReaders::badInputGivesAnEmptyOrPartialResultQuietly_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("nothingToRead"); // no content: only the file's type and dates

    const auto bytesOf = [](const QString &path) {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    };
    QRandomGenerator random(20240501);
    for (const QString &good : std::as_const(m_goodFiles)) {
        const QByteArray bytes = bytesOf(good);
        QVERIFY(!bytes.isEmpty());
        const QString suffix = QFileInfo(good).suffix();
        const QString base = QFileInfo(good).completeBaseName();

        QTest::addRow("zero-byte %s", qPrintable(suffix))
            << writeFile(base + "-empty." + suffix, {}) << true;
        QTest::addRow("first 64 bytes of %s", qPrintable(suffix))
            << writeFile(base + "-head." + suffix, bytes.left(64)) << false;
        QTest::addRow("truncated %s", qPrintable(suffix))
            << writeFile(base + "-truncated." + suffix, bytes.left(bytes.size() * 2 / 5)) << false;

        // Random bytes over the headers and the middle, the way a damaged copy looks.
        QByteArray corrupt = bytes;
        for (qsizetype at = 12; at < corrupt.size(); at += 1 + random.bounded(40))
            corrupt[at] = char(random.bounded(256));
        QTest::addRow("corrupt %s", qPrintable(suffix))
            << writeFile(base + "-corrupt." + suffix, corrupt) << false;

        QVERIFY(QDir(m_dir.path()).mkpath("bad/folder." + suffix));
        QTest::addRow("directory named .%s", qPrintable(suffix))
            << m_dir.filePath("bad/folder." + suffix) << true;
        QTest::addRow("text named .%s", qPrintable(suffix))
            << writeFile(base + "-text." + suffix, "just some words, not a file of that type\n")
            << false;
    }
    // Real files of one kind under the name of another.
    QTest::newRow("PNG named .mp3") << writeFile("picture.mp3", bytesOf(m_goodFiles[1])) << false;
    QTest::newRow("MP4 named .jpg") << writeFile("movie.jpg", bytesOf(m_goodFiles[3])) << false;
    QTest::newRow("JPEG named .wav") << writeFile("photo.wav", bytesOf(m_goodFiles[0])) << false;
    QTest::newRow("missing file") << m_dir.filePath("bad/none.jpg") << true;
    // Opening a named pipe for reading would wait for a writer forever, a device may never end.
    for (const char *extension : {"mp3", "jpg", "mp4"}) {
        const QMap<QString, QString> unreadable
            = Fixtures::makeUnreadableFiles(m_dir.filePath(QStringLiteral("bad")),
                                            QStringLiteral("unreadable"), QLatin1String(extension));
        for (auto file = unreadable.cbegin(); file != unreadable.cend(); ++file)
            QTest::addRow("%s .%s", qPrintable(file.key()), extension) << file.value() << true;
    }
}

void tst_PlatformReaders::badInputGivesAnEmptyOrPartialResultQuietly()
{
    QFETCH(QString, path);
    QFETCH(bool, nothingToRead);
    QVERIFY(!path.isEmpty());

    AllValues values;
    const QString printed = QString::fromLocal8Bit(TestSupport::standardErrorOf([&] {
        values = readAll(path);
        SpotlightHelper::shared().getContentCreateDate(path);
        SpotlightHelper::shared().getItemCopyright(path);
    }));
    for (const QString &line : printed.split('\n', Qt::SkipEmptyParts))
        QVERIFY2(line.startsWith("key not recognized: "), qPrintable(line));

    if (nothingToRead) {
        QVERIFY(values.imageIO.isEmpty());
        QVERIFY(values.avKit.isEmpty());
        for (const auto &value : values.spotlight) {
            QVERIFY2(value.key == QLatin1String("contenttype")
                         || value.value.kind() == WrappedMetaDataValue::Kind::DateValue,
                     qPrintable(value.key));
        }
    }
}

void tst_PlatformReaders::readersGiveTheSameValuesOnManyThreads()
{
    QList<AllValues> expected;
    for (const QString &path : std::as_const(m_goodFiles)) {
        expected << readAll(path);
        QVERIFY(!expected.last().spotlight.isEmpty());
    }

    constexpr int threadCount = 4;
    std::vector<QList<AllValues>> results(threadCount);
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&, t] {
            QList<AllValues> &mine = results[size_t(t)];
            for (qsizetype i = 0; i < m_goodFiles.size(); ++i)
                mine << readAll(m_goodFiles[(i + t) % m_goodFiles.size()]);
        });
    }
    for (auto &thread : threads)
        thread.join();

    for (int t = 0; t < threadCount; ++t) {
        for (qsizetype i = 0; i < m_goodFiles.size(); ++i) {
            const qsizetype file = (i + t) % m_goodFiles.size();
            QVERIFY2(results[size_t(t)][i] == expected[file], qPrintable(m_goodFiles[file]));
        }
    }
}

QTEST_GUILESS_MAIN(tst_PlatformReaders)
#include "tst_PlatformReaders.moc"
