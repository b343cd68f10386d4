#include "WriteFixtures.h"

#include "platform/ChildProcess.h"
#include "platform/Resources.h"
#include "writing/WriteWorker.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace WriteFixtures;

using Outcome = WriteWorker::Answer::Outcome;
Q_DECLARE_METATYPE(Outcome)

class tst_WriteWorker : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void answersAsOneShotCallDoes_data();
    void answersAsOneShotCallDoes();

    void workerThatEndedBetweenFilesIsReplaced();

    void standInWorkers_data();
    void standInWorkers();

private:
    QString standIn(const QString &name, const QByteArray &loop);

    QTemporaryDir m_directory;
    QString m_jpeg;
};

void tst_WriteWorker::initTestCase()
{
    QVERIFY(m_directory.isValid());
    m_jpeg = m_directory.filePath(u"model.jpg"_s);
    const QString made = makeFixture(m_jpeg);
    QVERIFY2(made.isEmpty(), qPrintable(made));
}

// The long-running worker keeps the one-shot call's contract, file for file: the same status,
// the same message, the same file written.
void tst_WriteWorker::answersAsOneShotCallDoes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("pairs");
    QTest::addColumn<int>("status");

    const QStringList city = {u"City"_s, u"Zürich"_s};
    QTest::newRow("written") << u"a.jpg"_s << city << 0;
    QTest::newRow("a name with a space and a line feed") << u"a b\nc.jpg"_s << city << 0;
    QTest::newRow("nothing asked") << u"a.jpg"_s << QStringList() << 0;
    QTest::newRow("file not found") << QString() << city << 1;
    QTest::newRow("not a number") << u"a.jpg"_s << QStringList {u"GPSLatitude#"_s, u"abc"_s} << 1;
    QTest::newRow("unwritable type") << u"a.mp3"_s << city << 1;
}

void tst_WriteWorker::answersAsOneShotCallDoes()
{
    QFETCH(QString, name);
    QFETCH(QStringList, pairs);
    QFETCH(int, status);

    QTemporaryDir directory;
    QStringList sources;
    for (const QString &way : {u"one-shot"_s, u"served"_s}) {
        const QString source
            = directory.filePath(way + u"-"_s + (name.isEmpty() ? u"gone.jpg"_s : name));
        if (name.endsWith(u".mp3"))
            QVERIFY(makeFixture(source).isEmpty());
        else if (!name.isEmpty())
            QVERIFY(QFile::copy(m_jpeg, source));
        sources << source;
    }

    QStringList arguments = {sources[0], sources[0] + u".new.jpg"_s};
    for (qsizetype i = 0; i < pairs.size(); ++i)
        arguments << (i % 2 ? QString::fromLatin1(pairs[i].toUtf8().toBase64()) : pairs[i]);
    const CommandResult oneShot = run(Resources::path(u"set_tag.pl"_s), arguments);

    WriteWorker worker;
    const WriteWorker::Answer answer = worker.write(sources[1], sources[1] + u".new.jpg"_s, pairs);
    QCOMPARE(answer.outcome, Outcome::answered);
    QCOMPARE(oneShot.exitCode, status);
    QCOMPARE(answer.status, status);
    QCOMPARE(answer.output.trimmed(), QString::fromUtf8(oneShot.standardError).trimmed());
    if (status == 0 && !pairs.isEmpty()) {
        QCOMPARE(dumpValue(numericValues(sources[1] + u".new.jpg"_s).value(u"IPTC:City"_s)),
                 u"Zürich"_s);
        QCOMPARE(fileHash(sources[1] + u".new.jpg"_s), fileHash(sources[0] + u".new.jpg"_s));
    }
    // The original is never touched: putting the new file in place is the caller's.
    if (!name.isEmpty())
        QCOMPARE(fileHash(sources[1]), fileHash(sources[0]));
}

void tst_WriteWorker::workerThatEndedBetweenFilesIsReplaced()
{
    WriteWorker worker;
    const QString first = m_directory.filePath(u"first.jpg"_s);
    QVERIFY(QFile::copy(m_jpeg, first));
    QCOMPARE(worker.write(first, first + u".new"_s, {u"City"_s, u"Bern"_s}).status, 0);
    const pid_t pid = worker.processIdentifier();
    QVERIFY(pid > 0);

    QVERIFY(kill(pid, SIGKILL) == 0);
    QTRY_VERIFY(!ChildProcess::processorTime(pid)); // gone, not yet reaped
    const QString second = m_directory.filePath(u"second.jpg"_s);
    QVERIFY(QFile::copy(m_jpeg, second));
    const WriteWorker::Answer answer
        = worker.write(second, second + u".new"_s, {u"City"_s, u"Bern"_s});
    QCOMPARE(answer.outcome, Outcome::answered);
    QCOMPARE(answer.status, 0);
    QVERIFY(worker.processIdentifier() != pid);
}

// A Perl worker of the test's own that does loop for each request line.
QString tst_WriteWorker::standIn(const QString &name, const QByteArray &loop)
{
    const QString path = m_directory.filePath(name);
    QFile script(path);
    if (!script.open(QIODevice::WriteOnly))
        return QString();
    script.write("#!/usr/bin/env perl\n$| = 1;\nwhile (<STDIN>) {\n" + loop + "\n}\n");
    script.close();
    script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

// A worker that dies or stops answering is stopped and the file reported; one that works on
// past the time-out is no hang.
void tst_WriteWorker::standInWorkers_data()
{
    QTest::addColumn<QByteArray>("loop");
    QTest::addColumn<Outcome>("outcome");

    const QByteArray answer = "print \"0\\n-<-do-not_use_thisInMetaData-Finished-->\";";
    QTest::newRow("dies") << QByteArray("exit 3;") << Outcome::stopped;
    QTest::newRow("silent and idle") << QByteArray("sleep 100;") << Outcome::hung;
    QTest::newRow("silent and busy")
        << ("my $end = time + 3; my $x = 0; $x++ while time < $end; " + answer)
        << Outcome::answered;
    QTest::newRow("answers in pieces")
        << QByteArray("print \"1\\nError: x\\n-<-do-not_use_this\"; sleep 1; "
                      "print \"InMetaData-Finished-->\";")
        << Outcome::answered;
    QTest::newRow("answers nonsense")
        << QByteArray("print \"what\\n-<-do-not_use_thisInMetaData-Finished-->\";")
        << Outcome::stopped;
}

void tst_WriteWorker::standInWorkers()
{
    QFETCH(QByteArray, loop);
    QFETCH(Outcome, outcome);

    const QString script
        = standIn(QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-'), loop);
    QVERIFY(!script.isEmpty());
    WriteWorker worker(script, std::chrono::milliseconds(1500));
    QElapsedTimer timer;
    timer.start();
    const WriteWorker::Answer answer
        = worker.write(m_jpeg, m_jpeg + u".new"_s, {u"City"_s, u"Bern"_s});
    QCOMPARE(answer.outcome, outcome);
    QVERIFY2(timer.elapsed() < 8000, "the worker was waited for too long");
    if (outcome == Outcome::answered)
        QVERIFY(worker.processIdentifier() > 0);
    else
        QCOMPARE(worker.processIdentifier(), pid_t(-1));
}

QTEST_GUILESS_MAIN(tst_WriteWorker)
#include "tst_WriteWorker.moc"
