#include "WriteFixtures.h"

#include "writing/WriteJournal.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace WriteFixtures;

namespace {

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

ino_t inode(const QString &path)
{
    struct stat status = {};
    stat(QFile::encodeName(path).constData(), &status);
    return status.st_ino;
}

} // namespace

// What the next start does with the records of writes that the end of a run cut off.
class tst_WriteJournal : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void cutOffWriteInPlaceIsUndone_data();
    void cutOffWriteInPlaceIsUndone();
    void recordOfRunningWriteIsLeftAlone();

private:
    std::optional<QTemporaryDir> m_directory;
};

void tst_WriteJournal::init()
{
    m_directory.emplace();
    QVERIFY(m_directory->isValid());
    WriteJournal::setDirectory(m_directory->filePath(u"journal"_s));
}

void tst_WriteJournal::cutOffWriteInPlaceIsUndone_data()
{
    QTest::addColumn<bool>("copyComplete");

    QTest::newRow("complete recovery copy: the file gets it back") << true;
    // The original was not touched yet: the half copy goes and the file stays.
    QTest::newRow("half-made recovery copy: the file stays") << false;
}

void tst_WriteJournal::cutOffWriteInPlaceIsUndone()
{
    QFETCH(bool, copyComplete);

    const QString target = m_directory->filePath(u"photo.jpg"_s);
    const QString temporary = m_directory->filePath(u".photo.jpg.new"_s);
    const QString recovery = m_directory->filePath(u".photo.jpg.recovery"_s);
    const QByteArray original = QByteArray("original bytes ").repeated(1000);
    writeFile(target, original);
    const timespec before = {1299215167, 123456789};
    setModificationTime(target, before);
    const ino_t inodeBefore = inode(target);
    writeFile(temporary, "the new file");

    {
        QString why;
        std::unique_ptr<WriteJournal::Record> record = WriteJournal::begin(target, temporary, &why);
        QVERIFY2(record, qPrintable(why));
        QVERIFY(record->noteRecoveryCopy(recovery));
        writeFile(recovery, QByteArray());
        QVERIFY(WriteJournal::copyInPlace(target, recovery, &why));
        if (copyComplete) {
            QVERIFY(record->markRecoveryCopyComplete());
            // Cut off halfway through the copy into the original.
            QFile torn(target);
            QVERIFY(torn.open(QIODevice::ReadWrite));
            torn.write("the new f");
        }
        record->keepForNextStart();
    }

    QCOMPARE(WriteJournal::recoverUnfinishedWrites(), copyComplete ? 1 : 0);
    QCOMPARE(contents(target), original);
    QCOMPARE(inode(target), inodeBefore);
    QCOMPARE(modificationTime(target).tv_sec, before.tv_sec);
    QCOMPARE(modificationTime(target).tv_nsec, before.tv_nsec);
    QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files | QDir::Hidden),
             QStringList {u"photo.jpg"_s});
    QVERIFY(QDir(WriteJournal::directory()).isEmpty());
}

void tst_WriteJournal::recordOfRunningWriteIsLeftAlone()
{
    const QString target = m_directory->filePath(u"photo.jpg"_s);
    const QString temporary = m_directory->filePath(u".photo.jpg.new"_s);
    writeFile(target, "original");
    writeFile(temporary, "being written");

    QString why;
    std::unique_ptr<WriteJournal::Record> record = WriteJournal::begin(target, temporary, &why);
    QVERIFY2(record, qPrintable(why));
    QCOMPARE(WriteJournal::recoverUnfinishedWrites(), 0);
    QVERIFY(QFile::exists(temporary));
    QCOMPARE(QDir(WriteJournal::directory()).entryList(QDir::Files).size(), 1);

    // Over: its record goes with it.
    record.reset();
    QVERIFY(QDir(WriteJournal::directory()).isEmpty());
}

QTEST_GUILESS_MAIN(tst_WriteJournal)
#include "tst_WriteJournal.moc"
