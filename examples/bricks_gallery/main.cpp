// A window of every brick bound to variables: a form of fragments (a grid, a fragment that hides
// by a preference, constraint recipes, a row aligned across walls) in a scroll view beside tabs
// that a variable switches, one of them an embedded table, over an info pane in a split. It
// checks its own layout with the validator and, with a screenshot, checks that every container
// drew its content:
//     bricks_gallery [--dark] [--notes] [--screenshot file.png]

#include "bricks/Assembly.h"
#include "bricks/ViewTree.h"
#include "bricks/controls/ControlDirectives.h"
#include "bricks/validation/BricksLayoutValidator.h"
#include "bricks/walls/BriskSplitView.h"
#include "bricks/walls/ScrollWall.h"
#include "bricks/walls/TabWall.h"
#include "bricks/walls/WallDirectives.h"
#include "platform/UserDefaults.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QFont>
#include <QHeaderView>
#include <QSet>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTextStream>

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
    std::shared_ptr<StraightVariable<int>> page = std::make_shared<StraightVariable<int>>(0);
};

// The kind of widget a window embeds from elsewhere: a table.
QTableWidget *table(const QStringList &headers, const QList<QStringList> &rows)
{
    auto *widget = new QTableWidget(int(rows.size()), int(headers.size()));
    widget->setHorizontalHeaderLabels(headers);
    for (int r = 0; r < rows.size(); ++r)
        for (int c = 0; c < headers.size(); ++c)
            widget->setItem(r, c, new QTableWidgetItem(rows[r].value(c)));
    widget->verticalHeader()->hide();
    widget->horizontalHeader()->setStretchLastSection(true);
    widget->resizeColumnsToContents();
    return widget;
}

QTableWidget *itemTable()
{
    return table({"Name", "Latitude", "Longitude", "City"},
                 {{"IMG_0412.jpg", "45.764043", "4.835659", "Lyon"},
                  {"IMG_0413.jpg", "45.764210", "4.835120", "Lyon"},
                  {"IMG_0420.heic", "43.710173", "7.261953", "Nice"},
                  {"VID_0007.mov"},
                  {"IMG_0431.jpg", "45.899247", "6.129384", "Annecy"}});
}

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

BuildDirectiveList form(const Model &m)
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
                field("Title:",
                      B::StringInputField(m.title, "A short title")
                          .style<SmartTextField>(
                              [](SmartTextField *f) { f->setBorderForSelection(true); })),
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

QTableWidget *detailTable()
{
    return table({"Tag", "Value"},
                 {{"GPS Latitude", "45.764043"},
                  {"GPS Longitude", "4.835659"},
                  {"City", "Lyon"},
                  {"Province-State", "Auvergne-Rhone-Alpes"},
                  {"Country", "France"}});
}

// The form scrolls beside tabs that a segmented control switches through a variable; under
// both, the info pane of the split.
BuildDirectiveList window(const Model &m, QWidget *items, QWidget *details)
{
    const LayoutTag scroll("scroll"), side("side"), switcher("switcher"), tabs("tabs"),
        itemList("itemList"), notes("notes"), caption("caption"), detailList("detailList");
    return {B::SplitView {
        B::Wall {
            B::ScrollView {B::ClipView {form(m)}}.tag(scroll).width(560),
            B::Wall {B::SegmentedControl({"Items", "Notes"}, m.page).tag(switcher),
                     B::TabWall {
                         B::Tab("Items", {B::EmbeddedControl(items).tag(itemList)})
                             .layout(pinEdges(itemList)),
                         B::Tab("Notes",
                                {B::MultilineText("The tabs have no bar of their own: a variable "
                                                  "chooses the page, and the segments above set "
                                                  "it.")
                                     .tag(notes)})
                             .layout({pin(notes, D::left, 12), pin(notes, D::right, 12),
                                      pin(notes, D::top, 12)})}
                         .showingTab(AnyReadOnlyVariable<int>(m.page))
                         .tag(tabs)}
                .tag(side)
                .layout({pin(switcher, D::top, 10), pin(switcher, D::left, 12),
                         below(tabs, switcher, 8), pin(tabs, D::left, 12), pin(tabs, D::right, 12),
                         pin(tabs, D::bottom, 12)})}
            .layout({pin(scroll, D::left), pin(scroll, D::top), pin(scroll, D::bottom),
                     after(side, scroll), pin(side, D::top), pin(side, D::bottom),
                     pin(side, D::right)}),
        B::Wall {B::StaticLabel("Info pane").tag(caption).style<QLabel>([](QLabel *l) {
                     QFont f = l->font();
                     f.setBold(true);
                     l->setFont(f);
                 }),
                 B::EmbeddedControl(details).tag(detailList)}
            .layout({pin(caption, D::left, 12), pin(caption, D::top, 8),
                     below(detailList, caption, 6), pin(detailList, D::left, 12),
                     pin(detailList, D::right, 12), pin(detailList, D::bottom, 12)})}};
}

