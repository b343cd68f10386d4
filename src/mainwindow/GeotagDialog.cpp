#include "GeotagDialog.h"

#include "MapWebView.h"
#include "MapZoomButtons.h"
#include "bricks/Assembly.h"
#include "bricks/SymbolIcons.h"
#include "bricks/ViewTree.h"
#include "bricks/controls/ControlDirectives.h"
#include "bricks/walls/WallDirectives.h"
#include "editors/ContainerBound.h"
#include "editors/EditorStyle.h"
#include "platform/AlertPresenter.h"
#include "session/OutputEngine.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QScopedValueRollback>
#include <QSplitter>
#include <QStandardItemModel>
#include <QStandardPaths>
#include <QTableView>
#include <QTimeZone>
#include <QVBoxLayout>

#include <cmath>

namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;
using namespace Qt::StringLiterals;

namespace {

// The folder of the last choice of tracks, for the rest of the run.
QString &lastTrackFolder()
{
    static QString folder;
    return folder;
}

// A row of the options: a caption, a control and what follows it on the line.
B::Wall optionRow(const QString &name, const QString &caption, const LayoutTag &control,
                  const BuildDirectiveList &controls, LayoutDirectiveList extra,
                  QList<LayoutSubject> onLine)
{
    using namespace EditorStyle;
    const LayoutTag label(name + u"Caption"_s);
    onLine << control << label;
    LayoutDirectiveList layout {pin(label, D::left, horizontalMargin),
                                after(control, label, columnSpacing)};
    layout.append(extra);
    layout.append(rowWithin(onLine, rowSpacing / 2));
    return B::Wall {B::StaticLabel(caption).tag(label).style<QLabel>(&makeCaption), controls}
        .tag(LayoutTag(name + u"Row"_s))
        .layout(layout);
}

} // namespace

GeotagDialog::GeotagDialog(const QList<NodePtr> &files, QWidget *parent)
    : QDialog(parent)
    , m_trackText(std::make_shared<StraightVariable<QString>>(tr("No track chosen")))
    , m_clockText(std::make_shared<StraightVariable<QString>>(u"0:00"_s))
    , m_errorText(std::make_shared<StraightVariable<QString>>())
    , m_zoneIndex(std::make_shared<StraightVariable<int>>(0))
    , m_gapMinutes(std::make_shared<StraightVariable<int>>(30))
    , m_extrapolationMinutes(std::make_shared<StraightVariable<int>>(0))
    , m_onlyOutside(std::make_shared<StraightVariable<bool>>(false))
{
    setObjectName(u"geotagDialog"_s);
    setWindowTitle(tr("Geotag from Track"));
    m_controller.setView(this);
    m_gapMinutes->setValue(m_controller.maximumGapMinutes());
    m_extrapolationMinutes->setValue(m_controller.maximumExtrapolationMinutes());

    // The options and the list on the left, the map beside them.
    auto *layout = new QVBoxLayout(this);
    auto *splitter = new QSplitter(Qt::Horizontal, this);
    splitter->setObjectName(u"geotagSplitter"_s);
    splitter->setChildrenCollapsible(false);
    layout->addWidget(splitter, 1);
    auto *left = new QWidget(splitter);
    auto *leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(0, 0, 0, 0);
    leftLayout->addWidget(buildOptions());

    auto *error = new QLabel(this);
    error->setObjectName(u"geotagError"_s);
    error->setWordWrap(true);
    error->setTextInteractionFlags(Qt::TextSelectableByMouse);
    error->setVisible(false);
    leftLayout->addWidget(error);
    m_errorText->addColdListener([error](const QString &text) {
        error->setText(text);
        error->setVisible(!text.isEmpty());
    });

    m_model = new QStandardItemModel(0, columnCount, this);
    m_model->setHorizontalHeaderLabels({tr("File"), tr("Taken"), tr("Position")});
    m_table = new QTableView(this);
    m_table->setObjectName(u"geotagList"_s);
    m_table->setModel(m_model);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setAlternatingRowColors(true);
    m_table->setShowGrid(false);
    m_table->setWordWrap(false);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setSectionResizeMode(fileColumn, QHeaderView::Stretch);
    m_table->horizontalHeader()->setStretchLastSection(false);
    m_table->setToolTip(tr("Where each file would be placed, or why it stays where it is"));
    leftLayout->addWidget(m_table, 1);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &GeotagDialog::selectedRowChanged);
    splitter->addWidget(left);
    splitter->addWidget(buildMap());
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);

    auto *statusRow = new QHBoxLayout;
    m_summary = new QLabel(this);
    m_summary->setObjectName(u"geotagSummary"_s);
    m_summary->setWordWrap(true);
    statusRow->addWidget(m_summary, 1);
    m_progress = new QProgressBar(this);
    m_progress->setObjectName(u"geotagProgress"_s);
    m_progress->setMaximumWidth(160);
    m_progress->setTextVisible(false);
    statusRow->addWidget(m_progress);
    layout->addLayout(statusRow);

    auto *buttons = new QDialogButtonBox(this);
    m_applyButton = buttons->addButton(tr("Apply"), QDialogButtonBox::AcceptRole);
    m_applyButton->setObjectName(u"geotagApplyButton"_s);
    m_applyButton->setToolTip(tr("Write the positions of the list to the files"));
    m_closeButton = buttons->addButton(QDialogButtonBox::Cancel);
    m_closeButton->setObjectName(u"geotagCloseButton"_s);
    connect(m_applyButton, &QPushButton::clicked, this, &GeotagDialog::startApply);
    connect(m_closeButton, &QPushButton::clicked, this, &QDialog::reject);
    layout->addWidget(buttons);

    bindOptions();
    m_controller.setFiles(files);
    fillList();
    updateState();
    // Fits a 1024 × 700 screen with its panels, title bar included.
    resize(940, 600);
    splitter->setSizes({540, 400});
}

