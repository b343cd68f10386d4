#include "mainwindow/FirstWindow.h"
#include "mainwindow/PreviewTableDataSource.h"
#include "mainwindow/PreviewTableViewController.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"

#include "TestSupport.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class tst_FirstWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { TestSupport::useTemporaryUserDefaults(); }
    void openedFolderIsListedSortedWithStatus();
};

void tst_FirstWindow::openedFolderIsListedSortedWithStatus()
{
    QTemporaryDir dir;
    for (const char *name : {"IMG_10.jpg", "IMG_2.jpg", "notes.txt"}) {
        QFile file(dir.filePath(QLatin1String(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    DataModel model;
    auto engine = OutputEngine::create(&model);
    FirstWindow window(model, engine);
    window.show();
    engine->startListening();

    window.openPaths({dir.path()});
    QCOMPARE(model.sourceList.value(), QStringList {dir.path()});
    PreviewTableDataSource *list = window.previewTable()->previewTableViewDataSource;
    QVERIFY(TestSupport::waitUntil([&] { return list->rowCount() == 3; }));
    QCOMPARE(list->index(0, 0).data().toString(), QStringLiteral("IMG_2.jpg"));
    QCOMPARE(list->index(1, 0).data().toString(), QStringLiteral("IMG_10.jpg"));
    QCOMPARE(list->headerData(1, Qt::Horizontal, Qt::DisplayRole).toString(),
             QStringLiteral("GPS"));
    QVERIFY(TestSupport::waitUntil([&] {
        return window.statusText().startsWith(QStringLiteral("Ready. (3 items | 0 selected"));
    }));
    engine->queue().waitUntilAllOperationsAreFinished();
}

QTEST_MAIN(tst_FirstWindow)
#include "tst_FirstWindow.moc"
