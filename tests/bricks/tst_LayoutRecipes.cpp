#include "bricks/Assembly.h"
#include "bricks/BuildDirective.h"
#include "bricks/ViewTree.h"
#include "bricks/layout/ConstraintLayout.h"
#include "bricks/layout/LayoutGuide.h"
#include "bricks/layout/LayoutRecipes.h"
#include "bricks/walls/Wall.h"
#include "bricks/walls/WallDirectives.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

#include "TestSupport.h"

using namespace Qt::StringLiterals;
namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;

namespace {

class Label
    : public LeafCreatingBuildDirective
    , public DirectiveModifiers<Label>
{
public:
    explicit Label(QString text)
        : text(std::move(text))
    { }
    QString description() const override { return "Label " + text; }
    BuiltView buildLeaf() const override
    {
        return {new QLabel(text), std::make_shared<NullBinding>()};
    }
    QString text;
};

class Field
    : public LeafCreatingBuildDirective
    , public DirectiveModifiers<Field>
{
public:
    QString description() const override { return "Field"; }
    BuiltView buildLeaf() const override
    {
        return {new QLineEdit, std::make_shared<NullBinding>()};
    }
};

QWidget *built(const BuildDirectiveList &list, QSize size)
{
    auto assembly = build(list);
    assembly->activate();
    QWidget *root = assembly->view();
    root->resize(size);
    ViewTree::layoutSubtreeIfNeeded(root);
    return root;
}

void relayout(QWidget *root, QSize size)
{
    root->resize(size);
    ViewTree::layoutSubtreeIfNeeded(root);
}

} // namespace

class tst_LayoutRecipes : public QObject
{
    Q_OBJECT

private slots:
    void intrinsicSizeHugsAndResists();
    void sizeHintOfAWallFitsItsContent();
    void sameFlushLeftRelatesEachToTheFirst();
    void tagFindsViewBeforeGuide();
    void ambiguousAxesAreFound();
    void sizeModifiersWorkInQtLayouts();
    void conflictingRequiredConstraintIsBroken();
    void guidesTakePartInTheLayout();
    void lowerPriorityGivesWay();
    void constraintsAcrossWallsHold_data();
    void constraintsAcrossWallsHold();
    void fatalStops_data();
    void fatalStops();
};

void tst_LayoutRecipes::intrinsicSizeHugsAndResists()
{
    const LayoutTag a("a"), b("b");
    // Two labels side by side filling the wall: the one that hugs less takes the extra room.
    QWidget *root = built(
        {B::Wall {Label("first").tag(a), Label("second").tag(b)}.layout(
            {pin(a, D::left), after(b, a), pin(b, D::right), pin(a, D::top), pin(b, D::top)})},
        {400, 30});
    auto *first = root->findChild<QLabel *>("a");
    auto *second = root->findChild<QLabel *>("b");
    ConstraintLayout::setContentHuggingPriority(first, 200, Qt::Horizontal);
    relayout(root, {401, 30});
    QCOMPARE(second->width(), second->sizeHint().width());
    QCOMPARE(first->width(), 401 - second->sizeHint().width());
    // Too narrow: the one with less compression resistance gives way.
    ConstraintLayout::setCompressionResistancePriority(second, 700, Qt::Horizontal);
    relayout(root, {first->sizeHint().width() + 10, 30});
    QCOMPARE(first->width(), first->sizeHint().width());
    QCOMPARE(second->width(), 10);
    delete root;
}

void tst_LayoutRecipes::sizeHintOfAWallFitsItsContent()
{
    const LayoutTag a("a"), b("b");
    auto assembly = build({B::Wall {Label("top").tag(a), Label("bottom line").tag(b)}.layout(
        {pin(a, D::left, 5), pin(a, D::top, 5), below(b, a, 3), pin(b, D::left, 5),
         pin(b, D::bottom, 5), pin(b, D::right, 5)})});
    assembly->activate();
    QWidget *root = assembly->view();
    auto *top = root->findChild<QLabel *>("a");
    auto *bottom = root->findChild<QLabel *>("b");
    const QSize hint = root->sizeHint();
    QCOMPARE(hint.width(), bottom->sizeHint().width() + 10);
    QCOMPARE(hint.height(), top->sizeHint().height() + bottom->sizeHint().height() + 13);
    delete root;
}