GeotagDialog::~GeotagDialog()
{
    m_controller.setView(nullptr);
}

QWidget *GeotagDialog::buildOptions()
{
    using namespace EditorStyle;
    const LayoutTag track(u"geotagTrackLabel"_s), choose(u"geotagChooseButton"_s),
        zone(u"geotagTimeZone"_s), clock(u"geotagClockOffset"_s), clockHint(u"geotagClockHint"_s),
        gap(u"geotagGap"_s), gapUnit(u"geotagGapUnit"_s), ends(u"geotagExtrapolation"_s),
        endsUnit(u"geotagExtrapolationUnit"_s), outside(u"geotagOnlyOutside"_s);

    m_zoneIds.clear();
    QStringList zoneTitles {
        tr("The system's (%1)").arg(QString::fromUtf8(QTimeZone::systemTimeZoneId()))};
    for (const QByteArray &id : QTimeZone::availableTimeZoneIds()) {
        m_zoneIds << QString::fromUtf8(id);
        zoneTitles << m_zoneIds.last();
    }
    const auto tip = [](const QString &text) {
        return [text](QWidget *widget) {
            widget->setToolTip(text);
        };
    };
    const auto fieldWidth = [](const LayoutTag &tag) {
        return LayoutRecipeNamespace::width(tag, 72);
    };

    const QPointer<GeotagDialog> self = this;
    const BuildDirectiveList rows {
        optionRow(u"geotagTrack"_s, tr("Track:"), track,
                  {B::DynamicSingleLineLabel(AnyReadOnlyVariable<QString>(m_trackText))
                       .tag(track)
                       .truncateMiddle()
                       .horizontalContentHuggingPriority(LayoutPriority::defaultLow),
                   B::PushButton(tr("Choose…"),
                                 [self] {
                                     if (self)
                                         self->chooseTrackFiles();
                                 })
                       .tag(choose)
                       .style<QAbstractButton>([](QAbstractButton *button) {
                           button->setToolTip(
                               tr("Choose one or more track files: GPX, KML, NMEA, IGC or a CSV "
                                  "log"));
                       })},
                  {before(track, choose, columnSpacing), pin(choose, D::right, horizontalMargin)},
                  {choose}),
        optionRow(u"geotagTimeZone"_s, tr("Time zone:"), zone,
                  {B::PopupButton(zoneTitles, m_zoneIndex)
                       .tag(zone)
                       .style<QWidget>(tip(tr("The zone of capture times stored without one; a "
                                              "zone stored in the file wins")))},
                  {ContainerBound::atLeast(zone, D::right, horizontalMargin)}, {}),
        optionRow(u"geotagClockOffset"_s, tr("Camera ahead by:"), clock,
                  {B::StringInputField(m_clockText, u"0:00"_s)
                       .tag(clock)
                       .style<QWidget>(tip(tr("How far the camera's clock was ahead of the "
                                              "track's, as minutes:seconds or "
                                              "hours:minutes:seconds; negative when it was "
                                              "behind"))),
                   B::StaticLabel(tr("m:ss, negative when behind")).tag(clockHint)},
                  {fieldWidth(clock), after(clockHint, clock, columnSpacing),
                   ContainerBound::atLeast(clockHint, D::right, horizontalMargin)},
                  {clockHint}),
        optionRow(u"geotagGap"_s, tr("Largest gap:"), gap,
                  {B::IntegerInputField(m_gapMinutes)
                       .tag(gap)
                       .style<QWidget>(tip(tr("Files taken in a longer gap between two fixes "
                                              "of the track get no position"))),
                   B::StaticLabel(tr("minutes")).tag(gapUnit)},
                  {fieldWidth(gap), after(gapUnit, gap, columnSpacing),
                   ContainerBound::atLeast(gapUnit, D::right, horizontalMargin)},
                  {gapUnit}),
        optionRow(u"geotagExtrapolation"_s, tr("Past the ends:"), ends,
                  {B::IntegerInputField(m_extrapolationMinutes)
                       .tag(ends)
                       .style<SmartTextField>(
                           [](SmartTextField *field) { field->setPlaceholderText(u"0"_s); })
                       .style<QWidget>(tip(tr("How long before the track's first fix or after "
                                              "its last one a file still takes that fix"))),
                   B::StaticLabel(tr("minutes")).tag(endsUnit)},
                  {fieldWidth(ends), after(endsUnit, ends, columnSpacing),
                   ContainerBound::atLeast(endsUnit, D::right, horizontalMargin)},
                  {endsUnit}),
        optionRow(u"geotagOnlyOutside"_s, QString(), outside,
                  {B::CheckBox(tr("Only the files left outside the track"), m_onlyOutside)
                       .tag(outside)
                       .style<QWidget>(tip(tr("List only the files that would get no position, "
                                              "with the reason")))},
                  {ContainerBound::atLeast(outside, D::right, horizontalMargin)}, {}),
    };
    m_assembly = build({B::FragmentStack {rows}.code(CodeExecutionPhase::prepare,
                                                     [](QWidget *view, Binding *, Assembly *) {
                                                         view->setObjectName(u"geotagOptions"_s);
                                                         EditorStyle::alignCaptionColumns(view);
                                                     })});
    m_assembly->activate();
    QWidget *view = m_assembly->view();
    view->setParent(this);
    return view;
}

