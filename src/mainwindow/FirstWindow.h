#pragma once

#include <QMainWindow>

#include <memory>

class DataModel;
class OutputEngine;
class InfoPaneController;
class PreviewTableViewController;
class QLabel;

// A small window over the pipeline: drop files and folders, see the sorted list with the info
// pane of the selection under it, and the status.
class FirstWindow : public QMainWindow
{
    Q_OBJECT

public:
    FirstWindow(DataModel &dataModel, std::shared_ptr<OutputEngine> engine,
                QWidget *parent = nullptr);
    ~FirstWindow() override;

    // Adds dropped or given paths to the source list, which starts a scan.
    void openPaths(const QStringList &paths);

    PreviewTableViewController *previewTable() const { return m_previewTable.get(); }
    InfoPaneController *infoPane() const { return m_infoPane.get(); }
    QString statusText() const;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void refreshStatus();

    DataModel &m_dataModel;
    std::shared_ptr<OutputEngine> m_engine;
    std::unique_ptr<PreviewTableViewController> m_previewTable;
    std::unique_ptr<InfoPaneController> m_infoPane;
    QLabel *m_status;
};