void tst_LayoutRecipes::sameFlushLeftRelatesEachToTheFirst()
{
    const LayoutTag a("a"), b("b"), c("c");
    auto assembly = build({B::Wall {Label("a").tag(a), Label("b").tag(b), Label("c").tag(c)}});
    QWidget *root = assembly->view();
    const SubjectFirstLayoutDirectiveList list = sameFlushLeft({a, b, c});
    const QList<LayoutConstraint> constraints = list.createConstraints(root);
    QCOMPARE(constraints.size(), 2);
    QWidget *first = root->findChild<QLabel *>("a");
    for (const LayoutConstraint &constraint : constraints) {
        QCOMPARE(constraint.second.view(), first);
        QCOMPARE(constraint.firstAttribute, LayoutAttribute::left);
        QCOMPARE(constraint.secondAttribute, LayoutAttribute::left);
    }
    QCOMPARE(constraints[0].first.view(), root->findChild<QLabel *>("b"));
    QCOMPARE(constraints[1].first.view(), root->findChild<QLabel *>("c"));
    QCOMPARE(list.subjectItem(root).view(), first);
    delete root;
}

void tst_LayoutRecipes::tagFindsViewBeforeGuide()
{
    const LayoutTag shared("shared"), guideOnly("guideOnly");
    auto assembly
        = build({B::Wall {B::Wall {Label("deep").tag(shared)}, Label("later").tag(shared)}});
    QWidget *root = assembly->view();
    auto *guide = new LayoutGuide(root, "g");
    LayoutGuide::setTaggedLayoutGuide(root, shared, guide);
    LayoutGuide::setTaggedLayoutGuide(root, guideOnly, guide);
    const auto item = Tag(shared).resolveItem(root);
    QVERIFY(item);
    // Depth first, in order: the label inside the inner wall comes before the later one.
    QCOMPARE(qobject_cast<QLabel *>(item->view())->text(), QStringLiteral("deep"));
    const auto guideItem = Tag(guideOnly).resolveItem(root);
    QVERIFY(guideItem);
    QCOMPARE(guideItem->guide(), guide);
    QVERIFY(!Tag(LayoutTag("nowhere")).resolveItem(root));
    delete root;
}

void tst_LayoutRecipes::ambiguousAxesAreFound()
{
    const LayoutTag a("a"), b("b");
    QWidget *root = built({B::Wall {Label("placed").tag(a), Label("loose").tag(b)}.layout(
                              {pin(a, D::left, 4), pin(a, D::top, 4), pin(b, D::left, 4)})},
                          {200, 100});
    auto *layout = qobject_cast<ConstraintLayout *>(root->layout());
    QCOMPARE(layout->ambiguousAxes(root->findChild<QLabel *>("a")), Qt::Orientations());
    QCOMPARE(layout->ambiguousAxes(root->findChild<QLabel *>("b")), Qt::Orientations(Qt::Vertical));
    delete root;
}

void tst_LayoutRecipes::sizeModifiersWorkInQtLayouts()
{
    auto assembly = build({B::FragmentStack {Field().width(120).height(30)}});
    auto *field = assembly->view()->findChild<QLineEdit *>();
    QCOMPARE(field->minimumWidth(), 120);
    QCOMPARE(field->maximumWidth(), 120);
    QCOMPARE(field->minimumHeight(), 30);
    delete assembly->view();
}

void tst_LayoutRecipes::conflictingRequiredConstraintIsBroken()
{
    const LayoutTag a("a");
    // A width of 50 cannot hold together with pins 10 inside a 200 wide wall: one of them is
    // broken, the rest still hold, and the layout goes on working after a resize.
    QWidget *root = built({B::Wall {Field().tag(a)}.layout({pin(a, D::left, 10), pin(a, D::top, 10),
                                                            pin(a, D::right, 10),
                                                            LayoutRecipeNamespace::width(a, 50)})},
                          {200, 60});
    auto *field = root->findChild<QLineEdit *>();
    QCOMPARE(field->x(), 10);
    QCOMPARE(field->y(), 10);
    QVERIFY(field->width() == 50 || field->width() == 180);
    relayout(root, {300, 60});
    QCOMPARE(field->x(), 10);
    delete root;
}