QWidget *GeotagDialog::buildMap()
{
    auto *panel = new QWidget(this);
    auto *column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 0, 0, 0);
    MapWebView::Options options;
    options.online = MapWebView::onlineSetting();
    m_map = new MapWebView(options, panel);
    m_map->setObjectName(u"geotagMap"_s);
    m_map->setMinimumSize(240, 200);
    new MapZoomButtons(*m_map, m_map);
    column->addWidget(m_map, 1);
    connect(m_map, &MapWebView::clicked, this, &GeotagDialog::mapClicked);

    auto *row = new QHBoxLayout;
    m_mapHint = new QLabel(panel);
    m_mapHint->setObjectName(u"geotagMapHint"_s);
    m_mapHint->setWordWrap(true);
    m_mapHint->setForegroundRole(QPalette::PlaceholderText);
    row->addWidget(m_mapHint, 1);
    m_placeButton = new QPushButton(tr("Taken Here…"), panel);
    m_placeButton->setObjectName(u"geotagPlaceButton"_s);
    m_placeButton->setCheckable(true);
    m_placeButton->setAutoDefault(false);
    m_placeButton->setToolTip(tr("Set the camera's clock offset from the selected file: press, "
                                 "then click the place on the track where it was taken"));
    connect(m_placeButton, &QPushButton::toggled, this, &GeotagDialog::setPlacing);
    row->addWidget(m_placeButton, 0, Qt::AlignTop);
    column->addLayout(row);
    return panel;
}

