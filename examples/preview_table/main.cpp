// The preview table with the info pane under it, on the files of the folders given:
//     preview_table FOLDER... [--screenshot file.png]
// Select rows to see their tags in the pane; the menu above the pane picks the category. With
// --screenshot the window is saved once every file is read, and the program ends.

#include "commons/ApplicationStart.h"
#include "mainwindow/InfoPaneController.h"
#include "mainwindow/PreviewTableDataSource.h"
#include "mainwindow/PreviewTableViewController.h"
#include "metadata/DataCoordinator.h"
#include "metadata/TagManager.h"
#include "platform/UserDefaults.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"

#include <QApplication>
#include <QComboBox>
#include <QFileInfo>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

// The category menu: its entries and separators in the catalogue's order, bound to the model.
QComboBox *categoryMenu(DataModel &dataModel, QWidget *parent)
{
    auto *menu = new QComboBox(parent);
    const QStringList categories = TagManager::shared().localizedTagCategories();
    for (const QString &category : categories) {
        if (category == u"-"_s)
            menu->insertSeparator(menu->count());
        else
            menu->addItem(category);
    }
    menu->setCurrentIndex(dataModel.infoPaneCategory->value());
    QObject::connect(menu, &QComboBox::currentIndexChanged, menu,
                     [&dataModel](int index) { dataModel.infoPaneCategory->setValue(index); });
    return menu;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QStringList arguments = app.arguments().mid(1);
    QString screenshot;
    if (const qsizetype at = arguments.indexOf(u"--screenshot"_s); at >= 0) {
        screenshot = arguments.value(at + 1);
        arguments.remove(at, std::min<qsizetype>(2, arguments.size() - at));
    }
    if (arguments.isEmpty()) {
        std::fprintf(stderr, "usage: preview_table FOLDER... [--screenshot file.png]\n");
        return 2;
    }
    QStringList paths;
    for (const QString &argument : std::as_const(arguments)) {
        const QFileInfo info(argument);
        if (!info.exists()) {
            std::fprintf(stderr, "preview_table: %s does not exist\n", qPrintable(argument));
            return 2;
        }
        paths << info.absoluteFilePath();
    }

    // The example keeps its settings in a private store, away from the application's.
    QTemporaryDir store;
    UserDefaults::setStandardFilePath(store.filePath(u"defaults.json"_s));
    ApplicationStart::installMetadataReaders();

    DataModel dataModel;
    dataModel.infoPaneCategory->setValue(6);
    std::shared_ptr<OutputEngine> engine = OutputEngine::create(&dataModel);
    const auto tableController = NiblessViewController::make<PreviewTableViewController>(dataModel);
    const auto infoPaneController = NiblessViewController::make<InfoPaneController>(dataModel);
    PreviewTableViewController &table = *tableController;
    InfoPaneController &infoPane = *infoPaneController;
    engine->addPreviewTable(table.engineConnection());

    QWidget window;
    window.setWindowTitle(u"Preview table"_s);
    auto *split = new QSplitter(Qt::Vertical, &window);
    split->addWidget(table.view());
    auto *lower = new QWidget(split);
    auto *lowerLayout = new QVBoxLayout(lower);
    lowerLayout->setContentsMargins(0, 4, 0, 0);
    lowerLayout->addWidget(categoryMenu(dataModel, lower), 0, Qt::AlignLeft);
    lowerLayout->addWidget(infoPane.view(), 1);
    split->addWidget(lower);
    split->setSizes({420, 240});
    auto *layout = new QVBoxLayout(&window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(split);
    window.resize(1100, 700);
    window.show();

    engine->startListening();
    dataModel.sourceList.add(paths, false);

    if (!screenshot.isEmpty()) {
        // Once the list is in and every file is read: the first rows selected, then the picture.
        auto *poll = new QTimer(&window);
        QObject::connect(poll, &QTimer::timeout, &window, [&] {
            const QList<NodePtr> &nodes = table.previewTableViewDataSource->nodes();
            if (nodes.isEmpty() || dataModel.waitingForData->value())
                return;
            for (const NodePtr &node : nodes) {
                if (!node->hasBeenRead(MetadataSource::ExifToolGeneric))
                    return;
            }
            poll->stop();
            dataModel.setSelectedNodes(nodes.mid(0, 2));
            table.selectRows(dataModel.selectedNodes());
            QTimer::singleShot(300, &window, [&] {
                window.grab().save(screenshot);
                app.quit();
            });
        });
        poll->start(100);
    }
    const int status = app.exec();
    dataModel.sourceList.deleteAll();
    DataCoordinator::shared().queue().cancelAllOperations();
    return status;
}
