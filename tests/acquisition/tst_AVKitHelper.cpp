#include "acquisition/AVKitHelper.h"

#include "ReaderFixtures.h"
#include "TestSupport.h"

#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

using ReaderFixtures::mismatches;
using ReaderFixtures::stringOf;

using namespace Qt::StringLiterals;

class tst_AVKitHelper : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void videoGivesCommonKeysAndMarksAContainerDate();
    void textDateIsStoredAsText();
    void audioLyricsAreStoredUnderTheirOwnKey();
    void id3FramesAreStoredByTheirIdentifiers();
    void wavId3ChunkIsRead();
    void extensionsOutsideTheListStoreNothing();
    void photoWithAListedExtensionGoesThroughTheSamePath();
    void assetItemsFollowTheStoringRules_data();
    void assetItemsFollowTheStoringRules();
    void id3KeyWithTrailingNulKeepsThreeCharacters_data();
    void id3KeyWithTrailingNulKeepsThreeCharacters();

private:
    QTemporaryDir m_dir;
    QString m_mp3;
};

void tst_AVKitHelper::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_mp3 = ReaderFixtures::mp3WithId3(m_dir.path());
    QVERIFY(!m_mp3.isEmpty());
}

void tst_AVKitHelper::videoGivesCommonKeysAndMarksAContainerDate()
{
    const QString mp4 = ReaderFixtures::mp4WithLocation(m_dir.path());
    QVERIFY(!mp4.isEmpty());
    const ExtractedValues values = AVKitHelper::shared().extract(mp4);

    QCOMPARE(mismatches(values,
                        "av_title=Eiffel clip|av_artist=Ana|av_copyrights=(c) Ana|"
                        "av_description=a comment|av_location=+48.8584+002.2945/"),
             QString());
    QVERIFY(stringOf(values, "av_software").startsWith("Lavf"));
    // The container's creation time is a date, not text, so it comes in the marked form.
    QCOMPARE(stringOf(values, "av_creation_date"), "date value!2024-05-01 10:34:56 +0000");
    // Each common key once, although the file names the location twice.
    QCOMPARE(std::count_if(values.cbegin(), values.cend(),
                           [](const auto &v) { return v.key == QLatin1String("av_location"); }),
             1);
}

void tst_AVKitHelper::textDateIsStoredAsText()
{
    const QString mov = ReaderFixtures::movWithLocation(m_dir.path());
    QVERIFY(!mov.isEmpty());
    const ExtractedValues values = AVKitHelper::shared().extract(mov);
    QCOMPARE(stringOf(values, "av_creation_date"), "2023-07-14");
    QCOMPARE(stringOf(values, "av_location"), "+48.8584+002.2945/");
}

void tst_AVKitHelper::audioLyricsAreStoredUnderTheirOwnKey()
{
    const QString m4a = ReaderFixtures::m4aWithLyrics(m_dir.path());
    QVERIFY(!m4a.isEmpty());
    const ExtractedValues values = AVKitHelper::shared().extract(m4a);
    QCOMPARE(mismatches(values, "av_title=Evening|av_album=Seasons|av_lyrics=sun goes down"),
             QString());
    QCOMPARE(values.last().key, "av_lyrics");
}

void tst_AVKitHelper::id3FramesAreStoredByTheirIdentifiers()
{
    ExtractedValues values;
    const QString printed = QString::fromLocal8Bit(
        TestSupport::standardErrorOf([&] { values = AVKitHelper::shared().extract(m_mp3); }));

    // With the common keys of the same file, and the lyrics frame.
    QCOMPARE(mismatches(values,
                        "id3_album_title=Record|id3_copyright=2024 Ana|id3_band=The Band|"
                        "id3_comments=nice tune|id3_user_text=calm|av_title=Song|"
                        "av_album=Record|av_lyrics=la la la"),
             QString());

    // Frames outside the table are only reported.
    const QStringList lines = printed.split('\n', Qt::SkipEmptyParts);
    QVERIFY2(lines.contains("key not recognized: TIT2, value Song"), qPrintable(printed));
    QVERIFY2(lines.contains("key not recognized: USLT, value la la la"), qPrintable(printed));
    for (const QString &line : lines)
        QVERIFY2(line.startsWith("key not recognized: "), qPrintable(line));
}

void tst_AVKitHelper::wavId3ChunkIsRead()
{
    const QString wav = ReaderFixtures::wavWithId3(m_dir.path());
    QVERIFY(!wav.isEmpty());
    QCOMPARE(stringOf(AVKitHelper::shared().extract(wav), "id3_album_title"), "Field Recordings");
}