void GeotagDialog::bindOptions()
{
    const QPointer<GeotagDialog> self = this;
    m_zoneIndex->addColdListener([self](const int &index) {
        if (self)
            self->m_controller.setTimeZone(index <= 0 ? QByteArray()
                                                      : self->m_zoneIds.value(index - 1).toUtf8());
    });
    m_clockText->addColdListener([self](const QString &text) {
        if (!self)
            return;
        const std::optional<double> seconds = parseClockOffset(text);
        if (seconds) {
            if (*seconds != self->m_controller.cameraClockOffsetSeconds())
                self->m_controller.setCameraClockOffsetSeconds(*seconds);
            if (self->m_errorText->value().startsWith(tr("The clock offset")))
                self->m_errorText->setValue(QString());
        } else {
            self->m_errorText->setValue(
                tr("The clock offset \"%1\" is not a time such as 5:00, -0:30 or 1:02:00.")
                    .arg(text));
        }
        self->updateState();
    });
    m_gapMinutes->addColdListener([self](const int &minutes) {
        if (self && minutes != self->m_controller.maximumGapMinutes())
            self->m_controller.setMaximumGapMinutes(minutes);
    });
    m_extrapolationMinutes->addColdListener([self](const int &minutes) {
        if (self && minutes != self->m_controller.maximumExtrapolationMinutes())
            self->m_controller.setMaximumExtrapolationMinutes(minutes);
    });
    m_onlyOutside->addColdListener([self](const bool &) {
        if (self)
            self->fillList();
    });
    // Every change of an option starts a preview; the list waits for it.
    for (const auto &changed : {m_zoneIndex, m_gapMinutes, m_extrapolationMinutes}) {
        changed->addColdListener([self](const int &) {
            if (self)
                self->updateState();
        });
    }
}

std::optional<double> GeotagDialog::parseClockOffset(const QString &text)
{
    static const QRegularExpression form(
        u"^\\s*([+-]?)\\s*(?:(?:(\\d+):)?(\\d+):)?(\\d+(?:\\.\\d+)?)\\s*$"_s);
    const QRegularExpressionMatch match = form.match(text);
    if (text.trimmed().isEmpty())
        return 0.0;
    if (!match.hasMatch())
        return std::nullopt;
    const double seconds = match.captured(2).toDouble() * 3600 + match.captured(3).toDouble() * 60
        + match.captured(4).toDouble();
    return match.captured(1) == u"-"_s ? -seconds : seconds;
}

void GeotagDialog::chooseTrackFiles()
{
    if (lastTrackFolder().isEmpty())
        lastTrackFolder() = QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
    QFileDialog dialog(this, tr("Choose Track Files"));
    dialog.setObjectName(u"geotagTrackFileDialog"_s);
    dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setNameFilters(
        {tr("Tracks (*.gpx *.kml *.nmea *.nma *.log *.igc *.csv *.txt)"), tr("All files (*)")});
    dialog.setDirectory(lastTrackFolder());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    lastTrackFolder() = QFileInfo(dialog.selectedFiles().first()).absolutePath();
    setTrackFiles(dialog.selectedFiles());
}

void GeotagDialog::setTrackFiles(const QStringList &paths)
{
    QStringList names;
    for (const QString &path : paths)
        names << QFileInfo(path).fileName();
    m_trackText->setValue(names.isEmpty() ? tr("No track chosen") : names.join(u", "_s));
    m_errorText->setValue(QString());
    m_controller.setTrackFiles(paths);
    if (m_phase == Phase::applied)
        m_phase = Phase::choosing;
    updateState();
}

