#include "EditorTestBench.h"
#include "TestSupport.h"
#include "bricks/controls/PushButtonBrick.h"
#include "bricks/controls/SmartTextField.h"
#include "location/IPTCLocationComponent.h"
#include "mainwindow/editors/LocationFieldFragment.h"
#include "session/DataModel.h"
#include "writing/WriteEngine.h"

#include <QApplication>
#include <QMenu>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

class tst_LocationFieldFragment : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { EditorTestBench::setUpOnce(); }
    void init();
    void cleanup() { m_bench.reset(); }
    void proposalChosenFromTheMenuIsApplied();
    void returnAppliesAndEscapeResets();

private:
    bool select(const QList<NodePtr> &nodes, const QString &text);
    // Opens the menu with a key in the field, then picks the entry, as a user does.
    QStringList chooseInMenu(const QString &title);
    SmartTextField *field() const { return m_bench->view<SmartTextField>(u"cityField"_s); }

    std::unique_ptr<EditorTestBench> m_bench;
};

void tst_LocationFieldFragment::init()
{
    m_bench = std::make_unique<EditorTestBench>();
    QVERIFY(m_bench->show(
        LocationFieldFragment::directive(*m_bench->model().cityComponent, u"city"_s)));
    // The model's first, empty selection settles before the test selects.
    QVERIFY(TestSupport::waitUntil([&] { return field()->placeholderText() == u"<none>"_s; }));
}

bool tst_LocationFieldFragment::select(const QList<NodePtr> &nodes, const QString &text)
{
    m_bench->model().setSelectedNodes(nodes);
    // Both files used here have a proposal, which replaces the empty selection's "<none>".
    return TestSupport::waitUntil([&] {
        const QString placeholder = field()->placeholderText();
        return field()->text() == text && placeholder != u"<none>"_s
            && placeholder != u"waiting..."_s;
    });
}

QStringList tst_LocationFieldFragment::chooseInMenu(const QString &title)
{
    QStringList shown;
    QTimer::singleShot(100, this, [&] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!menu)
            return;
        for (QAction *action : menu->actions()) {
            shown << action->text();
            if (action->text() == title)
                action->trigger();
        }
        menu->close();
    });
    field()->setFocus();
    QTest::keyClick(field(), Qt::Key_Down);
    return shown;
}

void tst_LocationFieldFragment::proposalChosenFromTheMenuIsApplied()
{
    // No city in the file, but its position proposes one.
    const NodePtr node = m_bench->readJpeg(u"proposal.jpg"_s,
                                           {u"-GPSLatitude=48.8584"_s, u"-GPSLatitudeRef=N"_s,
                                            u"-GPSLongitude=2.2945"_s, u"-GPSLongitudeRef=E"_s});
    QVERIFY(node);
    QVERIFY(select({node}, QString()));
    QCOMPARE(field()->text(), QString());
    // The offline geocoder's name for the place is the placeholder and the first proposal.
    const QString proposal = field()->placeholderText();
    QVERIFY(proposal.startsWith(u"Paris"_s));
    auto *apply = m_bench->view<QWidget>(u"cityApplyButton"_s);
    QVERIFY(!apply->isEnabled());

    // Typing, then opening the menu, leaves the typed text unwritten.
    QTest::keyClicks(field(), u"Par"_s);
    const QStringList shown = chooseInMenu(proposal);
    QCOMPARE(shown.mid(0, 2), (QStringList {u"Proposed Values:"_s, proposal}));
    QCOMPARE(field()->text(), proposal);
    QVERIFY(!WriteEngine::shared().hasPendingWrites());
    QVERIFY(EditorTestBench::tagInFile(node->absolutePath, u"IPTC:City"_s).isEmpty());

    QVERIFY(apply->isEnabled());
    QTest::mouseClick(apply, Qt::LeftButton);
    QVERIFY(EditorTestBench::waitForWrites());
    QCOMPARE(EditorTestBench::tagInFile(node->absolutePath, u"IPTC:City"_s), proposal);
    QVERIFY(TestSupport::waitUntil([&] { return !apply->isEnabled(); }));
}

void tst_LocationFieldFragment::returnAppliesAndEscapeResets()
{
    const NodePtr basel = m_bench->readJpeg(u"basel.jpg"_s, {u"-IPTC:City=Basel"_s});
    const NodePtr bern = m_bench->readJpeg(u"bern.jpg"_s, {u"-IPTC:City=Bern"_s});
    QVERIFY(basel && bern);
    QVERIFY(select({basel}, u"Basel"_s));
    QCOMPARE(field()->text(), u"Basel"_s);

    field()->setFocus();
    field()->selectAll();
    QTest::keyClicks(field(), u"Zurich"_s);
    QTest::keyClick(field(), Qt::Key_Escape);
    QCOMPARE(field()->text(), u"Basel"_s);

    // The other file's city is offered; choosing it and pressing Return writes it.
    chooseInMenu(u"Bern"_s);
    QCOMPARE(field()->text(), u"Bern"_s);
    QTest::keyClick(field(), Qt::Key_Return);
    QVERIFY(EditorTestBench::waitForWrites());
    QCOMPARE(EditorTestBench::tagInFile(basel->absolutePath, u"IPTC:City"_s), u"Bern"_s);
    QVERIFY(m_bench->alerts.alerts.isEmpty());
}

QTEST_MAIN(tst_LocationFieldFragment)
#include "tst_LocationFieldFragment.moc"
