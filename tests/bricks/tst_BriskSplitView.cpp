#include "bricks/Assembly.h"
#include "bricks/walls/BriskSplitView.h"
#include "bricks/walls/WallDirectives.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTest>

namespace B = BuildDirectivesNamespace;

namespace {

constexpr int Height = 800;

// The window's split, laid out with the info pane 300 high.
struct Split
{
    Split()
    {
        auto assembly = build({B::SplitView {B::Wall {}, B::Wall {}}});
        assembly->activate();
        view = qobject_cast<BriskSplitView *>(assembly->view());
        view->resize(400, Height);
        view->show();
        QVERIFY(QTest::qWaitForWindowExposed(view));
        setPaneHeight(300);
    }
    ~Split() { delete view; }
    int t() const { return view->dividerThickness(); }
    int pane() const { return view->sizes().at(1); }
    int main() const { return view->sizes().at(0); }
    void setPaneHeight(int height) { view->setPosition(view->extent() - t() - height, 0); }

    void mouse(QEvent::Type type, int y, Qt::MouseButtons buttons)
    {
        QSplitterHandle *handle = view->handle(1);
        const QPointF local(handle->width() / 2.0, y - handle->y());
        QMouseEvent event(type, local, handle->mapToGlobal(local), Qt::LeftButton, buttons,
                          Qt::NoModifier);
        QApplication::sendEvent(handle, &event);
    }
    // A drag of the divider by the user, from where it is to where the pane would have the
    // given height.
    void dragToPaneHeight(int height)
    {
        const int from = view->handle(1)->y() + 2;
        const int to = view->extent() - t() - height + 2;
        mouse(QEvent::MouseButtonPress, from, Qt::LeftButton);
        mouse(QEvent::MouseMove, (from + to) / 2, Qt::LeftButton);
        mouse(QEvent::MouseMove, to, Qt::LeftButton);
        mouse(QEvent::MouseButtonRelease, to, Qt::NoButton);
    }
    void doubleClick()
    {
        const int at = view->handle(1)->y() + 2;
        mouse(QEvent::MouseButtonPress, at, Qt::LeftButton);
        mouse(QEvent::MouseButtonRelease, at, Qt::NoButton);
        mouse(QEvent::MouseButtonDblClick, at, Qt::LeftButton);
        mouse(QEvent::MouseButtonRelease, at, Qt::NoButton);
    }

    BriskSplitView *view = nullptr;
};

} // namespace

class tst_BriskSplitView : public QObject
{
    Q_OBJECT

private slots:
    void dragKeepsThePaneWithinItsLimits_data();
    void dragKeepsThePaneWithinItsLimits();
    void doubleClickCollapsesAndBringsBackThePane();
    void theMainViewTakesTheWindowsHeightChange();
    void setPositionIgnoresTheLimits();
};

void tst_BriskSplitView::dragKeepsThePaneWithinItsLimits_data()
{
    QTest::addColumn<int>("dragTo");
    QTest::addColumn<int>("expected");
    QTest::newRow("within the limits") << 250 << 250;
    QTest::newRow("over the maximum") << 600 << 400;
    QTest::newRow("under the minimum") << 150 << 200;
    QTest::newRow("past half the minimum: collapses") << 60 << 0;
}

void tst_BriskSplitView::dragKeepsThePaneWithinItsLimits()
{
    QFETCH(int, dragTo);
    QFETCH(int, expected);
    Split split;
    split.dragToPaneHeight(dragTo);
    QCOMPARE(split.pane(), expected);
    QCOMPARE(split.view->isSubviewCollapsed(split.view->widget(1)), expected == 0);
    QCOMPARE(split.main() + split.pane() + split.t(), Height);
    // Dragged back out of the collapse, the pane comes back at its minimum.
    if (expected == 0) {
        split.dragToPaneHeight(120);
        QCOMPARE(split.pane(), 200);
    }
}

void tst_BriskSplitView::doubleClickCollapsesAndBringsBackThePane()
{
    Split split;
    split.doubleClick();
    QCOMPARE(split.pane(), 0);
    QVERIFY(split.view->isSubviewCollapsed(split.view->widget(1)));
    QVERIFY(!split.view->isSubviewCollapsed(split.view->widget(0)));
    split.doubleClick();
    QCOMPARE(split.pane(), 300);
}

void tst_BriskSplitView::theMainViewTakesTheWindowsHeightChange()
{
    Split split;
    for (const int height : {1000, 600}) {
        split.view->resize(400, height);
        QCOMPARE(split.pane(), 300);
        QCOMPARE(split.main(), height - 300 - split.t());
    }
}

// What the command that shows and hides the info pane does.
void tst_BriskSplitView::setPositionIgnoresTheLimits()
{
    Split split;
    split.view->setPosition(Height - split.t(), 0);
    QVERIFY(split.view->isSubviewCollapsed(split.view->widget(1)));
    split.view->setPosition(Height - split.t() - 150, 0);
    QCOMPARE(split.pane(), 150);
    QCOMPARE(split.view->dividerPosition(0), Height - split.t() - 150);
}

QTEST_MAIN(tst_BriskSplitView)
#include "tst_BriskSplitView.moc"