void GeotagDialog::fillList()
{
    const bool onlyOutside = m_onlyOutside->value();
    const QIcon warning = SymbolIcons::icon(u"exclamationmark.triangle.fill");
    // The row of the file that was current stays current through every new preview.
    const int current = currentFileIndex();
    const QScopedValueRollback refilling(m_refilling, true);
    m_model->setRowCount(0);
    QList<QList<QStandardItem *>> rows;
    int index = 0;
    const auto addRow
        = [&](const NodePtr &node, const QString &taken, const QString &position, bool outside) {
              auto *file = new QStandardItem(GeotagMapContent::displayName(*node));
              file->setToolTip(node->absolutePath);
              file->setData(index, Qt::UserRole);
              auto *time = new QStandardItem(taken);
              auto *where = new QStandardItem(position);
              if (outside) {
                  where->setIcon(warning);
                  QFont font = where->font();
                  font.setItalic(true);
                  where->setFont(font);
              }
              rows.append({file, time, where});
          };
    if (m_controller.preview().isEmpty()) {
        // Before a track is loaded the list shows the files the command works on.
        if (!onlyOutside) {
            for (const NodePtr &node : m_controller.files()) {
                addRow(node, QString(), QString(), false);
                ++index;
            }
        }
    } else {
        for (const GeotagController::Item &item : m_controller.preview()) {
            const bool placed = item.placed();
            if (!onlyOutside || !placed)
                addRow(item.node, GeotagMapContent::takenText(item, m_controller.timeZone()),
                       placed ? item.latitude + u", "_s + item.longitude
                              : GeotagController::reasonText(item),
                       !placed);
            ++index;
        }
    }
    for (const QList<QStandardItem *> &row : rows)
        m_model->appendRow(row);
    if (current >= 0)
        selectFileIndex(current);
    // The file may have left the list (only those outside are shown): its dot goes plain.
    if (m_map)
        m_map->highlightLanding(m_mapContent.landingOfPreviewIndex(currentFileIndex()));
    // The time and the position are read whole; the file's name takes what is left.
    m_table->resizeColumnToContents(captureTimeColumn);
    m_table->resizeColumnToContents(positionColumn);
}

void GeotagDialog::updateState()
{
    const bool busy = m_controller.isBusy();
    const bool applying = m_phase == Phase::applying;
    const bool clockValid = parseClockOffset(m_clockText->value()).has_value();
    m_applyButton->setEnabled(m_phase == Phase::choosing && !busy && clockValid
                              && m_controller.placedCount() > 0);
    m_applyButton->setDefault(m_applyButton->isEnabled());
    m_closeButton->setText(m_phase == Phase::choosing ? tr("Cancel") : tr("Close"));
    m_closeButton->setToolTip(applying ? tr("Close; the files being written are finished all "
                                            "the same")
                                       : QString());
    if (QWidget *options = m_assembly ? m_assembly->view() : nullptr)
        options->setEnabled(!applying);
    const int file = currentFileIndex();
    const bool placeable = m_phase == Phase::choosing && m_controller.hasTrack() && file >= 0
        && file < m_controller.preview().size() && m_controller.preview()[file].captureTime;
    m_placeButton->setEnabled(placeable || m_placing);
    if (m_placing && !placeable)
        setPlacing(false);
    m_mapHint->setText(
        m_placing ? tr("Click the place on the track where %1 was taken.")
                        .arg(GeotagMapContent::displayName(*m_controller.files()[file]))
                  : tr("To set the clock from one photo, select it, press Taken Here and click "
                       "where it was taken."));

    if (busy && !applying) {
        m_progress->setRange(0, 0);
        m_progress->setVisible(true);
    } else if (!applying) {
        m_progress->setVisible(false);
    }
    m_summary->setText(summaryText());
}

