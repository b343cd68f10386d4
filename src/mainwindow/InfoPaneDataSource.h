#pragma once

#include "InfoPaneValueCell.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QStringList>

// The info pane's rows: one tag of the chosen category per row, its name at the left and the
// selection's combined value at the right. A row's value is asked for when it is first shown.
class InfoPaneDataSource : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Role {
        // The abbreviation of the tag's group, shown in grey beside its name ("GPS", "IPTC").
        AbbreviationRole = Qt::UserRole + 1,
        // True while the value cell shows no value of a file: a placeholder.
        IsPlaceholderRole,
        // True for an XMP value that disagrees with its legacy counterpart.
        IsDivergentRole,
    };

    explicit InfoPaneDataSource(QObject *parent = nullptr);
    ~InfoPaneDataSource() override;

    void reload(const QStringList &columnIDs, const QList<NodePtr> &nodes);
    const QStringList &columnIDs() const { return m_columnIDs; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

    // A value's tool tip: whole up to a few lines, then cut after a value (or a character) with
    // an ellipsis. A selection's thousands of values would make a tip taller than the screen.
    static QString toolTipText(const QString &value);

private:
    InfoPaneValueCell &valueCell(int row) const;
    void dropCells();

    QStringList m_columnIDs;
    QList<NodePtr> m_nodes;
    mutable QHash<int, std::shared_ptr<InfoPaneValueCell>> m_cells;
    mutable bool m_creatingCell = false;
};
