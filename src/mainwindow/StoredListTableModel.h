#pragma once

#include <QAbstractTableModel>
#include <QStringList>

#include <functional>
#include <optional>

class StoredStringList;

// A table over a list kept in the user defaults. The stored list is the only copy: the model
// reads it on every reload and changes it only through the list's own operations, and the
// table follows the stored key. Rows move by dragging inside the table; a model that accepts
// files takes dropped file URLs as well. Main thread only.
class StoredListTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    // The text of a row's stored value in the first column.
    using DisplayFunc = std::function<QString(const QString &value)>;
    // Called, on a later turn of the main queue, with the paths of files dropped from outside.
    using FilesDroppedFunc = std::function<void(const QStringList &paths)>;

    StoredListTableModel(StoredStringList &listData, QString internalPasteboardType,
                         DisplayFunc display, FilesDroppedFunc filesDropped = {},
                         QObject *parent = nullptr);

    // Reads the list anew from the defaults.
    void reload();
    const QStringList &rows() const { return m_rows; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

    // The pasteboard type of a move inside the table.
    const QString internalPasteboardType;
    // The rows of the drag under way, kept from its start until its drop.
    mutable std::optional<QList<int>> draggedIndices;

private:
    StoredStringList &m_listData;
    DisplayFunc m_display;
    FilesDroppedFunc m_filesDropped;
    QStringList m_rows;
};
