#include "mainwindow/ColumnListTableViewController.h"
#include "mainwindow/ListTableCellView.h"
#include "mainwindow/SourceListTableViewController.h"
#include "mainwindow/StoredListTableModel.h"
#include "mainwindow/TagListTableViewController.h"
#include "metadata/TagManager.h"
#include "platform/UserDefaults.h"
#include "session/DataModel.h"

#include "RecordingDoubles.h"
#include "TestSupport.h"

#include <QLabel>
#include <QMimeData>
#include <QTableView>
#include <QTableWidget>
#include <QTest>
#include <QToolButton>
#include <QUrl>

// The source, column and tag lists as a user works them: the tables follow the stored lists
// whoever changes them, and the buttons, drags and drops change the stored lists.
class tst_SourceListTableViewController : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { TestSupport::useTemporaryUserDefaults(); }
    void init();
    void tableFollowsTheStoredListFromAnySource();
    void deleteButtonRemovesItsRow();
    void dragMovesRowsAsABlock();
    void droppedFilesAreAnInteractiveAdd();
    void tagAddButtonAppendsAColumn();

private:
    QStringList shownRows(StoredListTableViewController &list) const;
};

void tst_SourceListTableViewController::init()
{
    UserDefaults::standard().removeObjectForKey(QStringLiteral("brisk_sources"));
    UserDefaults::standard().removeObjectForKey(QStringLiteral("brisk_columns"));
}

QStringList tst_SourceListTableViewController::shownRows(StoredListTableViewController &list) const
{
    QStringList rows;
    for (int row = 0; row < list.tableView->model()->rowCount(); ++row) {
        ListTableCellView *cell = list.cellAt(row);
        rows << (cell ? cell->nameLabel->toolTip() : QStringLiteral("<no cell>"));
    }
    return rows;
}

void tst_SourceListTableViewController::tableFollowsTheStoredListFromAnySource()
{
    DataModel model;
    auto list = NiblessViewController::make<SourceListTableViewController>(model);
    list->buildIfNeeded();
    QCOMPARE(shownRows(*list), QStringList());
    model.sourceList.add({u"/photos/a"_qs, u"/photos/b"_qs}, false);
    QCOMPARE(shownRows(*list), (QStringList {u"/photos/a"_qs, u"/photos/b"_qs}));
    // Another writer of the key: the table follows it too.
    UserDefaults::standard().setObject(QStringList {u"/elsewhere"_qs}, model.sourceList.storageKey);
    QCOMPARE(shownRows(*list), QStringList {u"/elsewhere"_qs});
    // A stored value of the wrong type shows as an empty list.
    UserDefaults::standard().setObject(42, model.sourceList.storageKey);
    QCOMPARE(shownRows(*list), QStringList());
}

void tst_SourceListTableViewController::deleteButtonRemovesItsRow()
{
    DataModel model;
    auto list = NiblessViewController::make<SourceListTableViewController>(model);
    list->buildIfNeeded();
    list->view()->resize(300, 200);
    list->view()->show();
    model.sourceList.add({u"/a"_qs, u"/b"_qs, u"/c"_qs}, false);
    QTest::mouseClick(list->cellAt(1)->button, Qt::LeftButton);
    QCOMPARE(model.sourceList.value(), (QStringList {u"/a"_qs, u"/c"_qs}));
    QCOMPARE(shownRows(*list), (QStringList {u"/a"_qs, u"/c"_qs}));
}

