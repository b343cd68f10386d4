#include "bricks/Assembly.h"
#include "bricks/controls/ControlDirectives.h"
#include "bricks/validation/BricksLayoutValidator.h"
#include "bricks/walls/WallDirectives.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include "TestSupport.h"

using namespace Qt::StringLiterals;
namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;
using V = BricksLayoutValidator;

namespace {

// An empty widget: no size of its own.
class Blank
    : public LeafCreatingBuildDirective
    , public DirectiveModifiers<Blank>
{
public:
    QString description() const override { return "Blank"; }
    BuiltView buildLeaf() const override { return {new QWidget, std::make_shared<NullBinding>()}; }
};

QWidget *activated(const BuildDirectiveList &list, QSize size = {200, 100})
{
    auto assembly = build(list);
    assembly->activate();
    assembly->view()->resize(size);
    return assembly->view();
}

QStringList kinds(const QList<V::Issue> &issues)
{
    QStringList list;
    for (const V::Issue &issue : issues)
        list << V::rawValue(issue.kind) + ":" + issue.viewIdentifier;
    return list;
}

// A blank placed at the left and top with the given size.
B::Wall wallWithBlank(double width, double height, const LayoutTag &tag)
{
    return B::Wall {Blank().tag(tag)}.layout({pin(tag, D::left, 4), pin(tag, D::top, 4),
                                              LayoutRecipeNamespace::width(tag, width),
                                              LayoutRecipeNamespace::height(tag, height)});
}

} // namespace

class tst_BricksLayoutValidator : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        BricksValidation::minimumSeverity = V::Severity::info;
        BricksValidation::outputMode = BricksValidation::OutputMode::humanReadable;
        BricksValidation::behavior = BricksValidation::Behavior::log;
    }
    void zeroSizeThreshold_data();
    void zeroSizeThreshold();
    void hiddenAndClipViewsAreSkipped();
    void ambiguousAndOutsideAreFound();
    void exemptionsSpareTheViewButNotItsChildren();
    void widgetPlacedByQtLayoutAndConstrained();
    void viewWithoutSizeSource();
    void minimumSeverityFiltersAndCounts();
    void reportsForPeopleAndMachines();
    void fatalOnError();
};

void tst_BricksLayoutValidator::zeroSizeThreshold_data()
{
    QTest::addColumn<double>("width");
    QTest::addColumn<bool>("zero");
    QTest::newRow("0.4 is zero") << 0.4 << true;
    QTest::newRow("0.5 is not") << 0.5 << false;
    QTest::newRow("0 is zero") << 0.0 << true;
}

void tst_BricksLayoutValidator::zeroSizeThreshold()
{
    QFETCH(double, width);
    QFETCH(bool, zero);
    QCOMPARE(V::isZeroLength(width), zero);
    const LayoutTag blank("blank");
    QWidget *root = activated({wallWithBlank(width, 10, blank)});
    const QList<V::Issue> issues = V::validate(root, V::Phase::postLayout);
    QCOMPARE(kinds(issues), zero ? QStringList({"zero_size:blank"}) : QStringList());
    if (zero) {
        QCOMPARE(issues[0].details.value("message").toString(),
                 QStringLiteral("View has zero width"));
        QCOMPARE(issues[0].severity, V::Severity::warning);
        QCOMPARE(issues[0].frame.width(), width);
    }
    delete root;
}

void tst_BricksLayoutValidator::hiddenAndClipViewsAreSkipped()
{
    const LayoutTag blank("blank"), scroll("scroll");
    QWidget *root = activated(
        {B::Wall {wallWithBlank(0, 0, blank).style<QWidget>([](QWidget *w) { w->hide(); }),
                  B::ScrollView {B::ClipView {}}
                      .applyToSelf([](LayoutConstraintMaker &m) { m.width(0).height(0); })
                      .tag(scroll)}
             .layout({pin(scroll, D::left), pin(scroll, D::top)})});
    // The scroll area is zero by its constraints; its clip view is not reported, nor is the
    // hidden wall with its zero-sized blank.
    QCOMPARE(kinds(V::validate(root, V::Phase::postLayout)),
             QStringList({"zero_size:scroll", "zero_size:scroll"}));
    delete root;
}

void tst_BricksLayoutValidator::ambiguousAndOutsideAreFound()
{
    const LayoutTag loose("loose"), away("away");
    QWidget *root = activated(
        {B::Wall {B::StaticLabel("loose").tag(loose), B::StaticLabel("away").tag(away)}.layout(
            {pin(loose, D::left, 4), pin(away, D::left, 500), pin(away, D::top, 4)})});
    const QList<V::Issue> issues = V::validate(root, V::Phase::postLayout);
    QCOMPARE(kinds(issues), QStringList({"ambiguous_layout:loose", "outside_bounds:away"}));
    QCOMPARE(issues[0].severity, V::Severity::error);
    QCOMPARE(issues[0].hints[0],
             QStringLiteral("Add constraints for: vertical position or height"));
    QCOMPARE(issues[1].details.value("parentBounds").toMap().value("width").toDouble(), 200.0);
    QCOMPARE(issues[1].viewPath, QStringLiteral("Wall/QLabel"));
    delete root;
}

void tst_BricksLayoutValidator::exemptionsSpareTheViewButNotItsChildren()
{
    const LayoutTag inner("inner"), outer("outer");
    QWidget *root = activated(
        {B::Wall {B::Wall {Blank().tag(inner)}
                      .tag(outer)
                      .style<QWidget>([](QWidget *w) { V::setExemptions(w, V::Exemption::all); })
                      .layout({pin(inner, D::left), pin(inner, D::top),
                               LayoutRecipeNamespace::width(inner, 0),
                               LayoutRecipeNamespace::height(inner, 5)})}});
    // The outer wall is loose and empty, but exempt; the blank inside still has zero width.
    QCOMPARE(kinds(V::validate(root, V::Phase::postLayout)), QStringList({"zero_size:inner"}));
    delete root;
}

