#include "acquisition/ExifToolProcess.h"
#include "acquisition/MacRomanDecoder.h"

#include "Fixtures.h"
#include "TestSupport.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_ExifToolProcess : public QObject
{
    Q_OBJECT

private slots:
    void launchSetsEnvironmentAndDirectory();
    void terminatorSplitAcrossChunks();
    void consecutiveRequestsGetTheirOwnAnswers();
    void invalidUtf8IsDeliveredAsLatin1();
    void workerExitingWithoutAnswerGivesEmptyText();
    void unsendablePathsGetNoAnswer();
    void responseIsComplete_data();
    void responseIsComplete();
    void macRomanMatchesTheSystemConverter();

private:
    QString standIn(const QByteArray &perlBody);

    QTemporaryDir m_directory;
    int m_scripts = 0;
};

namespace {

const QString terminator = u"-<-do-not_use_thisInMetaData-Finished-->"_s;

// Ended, whether reaped yet or not.
bool processHasEnded(pid_t pid)
{
    QFile stat(u"/proc/%1/stat"_s.arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return true;
    const QByteArray text = stat.readAll();
    return text.mid(text.lastIndexOf(')') + 2, 1) == "Z";
}

} // namespace

// A stand-in worker in Perl: the body runs once per request line, with the line in $path.
QString tst_ExifToolProcess::standIn(const QByteArray &perlBody)
{
    const QByteArray script = "#!/usr/bin/perl\n$| = 1;\nbinmode STDOUT;\n"
                              "while (defined(my $path = <STDIN>)) {\n    chomp $path;\n"
        + perlBody + "\n}\n";
    return Fixtures::makeScript(m_directory.path(), u"worker%1.pl"_s.arg(++m_scripts), script);
}

void tst_ExifToolProcess::launchSetsEnvironmentAndDirectory()
{
    const QString worker = standIn(
        R"(use Cwd; print "{extracted-key}:Env\n",
           join("|", map { $ENV{$_} // "-" } qw(EXIFTOOL_CHARSET EXIFTOOL_CHARSET_FILENAME
               EXIFTOOL_INCLUDE_TAGS EXIFTOOL_INCLUDE_RAW_TAGS EXIFTOOL_ENABLE_GEOLOCATION
               PALOMET_INHERITED)),
           "\n", getcwd(), "\n", scalar(@ARGV), "\n{extracted-key}:-<-do-not_use_thisInMetaData-Finished-->";)");
    qputenv("EXIFTOOL_CHARSET", "latin");
    qputenv("PALOMET_INHERITED", "yes");
    ExifToolProcess process(worker, {u"City"_s, u"Composite:SubSecCreateDate"_s},
                            {u"GPSLatitude#"_s, u"GPSLongitude#"_s}, true);
    qunsetenv("EXIFTOOL_CHARSET");
    qunsetenv("PALOMET_INHERITED");

    const std::optional<QString> answer = process.obtainStrippedString(u"/some/file.jpg"_s);
    QVERIFY(answer);
    const QStringList lines = answer->split(u'\n');
    QCOMPARE(lines.value(1),
             u"utf8|utf8|City,Composite:SubSecCreateDate|GPSLatitude#,GPSLongitude#|1|yes"_s);
    QCOMPARE(lines.value(2), QFileInfo(m_directory.path()).canonicalFilePath());
    QCOMPARE(lines.value(3), u"0"_s);

    ExifToolProcess withoutGeolocation(worker, {}, {}, false);
    QVERIFY(withoutGeolocation.obtainStrippedString(u"x"_s)->contains(u"|||0|-"_s));
}

void tst_ExifToolProcess::terminatorSplitAcrossChunks()
{
    const QString worker = standIn(
        R"(print "{extracted-key}:City\n$path\n{extracted-key}:-<-do-not_use_thisIn";
           select(undef, undef, undef, 0.3);
           print "MetaData-Finished-->";)");
    ExifToolProcess process(worker, {}, {}, false);
    QElapsedTimer timer;
    timer.start();
    const std::optional<QString> answer = process.obtainStrippedString(u"/a.jpg"_s);
    QVERIFY(timer.elapsed() >= 250);
    QCOMPARE(answer, u"{extracted-key}:City\n/a.jpg\n{extracted-key}:"_s + terminator);
}

void tst_ExifToolProcess::consecutiveRequestsGetTheirOwnAnswers()
{
    // Each answer comes in many small pieces.
    const QString worker = standIn(
        R"(for my $piece ("{extracted-key}:Path\n", "$path\n", "{extracted-key}:",
                          "-<-do-not_use_thisInMetaData-Finished-->") {
               print $piece; select(undef, undef, undef, 0.01);
           })");
    ExifToolProcess process(worker, {}, {}, false);
    for (const QString &path : {u"/first.jpg"_s, u"/second/Ærø.jpg"_s, u"/third.mov"_s}) {
        QCOMPARE(process.obtainStrippedString(path),
                 u"{extracted-key}:Path\n"_s + path + u"\n{extracted-key}:"_s + terminator);
    }
}