// Whether an area of the screenshot shows something drawn: more than a few colours.
bool drawn(const QImage &image, const QRect &area)
{
    QSet<QRgb> colours;
    for (int y = area.top(); y <= area.bottom(); y += 2)
        for (int x = area.left(); x <= area.right(); x += 2)
            if (colours.size() <= 8)
                colours.insert(image.pixel(x, y));
    return colours.size() > 8;
}

// The faults the screenshot shows: a container that is off the picture or left blank.
QStringList checkScreenshot(const QImage &image, QWidget *window,
                            const QList<std::pair<QString, QWidget *>> &parts)
{
    QStringList faults;
    const double ratio = image.devicePixelRatio();
    for (const auto &[name, part] : parts) {
        const QRect logical(part->mapTo(window, QPoint(0, 0)), part->size());
        const QRect area
            = QRect(logical.topLeft() * ratio, logical.size() * ratio).intersected(image.rect());
        if (!part->isVisible() || area.width() < 20 || area.height() < 20)
            faults << name + " is not on the picture";
        else if (!drawn(image, area))
            faults << name + " shows nothing";
    }
    return faults;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.contains("--dark")) {
        QApplication::setStyle("Fusion");
        QPalette dark;
        dark.setColor(QPalette::Window, QColor(45, 45, 48));
        dark.setColor(QPalette::WindowText, QColor(230, 230, 230));
        dark.setColor(QPalette::Base, QColor(30, 30, 32));
        dark.setColor(QPalette::AlternateBase, QColor(45, 45, 48));
        dark.setColor(QPalette::Text, QColor(230, 230, 230));
        dark.setColor(QPalette::Button, QColor(60, 60, 64));
        dark.setColor(QPalette::ButtonText, QColor(230, 230, 230));
        dark.setColor(QPalette::Highlight, QColor(42, 130, 218));
        dark.setColor(QPalette::Light, QColor(80, 80, 84));
        dark.setColor(QPalette::Midlight, QColor(70, 70, 74));
        dark.setColor(QPalette::Mid, QColor(90, 90, 94));
        dark.setColor(QPalette::Dark, QColor(25, 25, 27));
        dark.setColor(QPalette::Shadow, QColor(10, 10, 10));
        QApplication::setPalette(dark);
    }
    const qsizetype at = arguments.indexOf("--screenshot");
    const QString screenshot = at >= 0 ? arguments.value(at + 1) : QString();

    // The gallery keeps its one preference in a private store.
    QTemporaryDir store;
    UserDefaults::setStandardFilePath(store.filePath("defaults.json"));

    Model model;
    if (arguments.contains("--notes"))
        model.page->setValue(1);
    QTableWidget *items = itemTable();
    auto assembly = build(window(model, items, detailTable()));
    assembly->activate();
    auto *split = qobject_cast<BriskSplitView *>(assembly->view());
    QWidget *pane = split;
    pane->setWindowTitle("Bricks gallery");
    pane->resize(1100, 720);
    pane->show();
    app.processEvents();
    split->setPosition(split->extent() - split->dividerThickness() - 200, 0);
    ViewTree::layoutSubtreeIfNeeded(pane);

    BricksValidation::isEnabled = true;
    BricksValidation::minimumSeverity = BricksLayoutValidator::Severity::info;
    const auto issues
        = BricksLayoutValidator::validateAndReport(pane, BricksLayoutValidator::Phase::both);

    if (!screenshot.isEmpty()) {
        app.processEvents();
        const QImage image = pane->grab().toImage();
        image.save(screenshot);
        auto *scroll = pane->findChild<ScrollWall *>();
        auto *tabs = pane->findChild<TabWall *>();
        QList<std::pair<QString, QWidget *>> parts {
            {"the main view", split->widget(0)},
            {"the info pane", split->widget(1)},
            {"the scroll view", scroll->viewport()},
            {"the page of the tabs", tabs->currentWidget()}};
        if (model.page->value() == 0)
            parts.append({"the embedded table", items});
        QStringList faults = checkScreenshot(image, pane, parts);
        if (tabs->currentIndex() != model.page->value())
            faults << "the tabs do not show the page their variable names";
        if (split->sizes().value(1) != 200)
            faults << QString("the info pane is %1 high, not 200").arg(split->sizes().value(1));
        if (scroll->widget()->height() <= scroll->viewport()->height())
            faults << "the form does not scroll";
        QTextStream err(stderr);
        for (const QString &fault : std::as_const(faults))
            err << "screenshot: " << fault << Qt::endl;
        const int code = issues.isEmpty() && faults.isEmpty() ? 0 : 1;
        delete pane;
        return code;
    }
    const int code = app.exec();
    delete pane;
    return code;
}
