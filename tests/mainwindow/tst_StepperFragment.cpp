#include "EditorTestBench.h"
#include "ListTable.h"
#include "TestSupport.h"
#include "bricks/controls/SingleLineLabel.h"
#include "location/PinAndStepperController.h"
#include "mainwindow/editors/StepperFragment.h"
#include "session/DataModel.h"

#include <QComboBox>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_StepperFragment : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { EditorTestBench::setUpOnce(); }
    void stepsThroughItemsAndGroupsByCity();
};

void tst_StepperFragment::stepsThroughItemsAndGroupsByCity()
{
    EditorTestBench bench;
    QList<NodePtr> nodes;
    for (const QString &city : {u"Paris"_s, u"Paris"_s, u"Lyon"_s, QString()}) {
        nodes << bench.readJpeg(
            u"step.jpg"_s, city.isEmpty() ? QStringList() : QStringList {u"-IPTC:City="_s + city});
        QVERIFY(nodes.last());
    }
    ListTable table(bench.model(), nodes);
    const auto controller = PinAndStepperController::create(bench.model(), &table, nullptr);
    QVERIFY(bench.show(StepperFragment::directive(bench.model(), *controller)));
    auto *label = bench.view<SingleLineLabel>(u"stepperLabel"_s);
    auto *previous = bench.view<QWidget>(u"previousItemButton"_s);
    auto *next = bench.view<QWidget>(u"nextItemButton"_s);
    QCOMPARE(label->stringValue(), u"No selection"_s);

    // Item by item, wrapping backwards from the first to the last.
    QTest::mouseClick(next, Qt::LeftButton);
    QCOMPARE(label->stringValue(), nodes[0]->name);
    QTest::mouseClick(previous, Qt::LeftButton);
    QCOMPARE(bench.model().selectedNodes(), QList<NodePtr> {nodes[3]});

    // By city: Paris, Lyon, the files without a city, then Paris again.
    auto *mode = bench.view<QComboBox>(u"stepperModePopUp"_s);
    QCOMPARE(mode->itemText(2), u"City"_s);
    mode->setFocus();
    QTest::keyClick(mode, Qt::Key_Down);
    QTest::keyClick(mode, Qt::Key_Down);
    QCOMPARE(bench.model().stepperMode(), StepperMode::city);
    QCOMPARE(label->stringValue(), u"1 selected"_s);
    const QList<QList<NodePtr>> groups
        = {{nodes[0], nodes[1]}, {nodes[2]}, {nodes[3]}, {nodes[0], nodes[1]}};
    for (const QList<NodePtr> &group : groups) {
        QTest::mouseClick(next, Qt::LeftButton);
        QCOMPARE(bench.model().selectedNodes(), group);
    }
    QCOMPARE(label->stringValue(), u"2 selected"_s);
}

QTEST_MAIN(tst_StepperFragment)
#include "tst_StepperFragment.moc"