void tst_LayoutRecipes::guidesTakePartInTheLayout()
{
    const LayoutTag column("column"), a("a");
    auto assembly = build({B::Wall {Label("a").tag(a)}});
    QWidget *root = assembly->view();
    auto *guide = new LayoutGuide(root, "column");
    LayoutGuide::setTaggedLayoutGuide(root, column, guide);
    // The guide is the middle third; the label starts where the guide does.
    ConstraintLayout::installConstraints(
        root,
        {LayoutConstraint::make(guide, LayoutAttribute::width, LayoutRelation::equal, root,
                                LayoutAttribute::width, 1.0 / 3, 0),
         LayoutConstraint::make(guide, LayoutAttribute::centerX, LayoutRelation::equal, root,
                                LayoutAttribute::centerX, 1, 0),
         LayoutConstraint::make(guide, LayoutAttribute::top, LayoutRelation::equal, root,
                                LayoutAttribute::top, 1, 0),
         LayoutConstraint::make(guide, LayoutAttribute::height, LayoutRelation::equal, {},
                                LayoutAttribute::notAnAttribute, 1, 10)});
    const auto directive = sameFlushLeft({column, a});
    ConstraintLayout::installConstraints(root, directive.createConstraints(root));
    ConstraintLayout::installConstraints(root, pin(a, D::top, 2).createConstraints(root));
    relayout(root, {300, 40});
    QCOMPARE(guide->frame(), QRectF(100, 0, 100, 10));
    QCOMPARE(root->findChild<QLabel *>()->x(), 100);
    relayout(root, {600, 40});
    QCOMPARE(root->findChild<QLabel *>()->x(), 200);
    delete root;
}

void tst_LayoutRecipes::lowerPriorityGivesWay()
{
    const LayoutTag a("a");
    QWidget *root = built({B::Wall {Field().tag(a)}.layout(
                              {pin(a, D::left, 0), pin(a, D::top, 0),
                               LayoutRecipeNamespace::width(a, 120, LayoutRelation::equal, 800),
                               LayoutRecipeNamespace::width(a, 80, LayoutRelation::equal, 900)})},
                          {300, 40});
    // 900 wins over 800, and both over the field's resistance to shrinking below its hint.
    QCOMPARE(root->findChild<QLineEdit *>()->width(), 80);
    delete root;
}

void tst_LayoutRecipes::constraintsAcrossWallsHold_data()
{
    QTest::addColumn<QString>("holder");
    QTest::newRow("on the wall holding both walls") << u"outer"_s;
    QTest::newRow("on one of the two walls") << u"inner"_s;
    QTest::newRow("on a stack of fragments") << u"stack"_s;
}

// Two rows in walls of their own, their fields aligned on the same left edge: the short
// caption's field moves right to line up with the long caption's one.
void tst_LayoutRecipes::constraintsAcrossWallsHold()
{
    QFETCH(QString, holder);
    const LayoutTag row1("row1"), row2("row2"), label1("label1"), label2("label2"),
        field1("field1"), field2("field2");
    // The first field is also captured, so that a recipe outside its wall can name it.
    const ViewCaptureReference firstField {std::make_shared<ViewCaptures>(), u"field1"_s};
    const auto row = [&](const QString &caption, const LayoutTag &label, const LayoutTag &field) {
        const Field input = Field().tag(field);
        return B::Group {Label(caption).tag(label),
                         field == field1 ? input.capture(firstField) : input};
    };
    const LayoutDirectiveList rowLayout1 {pin(label1, D::left, 4),  after(field1, label1, 6),
                                          pin(field1, D::right, 4), pin(field1, D::top),
                                          pin(field1, D::bottom),   sameCenterY({label1, field1})};
    const LayoutDirectiveList rowLayout2 {pin(label2, D::left, 4),  after(field2, label2, 6),
                                          pin(field2, D::right, 4), pin(field2, D::top),
                                          pin(field2, D::bottom),   sameCenterY({label2, field2})};
    const LayoutDirectiveList aligned {sameFlushLeft({field1, field2})};
    const bool onInner = holder == u"inner";
    QWidget *root = nullptr;
    if (holder == u"stack") {
        root = built(
            {B::FragmentStack {
                B::FragmentWall {row("A:", label1, field1)}.layout(rowLayout1),
                B::FragmentWall {row("Much longer caption:", label2, field2)}.layout(rowLayout2)}
                 .layout(aligned)},
            {400, 100});
    } else {
        root = built(
            {B::Wall {
                B::Wall {row("A:", label1, field1)}.tag(row1).layout(rowLayout1),
                B::Wall {row("Much longer caption:", label2, field2)}.tag(row2).layout(
                    onInner ? LayoutDirectiveList {rowLayout2, sameFlushLeft({firstField, field2})}
                            : rowLayout2)}
                 .layout({pin(row1, D::left), pin(row1, D::right), pin(row1, D::top),
                          below(row2, row1), pin(row2, D::left), pin(row2, D::right),
                          pin(row2, D::bottom), onInner ? LayoutDirectiveList() : aligned})},
            {400, 100});
    }
    auto *first = root->findChild<QLineEdit *>("field1");
    auto *second = root->findChild<QLineEdit *>("field2");
    auto *shortCaption = root->findChild<QLabel *>("label1");
    auto *longCaption = root->findChild<QLabel *>("label2");
    // The long caption hugs its text; the short one grows to end where it does, and the fields
    // take the rest of the width, centred on their captions.
    QCOMPARE(longCaption->width(), longCaption->sizeHint().width());
    QCOMPARE(shortCaption->x(), 4);
    QCOMPARE(shortCaption->width(), longCaption->width());
    QVERIFY(qAbs(shortCaption->geometry().center().y() - first->geometry().center().y()) <= 1);
    const int left2 = second->mapTo(root, QPoint(0, 0)).x();
    QCOMPARE(left2, 4 + longCaption->sizeHint().width() + 6);
    QCOMPARE(first->mapTo(root, QPoint(0, 0)).x(), left2);
    QCOMPARE(first->mapTo(root, QPoint(first->width(), 0)).x(), 400 - 4);
    relayout(root, {500, 100});
    QCOMPARE(first->mapTo(root, QPoint(0, 0)).x(), second->mapTo(root, QPoint(0, 0)).x());
    delete root;
}