QString GeotagDialog::summaryText() const
{
    if (m_phase != Phase::choosing)
        return m_applyResult;
    const int files = int(m_controller.files().size());
    if (m_controller.trackFiles().isEmpty())
        return files == 1
            ? tr("Choose a track to see where the file would be placed.")
            : tr("Choose a track to see where the %1 files would be placed.").arg(files);
    if (m_controller.isBusy())
        return m_controller.hasTrack() ? tr("Placing the files on the track…")
                                       : tr("Reading the track…");
    if (!m_controller.hasTrack())
        return tr("No track is loaded.");
    const int placed = m_controller.placedCount();
    const int outside = int(m_controller.preview().size()) - placed;
    const QString placedText = placed == 1
        ? tr("1 of %1 files would be placed").arg(files)
        : tr("%1 of %2 files would be placed").arg(placed).arg(files);
    if (outside == 0)
        return placedText + u'.';
    return placedText
        + (outside == 1 ? tr("; 1 is left outside the track.")
                        : tr("; %1 are left outside the track.").arg(outside));
}

QString GeotagDialog::errorText() const
{
    return m_errorText->value();
}

void GeotagDialog::startApply()
{
    if (m_phase != Phase::choosing || m_controller.isBusy())
        return;
    const int sent = m_controller.apply();
    if (sent == 0)
        return;
    m_phase = Phase::applying;
    m_applyResult = sent == 1 ? tr("Writing 1 file…") : tr("Writing %1 files…").arg(sent);
    m_progress->setRange(0, sent);
    m_progress->setValue(0);
    m_progress->setVisible(true);
    updateState();
}

void GeotagDialog::geotagTrackChanged()
{
    fillList();
    redrawMap(true);
    updateState();
}

void GeotagDialog::geotagPreviewChanged()
{
    fillList();
    redrawMap(false);
    updateState();
}

void GeotagDialog::redrawMap(bool fit)
{
    m_mapContent = GeotagMapContent::of(m_controller);
    m_map->showTrack(m_mapContent.segments());
    m_map->showLandings(m_mapContent.landings());
    m_map->highlightLanding(m_mapContent.landingOfPreviewIndex(currentFileIndex()));
    if (!fit)
        return;
    if (const std::optional<CoordinateRegion> bounds = m_mapContent.bounds())
        m_map->setViewState(MapGeometry::stateShowing(m_map->viewState(), *bounds), false);
}

int GeotagDialog::fileIndexOfRow(int row) const
{
    const QStandardItem *item = row >= 0 ? m_model->item(row, fileColumn) : nullptr;
    return item ? item->data(Qt::UserRole).toInt() : -1;
}

int GeotagDialog::currentFileIndex() const
{
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : fileIndexOfRow(rows.first().row());
}

void GeotagDialog::selectFileIndex(int index)
{
    for (int row = 0; row < m_model->rowCount(); ++row) {
        if (fileIndexOfRow(row) == index) {
            m_table->selectRow(row);
            m_table->scrollTo(m_model->index(row, fileColumn));
            return;
        }
    }
}

void GeotagDialog::selectedRowChanged()
{
    if (m_refilling)
        return; // the refill puts the same file back, and the map follows on its own
    const int landing = m_mapContent.landingOfPreviewIndex(currentFileIndex());
    m_map->highlightLanding(landing);
    // A landing point out of sight is brought to the middle of the map.
    if (landing >= 0) {
        const MapViewState state = m_map->viewState();
        const Coordinate2D where = m_mapContent.landings()[landing].coordinate;
        const QPointF point = MapGeometry::pointForCoordinate(state, where);
        if (!QRectF(0, 0, state.width, state.height).contains(point))
            m_map->setViewState({where, state.zoom, state.width, state.height}, true);
    }
    if (m_placing)
        setPlacing(false);
    updateState();
}

