#include "bricks/Assembly.h"
#include "bricks/ViewTree.h"
#include "bricks/controls/ControlDirectives.h"
#include "bricks/walls/FragmentStackView.h"
#include "bricks/walls/GridWall.h"
#include "bricks/walls/TabWall.h"
#include "bricks/walls/Wall.h"
#include "bricks/walls/WallDirectives.h"
#include "platform/UserDefaults.h"

#include "TestSupport.h"

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QTabBar>
#include <QTest>

namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;

namespace {

// Content of a fixed height, filling the fragment that holds it.
B::Group pane(const QString &name, int height)
{
    const LayoutTag tag(name);
    return B::Group {B::WallWithIntrinsicSize(QSize(100, height))
                         .tag(tag)
                         .applyToSuperView([](LayoutConstraintMaker &m) {
                             m.toSuperview()
                                 .pin(LayoutAttribute::left, LayoutAttribute::left)
                                 .pin(LayoutAttribute::right, LayoutAttribute::right)
                                 .pin(LayoutAttribute::top, LayoutAttribute::top)
                                 .pin(LayoutAttribute::bottom, LayoutAttribute::bottom);
                         })};
}

void layOut(QWidget *root, QSize size)
{
    root->resize(size);
    ViewTree::layoutSubtreeIfNeeded(root);
}

} // namespace

class tst_Walls : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { TestSupport::useTemporaryUserDefaults(); }
    void fragmentHidesAndTheStackClosesUp();
    void dynamicFragmentOutsideAStackIgnoresItsVariable();
    void hideableFragmentFollowsDefaultsKeys();
    void bordersDoNotPaintCornersTwice_data();
    void bordersDoNotPaintCornersTwice();
    void endOfLifeBagRunsWhenTheWallGoes();
    void buildingAndDisposingIsQuiet();
    void gridPlacesRowsAndMerges();
    void tabsTakeTheirTitlesOrFollowAVariable();
};

void tst_Walls::fragmentHidesAndTheStackClosesUp()
{
    auto hideMiddle = std::make_shared<StraightVariable<bool>>(false);
    auto assembly = build(
        {B::FragmentStack {B::FragmentWall {pane("top", 30)},
                           B::DynamicFragmentWall<bool>::hideWhen(
                               hideMiddle, [](bool hide) { return hide; }, {pane("middle", 40)}),
                           B::FragmentWall {pane("bottom", 50)}}});
    assembly->activate();
    auto *stack = qobject_cast<FragmentStackView *>(assembly->view());
    QCOMPARE(stack->arrangedSubviews().size(), 3);
    QWidget *bottomFragment = stack->arrangedSubviews()[2];
    layOut(stack, {100, 200});
    const int placed = bottomFragment->y();
    QCOMPARE(placed, 70);

    hideMiddle->setValue(true);
    layOut(stack, {100, 200});
    QCOMPARE(stack->visibilityPriority(stack->arrangedSubviews()[1]),
             FragmentStackView::notVisible);
    QCOMPARE(bottomFragment->y(), 30); // the gap is closed
    hideMiddle->setValue(false);
    layOut(stack, {100, 200});
    QCOMPARE(bottomFragment->y(), placed); // and it is back in its place
    QCOMPARE(stack->arrangedSubviews()[1]->findChild<QWidget *>("middle")->parentWidget(),
             stack->arrangedSubviews()[1]);
    delete stack;
}

void tst_Walls::dynamicFragmentOutsideAStackIgnoresItsVariable()
{
    auto hide = std::make_shared<StraightVariable<bool>>(true);
    auto assembly = build({B::Wall {B::DynamicFragmentWall<bool>::hideWhen(
        hide, [](bool h) { return h; }, {pane("inside", 20)})}});
    assembly->activate();
    auto *fragment = assembly->view()->findChild<FragmentWall *>();
    QVERIFY(!fragment->isHidden());
    hide->setValue(true);
    QVERIFY(!fragment->isHidden());
    delete assembly->view();
}

void tst_Walls::hideableFragmentFollowsDefaultsKeys()
{
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setObject(false, "showAdvanced");
    auto assembly = build({B::FragmentStack {
        B::HideableFragment({"showAdvanced"},
                            [](const QStringList &keys) {
                                return !UserDefaults::standard().objectForKey(keys[0]).toBool();
                            },
                            {pane("advanced", 30)}),
        B::FragmentWall {pane("after", 30)}}});
    assembly->activate();
    auto *stack = qobject_cast<FragmentStackView *>(assembly->view());
    QWidget *hideable = stack->arrangedSubviews()[0];
    QVERIFY(hideable->isHidden());
    defaults.setObject(true, "showAdvanced");
    QVERIFY(!hideable->isHidden());
    delete stack;
    defaults.setObject(false, "showAdvanced"); // no responder is left to react
}

void tst_Walls::bordersDoNotPaintCornersTwice_data()
{
    QTest::addColumn<bool>("top");
    QTest::addColumn<bool>("bottom");
    QTest::newRow("top and left") << true << false;
    QTest::newRow("bottom and left") << false << true;
    QTest::newRow("top, bottom and left") << true << true;
}

