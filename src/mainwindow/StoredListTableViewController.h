#pragma once

#include "commons/NiblessViewController.h"

#include <QStringList>

#include <functional>
#include <memory>

class KVOResponder;
class ListTableCellView;
class QTableView;
class StoredListTableModel;
class StoredStringList;
class UserDefaults;

// The shared part of the source and column lists: a one-column table over a list kept in the
// user defaults, whose rows are dragged to reorder and carry a delete button. The table reloads
// whenever the stored key changes, whoever changed it. Main thread only.
class StoredListTableViewController : public NiblessViewController
{
    Q_OBJECT

public:
    StoredListTableViewController(StoredStringList &listData, UserDefaults &defaults);
    ~StoredListTableViewController() override;

    QTableView *tableView = nullptr;
    // The table is its own scroll view.
    QTableView *scrollView = nullptr;
    std::unique_ptr<KVOResponder> updateWhenDefaultsStorageKeyIsChanged;
    StoredStringList &listData;

    StoredListTableModel *model() const { return m_model; }
    // The cell of a row, once the table has made it.
    ListTableCellView *cellAt(int row) const;
    void reloadData();

protected:
    QWidget *build() override;

    // What each list shows and how it takes dropped files.
    virtual QString internalPasteboardType() const = 0;
    virtual QString displayName(const QString &value) const { return value; }
    virtual QString abbreviation(const QString &) const { return {}; }
    virtual std::function<void(const QStringList &)> filesDroppedHandler() { return {}; }
    virtual QString deleteToolTip() const = 0;
    virtual QString accessibleName() const = 0;

private:
    void makeCells();

    UserDefaults &m_defaults;
    StoredListTableModel *m_model = nullptr;
};
