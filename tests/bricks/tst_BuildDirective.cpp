#include "bricks/AccessibilityIdentifierExecutable.h"
#include "bricks/Assembly.h"
#include "bricks/BuildDirective.h"
#include "bricks/LayoutTagManager.h"
#include "bricks/ViewTree.h"
#include "bricks/validation/BricksLayoutValidator.h"
#include "bricks/walls/ScrollWall.h"
#include "bricks/walls/Wall.h"
#include "bricks/walls/WallDirectives.h"

#include <QApplication>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QTableWidget>
#include <QTest>

#include "TestSupport.h"

using namespace Qt::StringLiterals;
namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;

namespace {

// A binding that counts its activations and can be unbound.
class ProbeBinding
    : public Binding
    , public Unbindable
{
public:
    Binding *activate() override
    {
        ++activations;
        return this;
    }
    void unbind() override { ++unbinds; }
    int activations = 0;
    int unbinds = 0;
};

class Probe
    : public LeafCreatingBuildDirective
    , public DirectiveModifiers<Probe>
{
public:
    explicit Probe(QString name)
        : name(std::move(name))
    { }
    QString description() const override { return QStringLiteral("Probe ") + name; }
    BuiltView buildLeaf() const override
    {
        auto *label = new QLabel(name);
        label->setObjectName(name);
        return {label, std::make_shared<ProbeBinding>()};
    }
    QString name;
};

// A directive that is neither a leaf nor a container.
class Shapeless
    : public BuildDirective
    , public DirectiveModifiers<Shapeless>
{
public:
    QString description() const override { return QStringLiteral("Shapeless"); }
};

} // namespace

class tst_BuildDirective : public QObject
{
    Q_OBJECT

private slots:
    void listsFlattenInOrder();
    void decliningContainerPassesChildrenToItsParent();
    void twoTagsNameTheViewByTheLastAndBindByTheFirst();
    void activateRunsPrepareOnceButBindsEveryTime();
    void buildPhaseBlocksRunDuringBuildWithoutAssembly();
    void captureStoresAndNamesTheView();
    void embeddedWidgetStandsAsALeaf();
    void scrollAndClipPlaceTheDocument_data();
    void scrollAndClipPlaceTheDocument();
    void fatalStops_data();
    void fatalStops();
};

void tst_BuildDirective::listsFlattenInOrder()
{
    const BuildDirectiveList list {Probe("a"), {Probe("b"), {Probe("c")}}, Probe("d")};
    QStringList names;
    for (const BuildDirectiveRef &d : list.asBuildDirective())
        names << d->description();
    QCOMPARE(names, QStringList({"Probe a", "Probe b", "Probe c", "Probe d"}));

    auto assembly = build({B::Wall {Probe("x"), B::Group {Probe("y"), Probe("z")}}});
    QWidget *wall = assembly->view();
    QStringList children;
    for (QObject *child : wall->children())
        if (child->isWidgetType())
            children << child->objectName();
    QCOMPARE(children, QStringList({"x", "y", "z"}));
    delete wall;
}

void tst_BuildDirective::decliningContainerPassesChildrenToItsParent()
{
    auto assembly = build(
        {B::Wall {B::WallIf(false, {B::Wall {Probe("inner")}}), B::WallIf(true, {Probe("kept")})}});
    QWidget *root = assembly->view();
    QWidget *inner = root->findChild<QLabel *>("inner")->parentWidget();
    QCOMPARE(qobject_cast<Wall *>(inner->parentWidget()), root); // the grandparent took it
    QWidget *kept = root->findChild<QLabel *>("kept");
    QVERIFY(kept->parentWidget() != root);
    QCOMPARE(kept->parentWidget()->parentWidget(), root);
    QCOMPARE(assembly->views.size(), 1);
    delete root;
}

void tst_BuildDirective::twoTagsNameTheViewByTheLastAndBindByTheFirst()
{
    const LayoutTag first("first"), second("second");
    auto assembly = build({B::Wall {Probe("p").tag(first).tag(second)}});
    auto *label = assembly->view()->findChild<QLabel *>();
    QCOMPARE(label->objectName(), QStringLiteral("second"));
    QCOMPARE(LayoutTagManager::shared().layoutTags(label), QList<LayoutTag>({first, second}));
    QVERIFY(assembly->bindingsByTag.contains(first));
    QVERIFY(!assembly->bindingsByTag.contains(second));
    QCOMPARE(assembly->bindingsByTag.value(first), assembly->bindingsByView.value(label));
    delete assembly->view();
    // Tags go away with their view.
    QVERIFY(LayoutTagManager::shared().layoutTags(label).isEmpty());
}