void GeotagDialog::mapClicked(QPointF point)
{
    const MapViewState state = m_map->viewState();
    if (m_placing) {
        const int file = currentFileIndex();
        setPlacing(false);
        if (file < 0 || file >= m_controller.files().size())
            return;
        if (m_controller.setCameraClockOffsetFromPlacement(
                m_controller.files()[file], MapGeometry::coordinateForPoint(state, point)))
            m_clockText->setValue(clockOffsetText(m_controller.cameraClockOffsetSeconds()));
        updateState();
        return;
    }
    // A little wider than the dot, so that a click need not be exact.
    const int landing = m_mapContent.landingAt(state, point, 9.0);
    if (landing < 0)
        return;
    const int file = m_mapContent.landings()[landing].previewIndex;
    // A placed file is not in the list of those left outside; the whole list comes back.
    if (m_onlyOutside->value())
        m_onlyOutside->setValue(false);
    selectFileIndex(file);
}

void GeotagDialog::setPlacing(bool placing)
{
    if (placing == m_placing)
        return;
    m_placing = placing;
    m_placeButton->setChecked(placing);
    m_map->setPlacingCursor(placing);
    updateState();
}

QString GeotagDialog::clockOffsetText(double seconds)
{
    const QString sign = seconds < 0 ? u"-"_s : QString();
    const qint64 millis = std::llround(std::fabs(seconds) * 1000.0);
    const qint64 whole = millis / 1000;
    QString text = whole >= 3600 ? u"%1:%2:%3"_s.arg(whole / 3600)
                                       .arg(whole / 60 % 60, 2, 10, QChar(u'0'))
                                       .arg(whole % 60, 2, 10, QChar(u'0'))
                                 : u"%1:%2"_s.arg(whole / 60).arg(whole % 60, 2, 10, QChar(u'0'));
    if (millis % 1000 != 0)
        text += u"."_s
            + u"%1"_s.arg(millis % 1000, 3, 10, QChar(u'0')).remove(QRegularExpression(u"0+$"_s));
    return sign + text;
}

void GeotagDialog::geotagFailed(const QString &message)
{
    m_errorText->setValue(message);
    updateState();
}

void GeotagDialog::geotagApplyProgress(int finished, int total)
{
    if (m_phase != Phase::applying)
        return;
    m_progress->setRange(0, total);
    m_progress->setValue(finished);
}

void GeotagDialog::geotagApplyFinished(int written, int failed)
{
    m_phase = Phase::applied;
    m_applyResult = (written == 1 ? tr("1 file geotagged") : tr("%1 files geotagged").arg(written))
        + u", "_s + tr("%1 failed").arg(failed) + u'.';
    m_progress->setVisible(false);
    updateState();
}

void GeotagDialog::keyPressEvent(QKeyEvent *event)
{
    // Escape ends placing before it closes the dialog.
    if (event->key() == Qt::Key_Escape && m_placing) {
        setPlacing(false);
        return;
    }
    QDialog::keyPressEvent(event);
}

void GeotagDialog::changeEvent(QEvent *event)
{
    // The warning icons are drawn in the palette's colours of the moment.
    if (event->type() == QEvent::PaletteChange)
        fillList();
    QDialog::changeEvent(event);
}

GeotagDialog *GeotagDialog::run(QWidget *parent, const QList<NodePtr> &files)
{
    if (files.isEmpty()) {
        AlertPresenter::show({tr("There is nothing to geotag"),
                              tr("Add photos or videos to the list, or select some, and choose "
                                 "\"Geotag from Track…\" again."),
                              {tr("OK")},
                              {}});
        return nullptr;
    }
    auto *dialog = new GeotagDialog(files, parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->show();
    return dialog;
}

QList<NodePtr> GeotagDialog::filesToGeotag(const QList<NodePtr> &selection,
                                           const OutputEngine &engine)
{
    if (!selection.isEmpty())
        return selection;
    const FlatFileListPtr list = engine.flatFileList();
    return list ? list->files : QList<NodePtr>();
}

QAction *GeotagDialog::createAction(QWidget *window, std::function<QList<NodePtr>()> files)
{
    auto *action = new QAction(tr("&Geotag from Track…"), window);
    action->setObjectName(u"geotagFromTrack"_s);
    action->setToolTip(tr("Place the selected files, or all of them, on a GPS track by the time "
                          "they were taken"));
    QObject::connect(action, &QAction::triggered, window,
                     [window, files = std::move(files)] { run(window, files()); });
    return action;
}
