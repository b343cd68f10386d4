#include "RecordingDoubles.h"
#include "TestSupport.h"
#include "WriteFixtures.h"

#include "mainwindow/UndoActions.h"
#include "metadata/DataCoordinator.h"
#include "session/Node.h"
#include "writing/UndoJournal.h"
#include "writing/WriteEngine.h"

#include "Fixtures.h"

#include <QAction>
#include <QFileInfo>
#include <QMainWindow>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_UndoActions : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { AlertPresenter::install(nullptr); }
    void keysUndoAndRedoAWrittenCity();

private:
    QString city(const QString &path) const
    {
        return WriteFixtures::numericValues(path).value(u"IPTC:City"_s).toString();
    }
    bool waitUntilIdle();

    QTemporaryDir m_directory;
    RecordingPresenter m_presenter;
};

void tst_UndoActions::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    QVERIFY(m_directory.isValid());
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_directory.filePath(u"data"_s)));
    UndoJournal::shared().enable();
    AlertPresenter::install(&m_presenter);
}

bool tst_UndoActions::waitUntilIdle()
{
    const bool idle
        = TestSupport::waitUntil([] { return !WriteEngine::shared().hasPendingWrites(); }, 60000);
    QTest::qWait(50);
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    return idle;
}

void tst_UndoActions::keysUndoAndRedoAWrittenCity()
{
    QMainWindow window;
    UndoActions actions(&window);
    QMenu *edit = window.menuBar()->addMenu(u"&Edit"_s);
    actions.addTo(edit);
    window.resize(400, 200);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QAction *undo = actions.undoAction();
    QAction *redo = actions.redoAction();
    QVERIFY(!undo->isEnabled());
    QCOMPARE(undo->text(), u"&Undo"_s);

    QStringList paths;
    for (const QString &name : {u"a.jpg"_s, u"b.jpg"_s}) {
        const QString path = m_directory.filePath(name);
        QVERIFY(WriteFixtures::makeFixture(path).isEmpty());
        paths << path;
        WriteEngine::shared().enqueueWrite(
            {path, {u"City"_s, u"Bern"_s}, FileNode::create(name, path, name), {}});
    }
    WriteEngine::shared().flushImmediately();
    QVERIFY(waitUntilIdle());
    QCOMPARE(city(paths.at(1)), u"Bern"_s);
    QVERIFY(undo->isEnabled());
    QCOMPARE(undo->text(), u"&Undo City on 2 Files"_s);
    QCOMPARE(undo->toolTip(), u"Undo City on 2 Files"_s);
    // Opening the menu brings the entries up to date; still "Undo City on 2 Files".
    edit->popup(window.mapToGlobal(QPoint(0, 0)));
    QVERIFY(QTest::qWaitForWindowExposed(edit));
    QVERIFY(undo->isEnabled());
    edit->grab().save(u"/tmp/undoui_shots/edit_menu.png"_s);
    edit->hide();

    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
    QVERIFY(waitUntilIdle());
    for (const QString &path : std::as_const(paths))
        QCOMPARE(city(path), QString());
    QVERIFY(redo->isEnabled());
    QCOMPARE(redo->text(), u"&Redo City on 2 Files"_s);

    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(waitUntilIdle());
    for (const QString &path : std::as_const(paths))
        QCOMPARE(city(path), u"Bern"_s);
    QVERIFY(!redo->isEnabled());

    // Another program writes b.jpg: the menu's Undo leaves it and names it in an alert.
    QVERIFY(Fixtures::writeTags(paths.at(1), {u"-IPTC:City=Basel"_s}));
    undo->trigger();
    QVERIFY(waitUntilIdle());
    QCOMPARE(city(paths.at(0)), QString());
    QCOMPARE(city(paths.at(1)), u"Basel"_s);
    QCOMPARE(m_presenter.alerts.size(), 1);
    QVERIFY(m_presenter.alerts.first().text.contains(u"b.jpg"_s));
}

QTEST_MAIN(tst_UndoActions)
#include "tst_UndoActions.moc"
