#include "TestSupport.h"
#include "WriteFixtures.h"
#include "WriteTestDoubles.h"

#include "metadata/DataCoordinator.h"
#include "platform/AlertPresenter.h"
#include "session/Node.h"
#include "writing/ChangeManager.h"
#include "writing/UndoJournal.h"
#include "writing/UndoManager.h"
#include "writing/WriteEngine.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace WriteTestDoubles;

namespace {

// Tags that ExifTool or the file system keep by themselves: the access and change times, the
// toolkit that ExifTool names in every XMP packet it writes, where it places a movie's media
// data, and the hash of the IPTC block, whose datasets it writes in their numeric order (a
// keyword that another program appended after other datasets comes back beside its fellows).
bool isBookkeeping(const QString &key)
{
    static const QStringList keys
        = {u"System:FileAccessDate"_s, u"System:FileInodeChangeDate"_s, u"XMP-x:XMPToolkit"_s,
           u"QuickTime:MediaDataOffset"_s, u"File:CurrentIPTCDigest"_s};
    return keys.contains(key);
}

WriteFixtures::MetadataDump dump(const QString &path)
{
    WriteFixtures::MetadataDump all = WriteFixtures::metadataDump(path);
    all.removeIf([](const auto &entry) { return isBookkeeping(entry.key()); });
    return all;
}

// What differs between two dumps, for a readable failure.
QString difference(const WriteFixtures::MetadataDump &expected,
                   const WriteFixtures::MetadataDump &actual)
{
    QStringList lines;
    for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
        if (actual.value(it.key()) != it.value())
            lines << it.key() + u": "_s + it.value().join(u", "_s) + u" -> "_s
                    + actual.value(it.key()).join(u", "_s);
    }
    for (auto it = actual.cbegin(); it != actual.cend(); ++it) {
        if (!expected.contains(it.key()))
            lines << it.key() + u": (absent) -> "_s + it.value().join(u", "_s);
    }
    return lines.join(u'\n');
}

} // namespace

class tst_UndoManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void undoAndRedoRestoreEveryTag();
    void undoAfterRestart();
    void fileChangedOutsideIsSkippedAndNamed();
    void journalStaysWithinItsBound();

private:
    QString fixture(const QString &name,
                    WriteFixtures::IptcText text = WriteFixtures::IptcText::Latin1);
    void write(const QList<std::pair<QString, QStringList>> &edits);

    QTemporaryDir m_directory;
    RecordingPresenter m_presenter;
};

void tst_UndoManager::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    QVERIFY(m_directory.isValid());
    // The journal lives in the application's data folder, here a temporary one.
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_directory.filePath(u"data"_s)));
    UndoJournal::shared().enable();
    QVERIFY(UndoJournal::shared().isEnabled());
    QVERIFY(UndoJournal::defaultFilePath().startsWith(m_directory.path()));
    AlertPresenter::install(&m_presenter);
}

void tst_UndoManager::cleanupTestCase()
{
    AlertPresenter::install(nullptr);
}

void tst_UndoManager::init()
{
    m_presenter.alerts.clear();
}

QString tst_UndoManager::fixture(const QString &name, WriteFixtures::IptcText text)
{
    const QString path = m_directory.filePath(name);
    const QString made = WriteFixtures::makeFixture(path, text);
    return made.isEmpty() ? path : QString();
}

void tst_UndoManager::write(const QList<std::pair<QString, QStringList>> &edits)
{
    for (const auto &[path, pairs] : edits) {
        const QString name = QFileInfo(path).fileName();
        WriteEngine::shared().enqueueWrite({path, pairs, FileNode::create(name, path, name), {}});
    }
    WriteEngine::shared().flushImmediately();
}

