// A pane with every brick bound to variables, a grid, a fragment that hides by a preference, and
// a constraint recipe. It checks its own layout with the validator and can save a screenshot:
//     bricks_gallery [--screenshot file.png]

#include "bricks/Assembly.h"
#include "bricks/ViewTree.h"
#include "bricks/controls/ControlDirectives.h"
#include "bricks/validation/BricksLayoutValidator.h"
#include "bricks/walls/WallDirectives.h"
#include "platform/UserDefaults.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QFont>
#include <QTemporaryDir>

namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;

namespace {

enum class Precision { degrees = 0, minutes = 1, seconds = 2 };

struct Model
{
    std::shared_ptr<StraightVariable<QString>> title
        = std::make_shared<StraightVariable<QString>>("Morning walk");
    std::shared_ptr<StraightVariable<int>> rating = std::make_shared<StraightVariable<int>>(4);
    std::shared_ptr<StraightVariable<Precision>> precision
        = std::make_shared<StraightVariable<Precision>>(Precision::minutes);
    std::shared_ptr<StraightVariable<QString>> place
        = std::make_shared<StraightVariable<QString>>("Lyon");
    std::shared_ptr<StraightVariable<QString>> country
        = std::make_shared<StraightVariable<QString>>("France");
    std::shared_ptr<StraightVariable<QDateTime>> taken
        = std::make_shared<StraightVariable<QDateTime>>(
            QDateTime(QDate(2024, 5, 18), QTime(7, 42, 10)));
    std::shared_ptr<StraightVariable<int>> zoom = std::make_shared<StraightVariable<int>>(12);
    std::shared_ptr<StraightVariable<int>> mapStyle = std::make_shared<StraightVariable<int>>(0);
    std::shared_ptr<StraightVariable<QString>> units
        = std::make_shared<StraightVariable<QString>>("km");
    std::shared_ptr<UserDefaultsVariable<bool>> showAdvanced
        = std::make_shared<UserDefaultsVariable<bool>>("galleryShowAdvanced", true,
                                                       DefaultsConverters::toBool());
    std::shared_ptr<StraightVariable<Qt::CheckState>> overwrite
        = std::make_shared<StraightVariable<Qt::CheckState>>(Qt::PartiallyChecked);
    std::shared_ptr<StraightVariable<bool>> keepDates
        = std::make_shared<StraightVariable<bool>>(true);
    std::shared_ptr<StraightVariable<bool>> geotag
        = std::make_shared<StraightVariable<bool>>(false);
    std::shared_ptr<StraightVariable<QString>> status
        = std::make_shared<StraightVariable<QString>>("3 files selected, 1 without location");
};

B::GridRow field(const QString &label, const BuildDirectiveList &control)
{
    return B::GridRow {B::RightAlignedStaticLabel(label), control}.cellPlacements(
        {{0, {Qt::AlignRight, Qt::AlignVCenter}}});
}

// A fragment whose content sits 12 points inside it.
template<typename Content>
B::FragmentWall padded(const Content &content, const LayoutTag &tag)
{
    return B::FragmentWall {content.tag(tag)}.layout(pinEdges(tag, 12));
}

BuildDirectiveList gallery(const Model &m)
{
    const LayoutTag heading("heading"), intro("intro"), form("form"), advanced("advanced"),
        tri("tri"), keep("keep"), geo("geo"), color("color"), more("more"), summary("summary"),
        status("status"), reset("reset"), footer("footer"), headerWall("headerWall"),
        summaryWall("summaryWall");
    const auto units = m.units;

    return {B::FragmentStack {
        padded(B::Wall {B::StaticLabel("Location of the selection")
                            .tag(heading)
                            .style<QLabel>([](QLabel *l) {
                                QFont f = l->font();
                                f.setBold(true);
                                f.setPointSizeF(f.pointSizeF() * 1.2);
                                l->setFont(f);
                            }),
                        B::StaticMarkdownLabel("Every control below is *bound* to a variable; "
                                               "change one and the others that share it follow.")
                            .tag(intro)
                            .small()}
                   .layout({pin(heading, D::left), pin(heading, D::top), pin(intro, D::left),
                            pin(intro, D::right), below(intro, heading, 4), pin(intro, D::bottom)}),
               headerWall),
        B::HorizontalDivider(),
        padded(
            B::GridWall {
                field("Title:", B::StringInputField(m.title, "A short title")),
                field("Rating:", B::IntegerInputField(m.rating)),
                field("Precision:",
                      B::PopupButtonWithEnum<Precision>(
                          {{"Degrees", Precision::degrees},
                           {"Degrees and minutes", Precision::minutes},
                           {"Degrees, minutes and seconds", Precision::seconds}},
                          m.precision)),
                field("Place:",
                      B::FakeComboBoxButton(
                          {{"Recent", {"Lyon", "Nice", "Annecy"}}, {"Pins", {"Home", "Office"}}},
                          m.place)),
                field("Country:", B::ComboBox({"France", "Italy", "Spain"}, m.country)),
                field("Taken:", B::DatePicker(m.taken)), field("Zoom:", B::Slider(1, 18, m.zoom)),
                field("Map:", B::SegmentedControl({"Standard", "Satellite", "Hybrid"}, m.mapStyle)),
                field("Units:",
                      B::Wall {B::RadioChoice<QString>("Kilometres", "km", units).tag(keep),
                               B::RadioChoice<QString>("Miles", "mi", units).tag(geo)}
                          .layout({pin(keep, D::left), pin(keep, D::top), pin(keep, D::bottom),
                                   after(geo, keep, 16), sameCenterY({keep, geo}),
                                   pin(geo, D::right, 0, LayoutPriority::defaultLow)})),
                field("", B::CheckBox("Show advanced options", m.showAdvanced))}
                .spacing(10, 8),
            form),
        B::HideableFragment(
            {"galleryShowAdvanced"},
            [](const QStringList
                   &keys) { return !UserDefaults::standard().objectForKey(keys.first()).toBool(); },
            {B::Wall {
                B::TriStateCheckBox("Overwrite existing values", m.overwrite).tag(tri),
                B::Switch("Keep file dates", m.keepDates).tag(keep),
                B::CheckBox("Look up places while typing", m.geotag).tag(geo),
                B::ColorWell(QColor(210, 60, 50), [](const QColor &) {}).tag(color),
                B::PullDownButton("More", {"Copy coordinates", "Reveal in folder"}, [](int) {})
                    .tag(more)}
                 .tag(advanced)
                 .layout({pin(tri, D::left), pin(tri, D::top), below(keep, tri, 6),
                          pin(keep, D::left), below(geo, keep, 6), pin(geo, D::left),
                          pin(geo, D::bottom), pin(more, D::right), pin(more, D::top),
                          before(color, more, 8), sameCenterY({more, color})})})
            .layout(pinEdges(advanced, 12))
            .backgroundColor(QColor(0, 0, 0, 12)),
        B::DynamicFragmentWall<QString>::showWhen(
            AnyReadOnlyVariable<QString>(m.title), [](const QString &t) { return !t.isEmpty(); },
            {B::Wall {B::DynamicMarkdownLabel(AnyReadOnlyVariable<QString>(m.title)).tag(summary)}
                 .tag(summaryWall)
                 .layout({pinEdges(summary, 0)})})
            .layout(pinEdges(summaryWall, 12)),
        B::HorizontalDivider(),
        padded(
            B::Wall {B::DynamicSingleLineLabel(AnyReadOnlyVariable<QString>(m.status))
                         .tag(status)
                         .truncateMiddle(),
                     B::PushButton("Reset",
                                   [m] {
                                       m.title->setValue("Morning walk");
                                       m.rating->setValue(4);
                                       m.status->setValue("Reset to the defaults");
                                   })
                         .tag(reset)}
                .layout({pin(status, D::left), before(status, reset, 12), pin(reset, D::right),
                         pin(reset, D::top), pin(reset, D::bottom), sameCenterY({reset, status})}),
            footer)}};
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    const qsizetype at = arguments.indexOf("--screenshot");
    const QString screenshot = at >= 0 ? arguments.value(at + 1) : QString();

    // The gallery keeps its one preference in a private store.
    QTemporaryDir store;
    UserDefaults::setStandardFilePath(store.filePath("defaults.json"));

    Model model;
    auto assembly = build(gallery(model));
    assembly->activate();
    QWidget *pane = assembly->view();
    pane->setWindowTitle("Bricks gallery");
    pane->resize(QSize(560, pane->sizeHint().height()));
    ViewTree::layoutSubtreeIfNeeded(pane);

    BricksValidation::isEnabled = true;
    BricksValidation::minimumSeverity = BricksLayoutValidator::Severity::info;
    const auto issues
        = BricksLayoutValidator::validateAndReport(pane, BricksLayoutValidator::Phase::both);

    if (!screenshot.isEmpty()) {
        pane->show();
        app.processEvents();
        pane->grab().save(screenshot);
        const int code = issues.isEmpty() ? 0 : 1;
        delete pane;
        return code;
    }
    pane->show();
    const int code = app.exec();
    delete pane;
    return code;
}