void tst_BuildDirective::activateRunsPrepareOnceButBindsEveryTime()
{
    int prepared = 0, activatePhase = 0, finalized = 0;
    Assembly *seenAssembly = nullptr;
    auto assembly
        = build({B::Wall {Probe("p")
                              .code(CodeExecutionPhase::prepare,
                                    [&](QWidget *, Binding *, Assembly *a) {
                                        ++prepared;
                                        seenAssembly = a;
                                    })
                              .code(CodeExecutionPhase::activate,
                                    [&](QWidget *, Binding *, Assembly *) { ++activatePhase; })
                              .code(CodeExecutionPhase::finalize,
                                    [&](QWidget *, Binding *, Assembly *) { ++finalized; })}});
    QCOMPARE(prepared, 0);
    assembly->activate();
    assembly->activate();
    QCOMPARE(prepared, 1);
    QCOMPARE(seenAssembly, assembly.get());
    QCOMPARE(activatePhase, 0);
    QCOMPARE(finalized, 0);
    QCOMPARE(assembly->currentPhase, CodeExecutionPhase::prepare);

    auto *label = assembly->view()->findChild<QLabel *>();
    auto *probe = dynamic_cast<ProbeBinding *>(assembly->bindingsByView.value(label).get());
    QCOMPARE(probe->activations, 2);
    QCOMPARE(assembly->unbindables.size(), 2);
    QCOMPARE(assembly->unbindables[0].get(), static_cast<Unbindable *>(probe));
    // A tag's accessibility identifier waits for a phase that never comes.
    auto tagged = build({Probe("t").tag(LayoutTag("named"))});
    tagged->activate();
    QVERIFY(AccessibilityIdentifierExecutable::identifier(tagged->view()).isEmpty());
    QCOMPARE(tagged->view()->objectName(), QStringLiteral("named"));
    delete tagged->view();
    delete assembly->view();
}

void tst_BuildDirective::buildPhaseBlocksRunDuringBuildWithoutAssembly()
{
    QStringList order;
    bool hadAssembly = true;
    auto assembly = build(
        {B::Wall {Probe("child").style<QLabel>([&](QLabel *l) {
             order << "child " + l->text();
         })}.code(CodeExecutionPhase::buildAndLayout, [&](QWidget *view, Binding *, Assembly *a) {
            hadAssembly = a != nullptr;
            // The parent's decorators run before its children.
            order << QString::number(view->children().size());
        })});
    QCOMPARE(order, QStringList({"1", "child child"})); // only the layout is there yet
    QVERIFY(!hadAssembly);
    delete assembly->view();
}

void tst_BuildDirective::captureStoresAndNamesTheView()
{
    auto captures = std::make_shared<ViewCaptures>();
    auto assembly = build({B::Wall {Probe("p").capture({captures, "field"})}});
    QWidget *captured = captures->capturedViews.value("field");
    QVERIFY(captured);
    QCOMPARE(captured->objectName(), QStringLiteral("field"));
    QCOMPARE(captured->accessibleName(), QStringLiteral("field"));
    QCOMPARE(AccessibilityIdentifierExecutable::identifier(captured), QStringLiteral("field"));
    delete assembly->view();
}

// A table made elsewhere takes its place in a wall's constraints and fills what they give it;
// the validator leaves its insides alone.
void tst_BuildDirective::embeddedWidgetStandsAsALeaf()
{
    const LayoutTag caption("caption"), list("list");
    auto *table = new QTableWidget(30, 3);
    auto assembly
        = build({B::Wall {Probe("Items").tag(caption), B::EmbeddedControl(table).tag(list)}.layout(
            {pin(caption, D::left, 8), pin(caption, D::top, 8), below(list, caption, 4),
             pin(list, D::left), pin(list, D::right), pin(list, D::bottom)})});
    assembly->activate();
    QWidget *root = assembly->view();
    root->resize(400, 300);
    ViewTree::layoutSubtreeIfNeeded(root);
    const QWidget *label = root->findChild<QLabel *>("caption");
    QCOMPARE(table->parentWidget(), root);
    QCOMPARE(table->geometry(),
             QRect(0, label->geometry().bottom() + 1 + 4, 400, 300 - label->height() - 12));
    for (const BricksLayoutValidator::Issue &issue :
         BricksLayoutValidator::validate(root, BricksLayoutValidator::Phase::both))
        QVERIFY2(!issue.viewPath.contains(u"QTableWidget/"), qPrintable(issue.viewPath));

    // Built again, the description moves the widget to its new place.
    auto again = build({B::Wall {B::EmbeddedControl(table)}});
    QCOMPARE(table->parentWidget(), again->view());
    QVERIFY(!root->findChild<QTableWidget *>());
    delete root;
    delete again->view();
}

