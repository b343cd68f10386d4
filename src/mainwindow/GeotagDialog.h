#pragma once

#include "location/GeotagController.h"
#include "location/GeotagView.h"
#include "map/GeotagMapContent.h"
#include "session/Node.h"

#include <QDialog>
#include <QList>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class Assembly;
class MapWebView;
class OutputEngine;
class QAction;
class QLabel;
class QProgressBar;
class QPushButton;
class QStandardItemModel;
class QTableView;
template<typename T>
class StraightVariable;

// "Geotag from Track…": the track files, the options of the correlation, the list of what each
// file would get (or why it gets nothing), a map of the track with the point where each file
// would land, and Apply. It draws what its GeotagController decides; the controller correlates
// through ExifTool and writes through the write engine. One dialog per call, window-modal,
// deleted when closed. Main thread only.
class GeotagDialog
    : public QDialog
    , public GeotagView
{
    Q_OBJECT

public:
    explicit GeotagDialog(const QList<NodePtr> &files, QWidget *parent = nullptr);
    ~GeotagDialog() override;

    // Opens the dialog over parent for files. Without files it says so and opens nothing.
    static GeotagDialog *run(QWidget *parent, const QList<NodePtr> &files);
    // The files the command works on: the selection, or every item of the list when nothing is
    // selected.
    static QList<NodePtr> filesToGeotag(const QList<NodePtr> &selection,
                                        const OutputEngine &engine);
    // The command "Geotag from Track…" (object name "geotagFromTrack"), opening the dialog over
    // window for the files that `files` gives at the moment it is triggered.
    static QAction *createAction(QWidget *window, std::function<QList<NodePtr>()> files);

    GeotagController &controller() { return m_controller; }
    // The open dialog for track files; the choice replaces the earlier one.
    void chooseTrackFiles();
    void setTrackFiles(const QStringList &paths);

    // The status line under the list: what the preview found, or how the apply went.
    QString summaryText() const;
    QString errorText() const;

    // The dialog's own map, and what it shows.
    MapWebView *mapView() const { return m_map; }
    const GeotagMapContent &mapContent() const { return m_mapContent; }
    // "This photo was taken here": while on, the next click on the map sets the camera's clock
    // offset from the selected file.
    void setPlacing(bool placing);
    bool isPlacing() const { return m_placing; }

    // GeotagView.
    void geotagTrackChanged() override;
    void geotagPreviewChanged() override;
    void geotagFailed(const QString &message) override;
    void geotagApplyProgress(int finished, int total) override;
    void geotagApplyFinished(int written, int failed) override;

    // Columns of the list.
    enum Column { fileColumn, captureTimeColumn, positionColumn, columnCount };

protected:
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    enum class Phase { choosing, applying, applied };

    QWidget *buildOptions();
    QWidget *buildMap();
    void bindOptions();
    void fillList();
    // Hands the controller's track and landing points to the map; fit frames the track.
    void redrawMap(bool fit);
    // The entry of the files (and of the preview) that a row of the list shows; -1 for none.
    int fileIndexOfRow(int row) const;
    int currentFileIndex() const; // the selected row's
    void selectFileIndex(int index);
    void selectedRowChanged();
    void mapClicked(QPointF point);
    static QString clockOffsetText(double seconds);
    void updateState();
    void startApply();
    // "[-][[h:]m:]s" or plain seconds; nothing for other text.
    static std::optional<double> parseClockOffset(const QString &text);

    GeotagController m_controller;
    Phase m_phase = Phase::choosing;
    QStringList m_zoneIds; // the popup's entries after the first, "the system's"
    std::shared_ptr<StraightVariable<QString>> m_trackText, m_clockText, m_errorText;
    std::shared_ptr<StraightVariable<int>> m_zoneIndex, m_gapMinutes, m_extrapolationMinutes;
    std::shared_ptr<StraightVariable<bool>> m_onlyOutside;
    std::shared_ptr<Assembly> m_assembly;
    QStandardItemModel *m_model = nullptr;
    QTableView *m_table = nullptr;
    QProgressBar *m_progress = nullptr;
    QLabel *m_summary = nullptr;
    QPushButton *m_applyButton = nullptr;
    QPushButton *m_closeButton = nullptr;
    QString m_applyResult;
    MapWebView *m_map = nullptr;
    GeotagMapContent m_mapContent;
    QPushButton *m_placeButton = nullptr;
    QLabel *m_mapHint = nullptr;
    bool m_placing = false;
    bool m_refilling = false;
};