void tst_SourceListTableViewController::dragMovesRowsAsABlock()
{
    DataModel model;
    auto list = NiblessViewController::make<ColumnListTableViewController>(model);
    list->buildIfNeeded();
    model.columnList.write({u"name"_qs, u"City"_qs, u"Country"_qs, u"absolute_path"_qs});
    StoredListTableModel *table = list->model();
    // Rows 0 and 2 dragged onto row 4 (below the last) land at the end, in their order.
    std::unique_ptr<QMimeData> drag(table->mimeData({table->index(0, 0), table->index(2, 0)}));
    QVERIFY(table->canDropMimeData(drag.get(), Qt::MoveAction, 4, 0, {}));
    table->dropMimeData(drag.get(), Qt::MoveAction, 4, 0, {});
    QVERIFY(TestSupport::waitUntil([&] { return model.columnList.value().first() == u"City"_qs; }));
    QCOMPARE(model.columnList.value(),
             (QStringList {u"City"_qs, u"absolute_path"_qs, u"name"_qs, u"Country"_qs}));
    QCOMPARE(shownRows(*list).size(), 4);
    // A drag from another table is refused; the column list takes no files.
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(u"/tmp"_qs)});
    QVERIFY(!table->canDropMimeData(&files, Qt::CopyAction, 0, 0, {}));
    QMimeData stale;
    stale.setData(table->internalPasteboardType, "0");
    QVERIFY(!table->canDropMimeData(&stale, Qt::MoveAction, 0, 0, {}));
}

void tst_SourceListTableViewController::droppedFilesAreAnInteractiveAdd()
{
    RecordingPresenter alerts;
    AlertPresenter::install(&alerts);
    DataModel model;
    auto list = NiblessViewController::make<SourceListTableViewController>(model);
    list->buildIfNeeded();
    model.sourceList.add({u"/photos"_qs}, false);
    model.waitingForData->setValue(false);
    QMimeData drop;
    drop.setUrls(
        {QUrl::fromLocalFile(u"/photos/inside.jpg"_qs), QUrl::fromLocalFile(u"/music"_qs)});
    QVERIFY(list->model()->dropMimeData(&drop, Qt::CopyAction, -1, 0, {}));
    // Posted: the drag ends before the scan or the alert.
    QCOMPARE(model.sourceList.value(), QStringList {u"/photos"_qs});
    QVERIFY(TestSupport::waitUntil([&] { return model.sourceList.value().size() == 2; }));
    QCOMPARE(model.sourceList.value(), (QStringList {u"/photos"_qs, u"/music"_qs}));
    QCOMPARE(alerts.alerts.size(), 1);
    QCOMPARE(alerts.alerts.first().title, u"Some files could not be added."_qs);
    QVERIFY(model.waitingForData->value());
    AlertPresenter::install(nullptr);
}

void tst_SourceListTableViewController::tagAddButtonAppendsAColumn()
{
    DataModel model;
    auto tags = NiblessViewController::make<TagListTableViewController>(model);
    auto columns = NiblessViewController::make<ColumnListTableViewController>(model);
    tags->buildIfNeeded();
    columns->buildIfNeeded();
    tags->view()->show();
    QCOMPARE(tags->tableView->rowCount(), TagManager::shared().columnIDs().size());
    const int row = int(tags->listData.indexOf(u"creation_date"_qs));
    QVERIFY(row >= 0);
    auto *cell = qobject_cast<ListTableCellView *>(tags->tableView->cellWidget(row, 0));
    QTest::mouseClick(cell->button, Qt::LeftButton);
    QCOMPARE(model.columnList.value(),
             (QStringList {u"name"_qs, u"absolute_path"_qs, u"creation_date"_qs}));
    ListTableCellView *added = columns->cellAt(2);
    QVERIFY(added);
    QCOMPARE(added->nameLabel->toolTip(), TagManager::shared().displayName(u"creation_date"_qs));
    // A column of a tag space shows its abbreviation in grey.
    model.columnList.add(u"City"_qs);
    QVERIFY(columns->cellAt(3) && columns->cellAt(3)->abbreviationLabel);
    QCOMPARE(columns->cellAt(3)->abbreviationLabel->text(), u"IPTC"_qs);
}

QTEST_MAIN(tst_SourceListTableViewController)
#include "tst_SourceListTableViewController.moc"