void tst_Walls::bordersDoNotPaintCornersTwice()
{
    QFETCH(bool, top);
    QFETCH(bool, bottom);
    Wall wall;
    wall.borderColor = QColor(0, 0, 0, 100);
    wall.setBorders(top, bottom, true, false);
    wall.resize(20, 20);
    QImage image(wall.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    wall.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    const int once = qAlpha(image.pixel(0, 10)); // the middle of the left side
    QVERIFY(once > 0);
    QCOMPARE(qAlpha(image.pixel(10, top ? 0 : 19)), once);
    if (top)
        QCOMPARE(qAlpha(image.pixel(0, 0)), once);
    if (bottom)
        QCOMPARE(qAlpha(image.pixel(0, 19)), once);
    QCOMPARE(qAlpha(image.pixel(10, 10)), 0);
}

void tst_Walls::endOfLifeBagRunsWhenTheWallGoes()
{
    QStringList ran;
    auto *wall = new Wall;
    wall->endOfLifeBag().add([&] { ran << "first"; });
    wall->endOfLifeBag().add([&] { ran << "second"; });
    delete wall;
    QCOMPARE(ran, QStringList({"first", "second"}));
}

// The trace of building and disposing stays off unless the toolkit's logging is enabled.
void tst_Walls::buildingAndDisposingIsQuiet()
{
    auto hide = std::make_shared<StraightVariable<bool>>(false);
    const QByteArray written = TestSupport::standardErrorOf([&] {
        auto assembly = build({B::FragmentStack {
            B::DynamicFragmentWall<bool>::hideWhen(hide, [](bool h) { return h; },
                                                   {pane("dynamic", 20)}),
            B::HideableFragment({"quietKey"}, [](const QStringList &) { return false; },
                                {pane("hideable", 20)})}});
        assembly->activate();
        delete assembly->view();
    });
    QVERIFY2(written.isEmpty(), written.constData());
}

void tst_Walls::gridPlacesRowsAndMerges()
{
    auto assembly = build({B::GridWall {
        B::GridRow {B::StaticLabel("Latitude:"), B::UnboundTextField()}.cellPlacements(
            {{0, {Qt::AlignRight, Qt::AlignVCenter}}}),
        B::GridRow {B::StaticLabel("Longitude:"), B::UnboundTextField()},
        B::GridRow {B::StaticLabel("A note across both columns")}}
                               .cellMerges({{{0, 2}, {2, 1}}})
                               .rowHeights({{2, 40}})});
    assembly->activate();
    auto *grid = qobject_cast<GridWall *>(assembly->view());
    QGridLayout *layout = grid->gridLayout();
    QCOMPARE(grid->rowCount(), 3);
    auto *latitude = qobject_cast<QLabel *>(layout->itemAtPosition(0, 0)->widget());
    QCOMPARE(latitude->text(), QStringLiteral("Latitude:"));
    QCOMPARE(layout->itemAtPosition(0, 0)->alignment(), Qt::AlignRight | Qt::AlignVCenter);
    QVERIFY(qobject_cast<QLineEdit *>(layout->itemAtPosition(1, 1)->widget()));
    int row, column, rowSpan, columnSpan;
    layout->getItemPosition(layout->indexOf(layout->itemAtPosition(2, 0)->widget()), &row, &column,
                            &rowSpan, &columnSpan);
    QCOMPARE(columnSpan, 2);
    QCOMPARE(layout->rowMinimumHeight(2), 40);
    layOut(grid, grid->sizeHint());
    // The labels share a column and the fields line up.
    QCOMPARE(layout->itemAtPosition(0, 1)->widget()->x(),
             layout->itemAtPosition(1, 1)->widget()->x());
    delete grid;
}

void tst_Walls::tabsTakeTheirTitlesOrFollowAVariable()
{
    auto assembly = build({B::TabWall {B::Tab("Location", {B::StaticLabel("a")}),
                                       B::Tab("Pins", {B::StaticLabel("b")})}});
    auto *tabs = qobject_cast<TabWall *>(assembly->view());
    QCOMPARE(tabs->count(), 2);
    QCOMPARE(tabs->tabText(1), QStringLiteral("Pins"));
    QCOMPARE(tabs->contentWallToTabViewItemDict.size(), 2);
    QVERIFY(!tabs->tabBar()->isHidden());
    delete tabs;

    // Bound to a variable, the program chooses the page and the user sees no tabs.
    auto shown = std::make_shared<StraightVariable<int>>(1);
    auto bound = build(
        {B::TabWall {B::Tab("Wait", {B::StaticLabel("a")}), B::Tab("Items", {B::StaticLabel("b")}),
                     B::Tab("Map", {B::StaticLabel("c")})}
             .showingTab(shown)});
    tabs = qobject_cast<TabWall *>(bound->view());
    bound->activate();
    bound.reset();
    QVERIFY(tabs->tabBar()->isHidden());
    QCOMPARE(tabs->currentIndex(), 1);
    shown->setValue(2);
    QCOMPARE(tabs->currentIndex(), 2);
    shown->setValue(5); // no such page: the one shown stays
    QCOMPARE(tabs->currentIndex(), 2);
    delete tabs;
    shown->setValue(0);
}

QTEST_MAIN(tst_Walls)
#include "tst_Walls.moc"