void tst_BricksLayoutValidator::widgetPlacedByQtLayoutAndConstrained()
{
    const LayoutTag pane("pane");
    // A width the stack's box layout cannot hold, since it is only preferred.
    QWidget *root = activated({B::FragmentStack {B::FragmentWall {}.tag(pane)}.layout(
        {LayoutRecipeNamespace::width(pane, 120, LayoutRelation::equal, 500)})});
    const QList<V::Issue> issues = V::validate(root, V::Phase::postActivate);
    QCOMPARE(kinds(issues), QStringList({"translates_misuse:pane"}));
    QCOMPARE(issues[0].details.value("message").toString(),
             QStringLiteral("View has translatesAutoresizingMaskIntoConstraints = true but also "
                            "has active constraints"));
    delete root;
}

void tst_BricksLayoutValidator::viewWithoutSizeSource()
{
    const LayoutTag blank("blank"), sized("sized");
    // Both blanks are placed; only one has a height from its constraints, neither a width.
    QWidget *root = activated({B::Wall {Blank().tag(blank), Blank().tag(sized)}.layout(
        {pin(blank, D::left, 4), pin(blank, D::top, 4), pin(sized, D::left, 4),
         pin(sized, D::top, 30), LayoutRecipeNamespace::height(sized, 10)})});
    QStringList found;
    for (const V::Issue &issue : V::validate(root, V::Phase::postLayout))
        if (issue.kind == V::IssueKind::noSizeSource)
            found << issue.viewIdentifier + ": " + issue.details.value("message").toString();
    QCOMPARE(found,
             QStringList({"blank: View has no size source for: width, height",
                          "sized: View has no size source for: width"}));
    delete root;
}

void tst_BricksLayoutValidator::minimumSeverityFiltersAndCounts()
{
    const LayoutTag blank("blank"), loose("loose");
    QWidget *root = activated({B::Wall {Blank().tag(blank), B::StaticLabel("x").tag(loose)}.layout(
        {pin(blank, D::left), pin(blank, D::top), LayoutRecipeNamespace::width(blank, 0),
         LayoutRecipeNamespace::height(blank, 4), pin(loose, D::top)})});
    QCOMPARE(V::validate(root, V::Phase::postLayout).size(), 2);
    BricksValidation::minimumSeverity = V::Severity::error;
    const QList<V::Issue> errors = V::validate(root, V::Phase::postLayout);
    QCOMPARE(kinds(errors), QStringList({"ambiguous_layout:loose"}));
    const QStringList box = V::humanReport(errors);
    QVERIFY(box.contains(QStringLiteral("\u2551 Errors: 1, Warnings: 0, Info: 0")));
    delete root;
}

void tst_BricksLayoutValidator::reportsForPeopleAndMachines()
{
    const V::Issue issue {V::Severity::warning,
                          V::IssueKind::zeroSize,
                          "Wall/QWidget",
                          "blank",
                          "QWidget",
                          QRectF(4, 4, 0, 10),
                          {{"message", "View has zero width"}},
                          {"a hint"}};
    const QStringList box = V::humanReport({issue});
    QVERIFY(box.first().startsWith(QChar(0x2554)));
    QVERIFY(box.last().startsWith(QChar(0x255a)));
    QCOMPARE(box[1], QStringLiteral("\u2551 BricksLayoutValidator found 1 issue(s)"));
    QCOMPARE(box[2], QStringLiteral("\u2551 Errors: 0, Warnings: 1, Info: 0"));
    QVERIFY(box.join('\n').contains("[WARNING] zero_size: View has zero width"));
    QVERIFY(box.join('\n').contains("Hint: a hint"));

    const QJsonObject json = QJsonDocument::fromJson(V::jsonReport({issue}).toUtf8()).object();
    const QJsonObject entry = json.value("BricksLayoutValidator")
                                  .toObject()
                                  .value("issues")
                                  .toArray()
                                  .first()
                                  .toObject();
    QCOMPARE(entry.value("severity").toString(), QStringLiteral("warning"));
    QCOMPARE(entry.value("kind").toString(), QStringLiteral("zero_size"));
    QCOMPARE(entry.value("viewIdentifier").toString(), QStringLiteral("blank"));
    QCOMPARE(entry.value("frame").toObject().value("height").toDouble(), 10.0);
}

void tst_BricksLayoutValidator::fatalOnError()
{
    const QByteArray err
        = TestSupport::standardErrorOfFailingRun(u"BRICKS_FATAL_SCENARIO"_s, u"fatalOnError"_s);
    QVERIFY2(err.contains("[BricksLayoutValidator] Found 1 layout error(s) - see log above for "
                          "details"),
             err.constData());
    QVERIFY(err.contains("BricksLayoutValidator found 1 issue(s)")); // the box came first
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    if (qEnvironmentVariable("BRICKS_FATAL_SCENARIO") == "fatalOnError") {
        BricksValidation::isEnabled = true;
        BricksValidation::behavior = BricksValidation::Behavior::fatalOnError;
        const LayoutTag loose("loose");
        QWidget *root
            = activated({B::Wall {B::StaticLabel("x").tag(loose)}.layout({pin(loose, D::left)})});
        V::validateAndReport(root, V::Phase::postLayout);
        return 0;
    }
    tst_BricksLayoutValidator test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_BricksLayoutValidator.moc"