void tst_UndoManager::undoAndRedoRestoreEveryTag()
{
    // Every type Palomet writes, and IPTC text that the write must declare UTF-8 and store again.
    QList<std::pair<QString, QStringList>> edits;
    const QString city = u"Zürich"_s;
    for (const QString &type : WriteFixtures::writableFixtureTypes()) {
        const QString path = fixture(u"bulk."_s + type);
        QVERIFY(!path.isEmpty());
        edits.append({path,
                      ChangeManager::gpsTagValuePairs(type, u"47.376887"_s, u"8.541694"_s)
                          + QStringList {u"City"_s, city, u"Country"_s, u"Schweiz"_s}});
    }
    const QList<std::pair<QString, WriteFixtures::IptcText>> iptc
        = {{u"declared.jpg"_s, WriteFixtures::IptcText::DeclaredUtf8},
           {u"mixed.tif"_s, WriteFixtures::IptcText::UndeclaredMixed}};
    for (const auto &[name, text] : iptc) {
        const QString path = fixture(name, text);
        QVERIFY(!path.isEmpty());
        edits.append({path, {u"MWG:City"_s, u"東京"_s, u"Sub-location"_s, u"Shinjuku"_s}});
    }

    QMap<QString, WriteFixtures::MetadataDump> before;
    for (const auto &edit : std::as_const(edits))
        before.insert(edit.first, dump(edit.first));
    write(edits);
    QVERIFY(TestSupport::waitForWrites());
    QMap<QString, WriteFixtures::MetadataDump> after;
    for (const auto &edit : std::as_const(edits)) {
        after.insert(edit.first, dump(edit.first));
        QVERIFY2(after.value(edit.first) != before.value(edit.first), qPrintable(edit.first));
    }

    UndoManager &manager = UndoManager::shared();
    QVERIFY(manager.canUndo().value());
    const QString files = QString::number(edits.size()) + u" Files"_s;
    QCOMPARE(manager.undoTitle().value(),
             u"Undo GPS, City, Country and Sub-location on "_s + files);
    QVERIFY(manager.undo());
    QVERIFY(TestSupport::waitForWrites());
    for (const auto &edit : std::as_const(edits)) {
        const WriteFixtures::MetadataDump now = dump(edit.first);
        QVERIFY2(now == before.value(edit.first),
                 qPrintable(edit.first + u"\n"_s + difference(before.value(edit.first), now)));
    }
    QCOMPARE(manager.redoTitle().value(),
             u"Redo GPS, City, Country and Sub-location on "_s + files);
    QVERIFY(manager.canRedo().value());
    QVERIFY(!manager.canUndo().value() || manager.undoTitle().value() != u"Undo"_s);

    QVERIFY(manager.redo());
    QVERIFY(TestSupport::waitForWrites());
    for (const auto &edit : std::as_const(edits)) {
        const WriteFixtures::MetadataDump now = dump(edit.first);
        QVERIFY2(now == after.value(edit.first),
                 qPrintable(edit.first + u"\n"_s + difference(after.value(edit.first), now)));
    }
    QVERIFY(!manager.canRedo().value());
    // Undone once more, from what the redo recorded.
    QVERIFY(manager.undo());
    QVERIFY(TestSupport::waitForWrites());
    for (const auto &edit : std::as_const(edits))
        QCOMPARE(dump(edit.first), before.value(edit.first));
    QVERIFY(m_presenter.alerts.isEmpty());
}

void tst_UndoManager::undoAfterRestart()
{
    const QString path = fixture(u"restart.jpg"_s);
    QVERIFY(!path.isEmpty());
    const WriteFixtures::MetadataDump before = dump(path);
    write({{path, {u"City"_s, u"Bern"_s}}});
    QVERIFY(TestSupport::waitForWrites());

    // A new run knows only what the file holds.
    UndoJournal::shared().disable();
    UndoManager::shared().refresh();
    QVERIFY(!UndoManager::shared().canUndo().value());
    UndoJournal::shared().enable();
    UndoManager::shared().refresh();
    QCOMPARE(UndoManager::shared().undoTitle().value(), u"Undo City on 1 File"_s);
    QVERIFY(UndoManager::shared().undo());
    QVERIFY(TestSupport::waitForWrites());
    QCOMPARE(dump(path), before);
}

