#pragma once

#include <QMainWindow>

#include <memory>

class DataModel;
class OutputEngine;
class PreviewListModel;
class QLabel;
class QTableView;

// A small window over the pipeline: drop files and folders, see the sorted list and its status.
class FirstWindow : public QMainWindow
{
    Q_OBJECT

public:
    FirstWindow(DataModel &dataModel, std::shared_ptr<OutputEngine> engine,
                QWidget *parent = nullptr);

    // Shows the map beside the list; the window takes it.
    void setMapWidget(QWidget *map);

    // Adds dropped or given paths to the source list, which starts a scan.
    void openPaths(const QStringList &paths);

    PreviewListModel *listModel() const { return m_listModel.get(); }
    QString statusText() const;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void refreshStatus();

    DataModel &m_dataModel;
    std::shared_ptr<OutputEngine> m_engine;
    std::shared_ptr<PreviewListModel> m_listModel;
    QTableView *m_table;
    QLabel *m_status;
};
