#include "InfoPaneDataSource.h"

#include "metadata/TagManager.h"
#include "session/InfoPaneContent.h"

#include <QCoreApplication>
#include <QPointer>

InfoPaneDataSource::InfoPaneDataSource(QObject *parent)
    : QAbstractTableModel(parent)
{ }

InfoPaneDataSource::~InfoPaneDataSource()
{
    dropCells();
}

void InfoPaneDataSource::reload(const QStringList &columnIDs, const QList<NodePtr> &nodes)
{
    beginResetModel();
    dropCells();
    m_columnIDs = columnIDs;
    m_nodes = nodes;
    endResetModel();
}

void InfoPaneDataSource::dropCells()
{
    // A value that arrives for a former selection changes nothing.
    for (const std::shared_ptr<InfoPaneValueCell> &cell : std::as_const(m_cells))
        cell->terminate();
    m_cells.clear();
}

int InfoPaneDataSource::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_columnIDs.size());
}

int InfoPaneDataSource::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 2;
}

InfoPaneValueCell &InfoPaneDataSource::valueCell(int row) const
{
    std::shared_ptr<InfoPaneValueCell> &cell = m_cells[row];
    if (!cell) {
        QPointer<const InfoPaneDataSource> self(this);
        const QString key = m_columnIDs.at(row);
        // A value already there is answered during the creation: it is read below, not told.
        m_creatingCell = true;
        cell = InfoPaneValueCell::create(m_nodes, key, [self, row] {
            if (self && !self->m_creatingCell) {
                auto *model = const_cast<InfoPaneDataSource *>(self.data());
                emit model->dataChanged(model->index(row, 1), model->index(row, 1));
            }
        });
        m_creatingCell = false;
    }
    return *cell;
}

QString InfoPaneDataSource::toolTipText(const QString &value)
{
    constexpr qsizetype limit = 1000;
    if (value.size() <= limit)
        return value;
    qsizetype cut = limit;
    if (value.at(cut - 1).isHighSurrogate())
        --cut;
    // A cut between two values reads better than one inside a name, unless it loses too much.
    const qsizetype comma = value.lastIndexOf(QLatin1String(", "), cut - 2);
    if (comma >= limit / 2)
        return value.left(comma) + QStringLiteral(", …");
    return value.left(cut) + QStringLiteral("…");
}

QVariant InfoPaneDataSource::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_columnIDs.size())
        return {};
    const QString &id = m_columnIDs.at(index.row());
    if (index.column() == 0) {
        switch (role) {
        case Qt::DisplayRole:
            return TagManager::shared().displayName(id);
        case AbbreviationRole: {
            const auto &spaces = TagManager::shared().columnIDsToDescriptiveTagSpaceMapping();
            const auto space = spaces.constFind(id);
            if (space == spaces.cend())
                return {};
            return TagManager::localizedAbbreviation(*space).value_or(QString());
        }
        case Qt::ToolTipRole:
            return id;
        default:
            return {};
        }
    }
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole && role != IsPlaceholderRole
        && role != IsDivergentRole)
        return {};
    const InfoPaneValueCell &cell = valueCell(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return cell.text().value_or(QCoreApplication::translate("InfoPane", "waiting…"));
    case Qt::ToolTipRole:
        return cell.text() && !cell.isNoValue() ? toolTipText(*cell.text()) : QVariant();
    case IsPlaceholderRole:
        return !cell.text() || cell.isNoValue();
    case IsDivergentRole:
        return cell.isDivergent();
    default:
        return {};
    }
}