void tst_ExifToolProcess::invalidUtf8IsDeliveredAsLatin1()
{
    const QString worker = standIn(
        R"(print "{extracted-key}:City\nCaf\xE9 \xD8resund\n{extracted-key}:-<-do-not_use_thisInMetaData-Finished-->";)");
    ExifToolProcess process(worker, {}, {}, false);
    QCOMPARE(process.obtainStrippedString(u"x"_s),
             u"{extracted-key}:City\nCafé Øresund\n{extracted-key}:"_s + terminator);
}

void tst_ExifToolProcess::workerExitingWithoutAnswerGivesEmptyText()
{
    const QString worker = standIn("exit 0;");
    ExifToolProcess process(worker, {}, {}, false);
    QCOMPARE(process.obtainStrippedString(u"/a.jpg"_s), std::optional(QString()));
    // The worker is gone: writing to it fails, and that too ends the wait with nothing.
    QVERIFY(TestSupport::waitUntil([&] { return processHasEnded(process.processIdentifier()); }));
    QCOMPARE(process.obtainStrippedString(u"/b.jpg"_s), std::optional(QString()));
}

void tst_ExifToolProcess::unsendablePathsGetNoAnswer()
{
    const QString worker
        = standIn(R"(print "$path\n{extracted-key}:-<-do-not_use_thisInMetaData-Finished-->";)");
    ExifToolProcess process(worker, {}, {}, false);
    // A path that cannot be encoded is refused; one with a line feed would split the request.
    const QString loneSurrogate = u"/bad"_s + QChar(0xD800) + u".jpg"_s;
    QCOMPARE(process.obtainStrippedString(loneSurrogate), std::nullopt);
    QCOMPARE(process.obtainStrippedString(u"/two\nlines.jpg"_s), std::optional(QString()));
    QCOMPARE(process.obtainStrippedString(u"/next.jpg"_s),
             u"/next.jpg\n{extracted-key}:"_s + terminator);
}

void tst_ExifToolProcess::responseIsComplete_data()
{
    QTest::addColumn<QByteArray>("buffer");
    QTest::addColumn<bool>("complete");

    const QByteArray end = "{extracted-key}:" + terminator.toLatin1();
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("whole") << QByteArray("{extracted-key}:City\nParis\n" + end) << true;
    QTest::newRow("first half only") << end.left(30) << false;
    QTest::newRow("line feed after the terminator") << QByteArray(end + "\n") << false;
    QTest::newRow("invalid UTF-8 before it") << QByteArray("\xE9\xFF\n" + end) << true;
    QTest::newRow("cut inside a UTF-8 sequence") << QByteArray("Caf\xC3") << false;
    QTest::newRow("terminator inside a value counts")
        << QByteArray("x" + terminator.toLatin1()) << true;
}

void tst_ExifToolProcess::responseIsComplete()
{
    QFETCH(QByteArray, buffer);
    QFETCH(bool, complete);
    QCOMPARE(ExifToolProcess::responseIsComplete(buffer), complete);
}

void tst_ExifToolProcess::macRomanMatchesTheSystemConverter()
{
    QByteArray upperHalf;
    for (int byte = 0x80; byte <= 0xFF; ++byte)
        upperHalf.append(char(byte));
    const QString path = Fixtures::makeFile(m_directory.path(), u"macroman.bin"_s, upperHalf);
    QByteArray utf8;
    QVERIFY(Fixtures::run(u"iconv"_s, {u"-f"_s, u"MACINTOSH"_s, u"-t"_s, u"UTF-8"_s, path}, &utf8));
    const QString expected = QString::fromUtf8(utf8);
    const QString decoded = MacRomanDecoder::decode(upperHalf);
    QCOMPARE(decoded.size(), 128);
    QCOMPARE(expected.size(), 128);
    for (int index = 0; index < 128; ++index) {
        // The increment sign was once mapped to the Greek delta, and the Apple logo lives in the
        // private use area; there the converters disagree.
        if (index + 0x80 == 0xC6 || index + 0x80 == 0xF0)
            continue;
        QCOMPARE(decoded[index], expected[index]);
    }
    QCOMPARE(MacRomanDecoder::decode("\xC6\xDB\xF0"), u"\u2206\u20AC\uF8FF"_s);
    QCOMPARE(MacRomanDecoder::decode("plain ASCII\n"), u"plain ASCII\n"_s);
}

QTEST_GUILESS_MAIN(tst_ExifToolProcess)
#include "tst_ExifToolProcess.moc"
