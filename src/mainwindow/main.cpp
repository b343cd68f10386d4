#include "FirstWindow.h"
#include "QtAlertPresenter.h"
#include "commons/ApplicationStart.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"
#include "writing/ChangeManager.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("palomet"));
    QApplication::setApplicationDisplayName(QStringLiteral("Palomet"));
    QApplication::setOrganizationName(QStringLiteral("palomet"));

    ApplicationStart::installMetadataReaders();

    QtAlertPresenter alerts;
    AlertPresenter::install(&alerts);

    DataModel dataModel;
    ChangeManager::setDataModel(&dataModel);
    std::shared_ptr<OutputEngine> engine = OutputEngine::create(&dataModel);
    FirstWindow window(dataModel, engine);
    alerts.setParent(&window);
    window.show();

    // Each run starts from an empty source list; paths given to the program are what it opens.
    dataModel.sourceList.deleteAll();
    engine->startListening();
    QStringList paths;
    for (const QString &argument : QApplication::arguments().mid(1))
        paths << QFileInfo(argument).absoluteFilePath();
    if (!paths.isEmpty())
        window.openPaths(paths);

    const int status = app.exec();
    dataModel.sourceList.deleteAll();
    ChangeManager::setDataModel(nullptr);
    AlertPresenter::install(nullptr);
    return status;
}