void tst_BuildDirective::scrollAndClipPlaceTheDocument_data()
{
    QTest::addColumn<int>("height");
    QTest::newRow("taller than the visible area") << 600;
    QTest::newRow("shorter than the visible area") << 50;
}

void tst_BuildDirective::scrollAndClipPlaceTheDocument()
{
    QFETCH(int, height);
    const LayoutTag content("content");
    auto assembly = build({B::ScrollView {
        B::ClipView {B::Wall {B::WallWithIntrinsicSize(QSize(100, height)).tag(content)}
                         .layout(LayoutRecipeNamespace::pinEdges(content))
                         .tag(LayoutTag("document"))}}});
    assembly->activate();
    auto *scroll = qobject_cast<ScrollWall *>(assembly->view());
    QVERIFY(scroll);
    QVERIFY(qobject_cast<ClipWall *>(scroll->viewport()));
    QWidget *document = scroll->widget();
    QCOMPARE(document->objectName(), QStringLiteral("document"));
    QCOMPARE(document->parentWidget(), scroll->viewport());
    scroll->resize(300, 200);
    scroll->show();
    QVERIFY(QTest::qWaitForWindowExposed(scroll));
    // Flush with the top and sides, and free at the bottom: the document keeps its own height
    // and scrolls vertically only when it is taller than the visible area.
    QCOMPARE(document->x(), 0);
    QCOMPARE(document->y(), 0);
    QCOMPARE(document->width(), scroll->viewport()->width());
    QCOMPARE(document->height(), height);
    QCOMPARE(scroll->verticalScrollBar()->maximum() > 0, height > 200);
    QCOMPARE(scroll->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    delete scroll;
}

void tst_BuildDirective::fatalStops_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QString>("message");
    QTest::newRow("declining root with children")
        << u"decliningRoot"_s << u"[BuildDirective].buildNode child views have no parent!"_s;
    QTest::newRow("scroll without clip")
        << u"scrollWithoutClip"_s
        << u"ScrollView Directive needs to have ClipView Directive as first child"_s;
    QTest::newRow("clip outside scroll")
        << u"clipOutsideScroll"_s << u"clip view is not inside of scroll view! "_s;
    QTest::newRow("neither leaf nor container")
        << u"shapeless"_s
        << u"cannot build view because directive is neither leaf nor container creating"_s;
    QTest::newRow("embedded widget gone")
        << u"embeddedGone"_s << u"EmbeddedControl: the widget to embed no longer exists"_s;
}

// Each scenario runs in a child process of this test, which must stop with the message.
void tst_BuildDirective::fatalStops()
{
    QFETCH(QString, scenario);
    QFETCH(QString, message);
    const QByteArray err
        = TestSupport::standardErrorOfFailingRun(u"BRICKS_FATAL_SCENARIO"_s, scenario);
    QVERIFY2(err.contains(message.toUtf8()), err.constData());
}

static int runFatalScenario(const QString &scenario)
{
    if (scenario == "decliningRoot")
        build({B::Group {Probe("orphan")}});
    else if (scenario == "scrollWithoutClip")
        build({B::ScrollView {B::Wall {}}});
    else if (scenario == "clipOutsideScroll")
        build({B::Wall {B::ClipView {B::Wall {}}}});
    else if (scenario == "shapeless")
        build({B::Wall {Shapeless()}});
    else if (scenario == "embeddedGone") {
        const B::EmbeddedControl embedded(new QWidget);
        delete embedded.embeddedControl.data();
        build({B::Wall {embedded}});
    }
    return 0;
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const QString scenario = qEnvironmentVariable("BRICKS_FATAL_SCENARIO");
    if (!scenario.isEmpty())
        return runFatalScenario(scenario);
    tst_BuildDirective test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_BuildDirective.moc"
