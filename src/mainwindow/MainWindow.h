#pragma once

#include <QMainWindow>

#include <memory>

class AppDelegate;
class DataModel;
class MapDelegate;
class MainContentViewController;
class OutputEngine;
class QActionGroup;
class QMenu;

// The one window: the main content under a menu bar. Closing it asks the application to quit,
// which may have to wait for writes still on their way to the files. Main thread only.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    // The map delegate is the application's and outlives the window.
    static std::unique_ptr<MainWindow> makeMainWindow(DataModel &dataModel,
                                                      std::shared_ptr<OutputEngine> outputEngine,
                                                      MapDelegate *mapDelegate);
    MainWindow(DataModel &dataModel, std::shared_ptr<OutputEngine> outputEngine,
               MapDelegate *mapDelegate);
    ~MainWindow() override;

    std::unique_ptr<MainContentViewController> mainContentViewController;

    // The menu bar with the application's commands; the Help menu takes the groups that the
    // application's parts filled.
    void buildMenus(AppDelegate &delegate);
    // Whether the window has been drawn on the screen once.
    bool hasBeenPainted() const { return m_painted; }

signals:
    // Once, after the window's first paint: what can wait until the user sees the window
    // starts then.
    void firstPainted();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void addOutputCommands(QMenu *file);
    void addMapModes(QMenu *view);

    DataModel &m_dataModel;
    std::shared_ptr<OutputEngine> m_outputEngine;
    bool m_painted = false;
};