void tst_LayoutRecipes::fatalStops_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QString>("message");
    QTest::newRow("shorthand as attribute")
        << u"belowAsAttribute"_s << u"shorthands without an attribute"_s;
    QTest::newRow("unresolved tag") << u"unresolved"_s << u"could not resolve item: Tag 'ghost'"_s;
    QTest::newRow("block over a guide")
        << u"blockOverGuide"_s
        << u"Block directive requires a view, not a layout guide: Tag 'guide'"_s;
    QTest::newRow("relation through a grid")
        << u"throughGrid"_s << u"crosses a GridWall, which places its children itself"_s;
    QTest::newRow("relation of a stack's own panes")
        << u"stackPanes"_s
        << u"cannot hold: it relates only views that a FragmentStackView places itself"_s;
}

void tst_LayoutRecipes::fatalStops()
{
    QFETCH(QString, scenario);
    QFETCH(QString, message);
    const QByteArray err
        = TestSupport::standardErrorOfFailingRun(u"BRICKS_FATAL_SCENARIO"_s, scenario);
    QVERIFY2(err.contains(message.toUtf8()), err.constData());
}

static int runFatalScenario(const QString &scenario)
{
    const LayoutTag a("a"), b("b"), guideTag("guide");
    if (scenario == "belowAsAttribute") {
        auto assembly = build({B::Wall {Label("a").tag(a), Label("b").tag(b)}.layout(
            {RelationshipLayoutDirective(a, b, 0, D::below, D::top)})});
        assembly->activate();
    } else if (scenario == "unresolved") {
        build({B::Wall {}.layout({pin(LayoutTag("ghost"), D::left)})})->activate();
    } else if (scenario == "blockOverGuide") {
        auto assembly = build({B::Wall {}});
        QWidget *root = assembly->view();
        LayoutGuide::setTaggedLayoutGuide(root, guideTag, new LayoutGuide(root));
        Block(guideTag, [] { return LayoutDirectiveList(); }).createConstraints(root);
    } else if (scenario == "throughGrid") {
        build({B::Wall {B::GridWall {B::GridRow {Label("a").tag(a)}}, Label("b").tag(b)}.layout(
                  {sameFlushLeft({a, b})})})
            ->activate();
    } else if (scenario == "stackPanes") {
        build({B::FragmentStack {B::FragmentWall {}.tag(a), B::FragmentWall {}.tag(b)}.layout(
                  {sameWidth(a, b)})})
            ->activate();
    }
    return 0;
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const QString scenario = qEnvironmentVariable("BRICKS_FATAL_SCENARIO");
    if (!scenario.isEmpty())
        return runFatalScenario(scenario);
    tst_LayoutRecipes test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_LayoutRecipes.moc"