void tst_UndoManager::fileChangedOutsideIsSkippedAndNamed()
{
    QStringList paths;
    QList<std::pair<QString, QStringList>> edits;
    for (const QString &name : {u"kept1.jpg"_s, u"changed.jpg"_s, u"kept2.jpg"_s}) {
        paths << fixture(name);
        QVERIFY(!paths.last().isEmpty());
        edits.append({paths.last(), {u"City"_s, u"Basel"_s}});
    }
    const WriteFixtures::MetadataDump firstBefore = dump(paths.first());
    const WriteFixtures::MetadataDump lastBefore = dump(paths.last());
    write(edits);
    QVERIFY(TestSupport::waitForWrites());

    // Another program writes the file: its modification time is put back, its change time moves.
    const timespec modified = WriteFixtures::modificationTime(paths.at(1));
    QCOMPARE(WriteFixtures::exifTool(
                 {u"-q"_s, u"-overwrite_original"_s, u"-IPTC:City=Genf"_s, paths.at(1)})
                 .exitCode,
             0);
    WriteFixtures::setModificationTime(paths.at(1), modified);
    const QByteArray changed = WriteFixtures::fileHash(paths.at(1));

    QStringList skipped;
    QVERIFY(UndoManager::shared().undo(&skipped));
    QVERIFY(TestSupport::waitForWrites());
    QCOMPARE(skipped, QStringList {paths.at(1)});
    QCOMPARE(m_presenter.alerts.size(), 1);
    QCOMPARE(m_presenter.alerts.first().title, u"A file was changed outside Palomet"_s);
    QVERIFY(m_presenter.alerts.first().text.contains(u"changed.jpg"_s));
    QCOMPARE(WriteFixtures::fileHash(paths.at(1)), changed);
    QCOMPARE(dump(paths.first()), firstBefore);
    QCOMPARE(dump(paths.last()), lastBefore);
    // The redo names only the files the undo wrote.
    QCOMPARE(UndoManager::shared().redoTitle().value(), u"Redo City on 2 Files"_s);
}

void tst_UndoManager::journalStaysWithinItsBound()
{
    UndoJournal &journal = UndoJournal::shared();
    const qint64 bound = 2048;
    journal.setMaximumSize(bound);
    const QString path = fixture(u"bound.jpg"_s);
    QVERIFY(!path.isEmpty());
    QList<quint64> ids;
    for (int round = 0; round < 6; ++round) {
        write({{path, {u"City"_s, u"City number %1 with a long name"_s.arg(round)}}});
        QVERIFY(TestSupport::waitForWrites());
        ids << journal.undoable()->id;
        QVERIFY2(journal.fileSize() <= bound, qPrintable(QString::number(journal.fileSize())));
    }
    // The oldest went first; the newest still undoes.
    const QList<UndoJournal::Command> kept = journal.commands();
    QVERIFY(!kept.isEmpty());
    QCOMPARE(kept.last().id, ids.last());
    QVERIFY(kept.first().id > ids.first());
    QVERIFY(UndoManager::shared().undo());
    QVERIFY(TestSupport::waitForWrites());
    QCOMPARE(WriteFixtures::numericValues(path).value(u"IPTC:City"_s).toString(),
             u"City number 4 with a long name"_s);

    // A line cut off by a crash counts for nothing.
    {
        QFile file(UndoJournal::defaultFilePath());
        QVERIFY(file.open(QIODevice::Append));
        file.write("C 999 e 0 ");
    }
    const qsizetype count = journal.commands().size();
    journal.reload();
    QCOMPARE(journal.commands().size(), count);
    journal.setMaximumSize(32 * 1024 * 1024);
}

QTEST_GUILESS_MAIN(tst_UndoManager)
#include "tst_UndoManager.moc"
