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
    void pinnedChildFollowsResize();
    void rowOfLabelAndField();
    void intrinsicSizeHugsAndResists();
    void sizeHintOfAWallFitsItsContent();
    void sameFlushLeftRelatesEachToTheFirst();
    void tagFindsViewBeforeGuide();
    void ambiguousAxesAreFound();
    void sizeModifiersWorkInQtLayouts();
    void conflictingRequiredConstraintIsBroken();
    void guidesTakePartInTheLayout();
    void lowerPriorityGivesWay();
    void fatalStops_data();
    void fatalStops();
};

void tst_LayoutRecipes::pinnedChildFollowsResize()
{
    const LayoutTag child("child");
    QWidget *root = built(
        {B::Wall {B::Wall {}.tag(child)}.layout({pin(child, D::left, 8), pin(child, D::right, 8),
                                                 pin(child, D::top, 8), pin(child, D::bottom, 8)})},
        {200, 100});
    QWidget *inner = root->findChild<Wall *>("child");
    QCOMPARE(inner->geometry(), QRect(8, 8, 184, 84));
    relayout(root, {400, 60});
    QCOMPARE(inner->geometry(), QRect(8, 8, 384, 44));
    delete root;
}

void tst_LayoutRecipes::rowOfLabelAndField()
{
    const LayoutTag label("label"), field("field");
    QWidget *root
        = built({B::Wall {Label("Name:").tag(label), Field().tag(field)}.layout(
                    {pin(label, D::left, 10), after(field, label, 6), pin(field, D::right, 10),
                     pin(field, D::top, 4), sameCenterY({field, label})})},
                {300, 40});
    auto *l = root->findChild<QLabel *>();
    auto *f = root->findChild<QLineEdit *>();
    QCOMPARE(l->x(), 10);
    QCOMPARE(l->width(), l->sizeHint().width()); // the label hugs its text
    QCOMPARE(f->x(), l->geometry().right() + 1 + 6);
    QCOMPARE(f->geometry().right() + 1, 290);
    QCOMPARE(f->y(), 4);
    QCOMPARE(f->height(), f->sizeHint().height());
    QVERIFY(qAbs(l->geometry().center().y() - f->geometry().center().y()) <= 1);
    relayout(root, {500, 40});
    QCOMPARE(f->geometry().right() + 1, 490); // the field takes the extra width
    QCOMPARE(l->width(), l->sizeHint().width());
    delete root;
}

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