void tst_AVKitHelper::extensionsOutsideTheListStoreNothing()
{
    const QString flac = ReaderFixtures::flacWithTitle(m_dir.path());
    QVERIFY(!flac.isEmpty());
    QVERIFY(AVKitHelper::shared().extract(flac).isEmpty());
    // The same bytes under a listed name are read.
    const QString renamed = m_dir.filePath("tone-as.mp4");
    QVERIFY(QFile::copy(flac, renamed));
    QCOMPARE(stringOf(AVKitHelper::shared().extract(renamed), "av_title"), "Flac tone");
}

void tst_AVKitHelper::photoWithAListedExtensionGoesThroughTheSamePath()
{
    const QString jpeg = ReaderFixtures::jpegWithMetadata(m_dir.path());
    QVERIFY(!jpeg.isEmpty());
    ExtractedValues values;
    const QString printed = QString::fromLocal8Bit(
        TestSupport::standardErrorOf([&] { values = AVKitHelper::shared().extract(jpeg); }));
    QVERIFY(printed.isEmpty());
    for (const auto &value : values)
        QVERIFY2(value.key.startsWith("av_"), qPrintable(value.key));
}

using Item = AVKitHelper::MetadataItem;
Q_DECLARE_METATYPE(AVKitHelper::Asset)

void tst_AVKitHelper::assetItemsFollowTheStoringRules_data()
{
    QTest::addColumn<AVKitHelper::Asset>("asset");
    QTest::addColumn<QStringList>("expected"); // key=value pairs, in order

    const QDateTime date(QDate(2020, 2, 29), QTime(23, 0, 5), QTimeZone::utc());
    QTest::newRow("text wins over date and number")
        << AVKitHelper::Asset {{Item {"title", "title", "Name", date, 5.0}}, {}, {}}
        << QStringList {"av_title=Name"};
    QTest::newRow("date without text")
        << AVKitHelper::Asset {{Item {"creationDate", "x", {}, date, 5.0}}, {}, {}}
        << QStringList {"av_creation_date=date value!2020-02-29 23:00:05 +0000"};
    QTest::newRow("number without text or date")
        << AVKitHelper::Asset {{Item {"make", "x", {}, {}, 42.5}}, {}, {}}
        << QStringList {"av_make=date number!42.5"};
    QTest::newRow("common key outside the table, or none") << AVKitHelper::Asset {
        {Item {"artwork", "x", "picture", {}, {}}, Item {{}, "title", "no common key", {}, {}}},
        {},
        {}} << QStringList {};
    QTest::newRow("ID3 frame without text is not stored")
        << AVKitHelper::Asset {{}, {Item {{}, "PRIV", {}, {}, {}}}, {}} << QStringList {};
    QTest::newRow("order: common, ID3, lyrics")
        << AVKitHelper::Asset {{Item {"artist", "x", "A", {}, {}}},
                               {Item {{}, "TALB", "B", {}, {}}, Item {{}, "TPE3", "C", {}, {}}},
                               QStringLiteral("D")}
        << QStringList {"av_artist=A", "id3_album_title=B", "id3_conductor=C", "av_lyrics=D"};
}

void tst_AVKitHelper::assetItemsFollowTheStoringRules()
{
    QFETCH(AVKitHelper::Asset, asset);
    QFETCH(QStringList, expected);
    QStringList actual;
    for (const auto &value : AVKitHelper::shared().valuesFromAsset(asset))
        actual << value.key + '=' + value.value.stringValue();
    QCOMPARE(actual, expected);
}

void tst_AVKitHelper::id3KeyWithTrailingNulKeepsThreeCharacters_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected");
    QTest::newRow("four letters") << u"TALB"_s << u"TALB"_s;
    QTest::newRow("trailing NUL") << QString("TAL") + QChar(0) << u"TAL"_s;
    QTest::newRow("NUL inside only")
        << QString("TA") + QChar(0) + "B" << QString("TA") + QChar(0) + "B";
}

void tst_AVKitHelper::id3KeyWithTrailingNulKeepsThreeCharacters()
{
    QFETCH(QString, key);
    QFETCH(QString, expected);
    QCOMPARE(AVKitHelper::id3LookupKey(key), expected);
}

QTEST_GUILESS_MAIN(tst_AVKitHelper)
#include "tst_AVKitHelper.moc"
