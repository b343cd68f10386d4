#pragma once

#include "session/DataAvailabilityCellState.h"
#include "session/Node.h"

#include <QHash>
#include <QPixmap>
#include <QStyledItemDelegate>

class PreviewTableCellObservers;
class PreviewTableDataSource;

// Draws the preview table's cells straight from their nodes: the name on one line, a location
// field over the value the program worked out for it, and the status symbols with their tint.
// A cell whose value is still being read has its row observed until the value arrives.
class PreviewTableCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    PreviewTableCellDelegate(PreviewTableDataSource *dataSource,
                             PreviewTableCellObservers *observers, QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    static constexpr int symbolSize = 14;
    // The tint as drawn: pure green and yellow vanish on a white row, so each has a shade for a
    // light and one for a dark background.
    static QColor tintColor(DataAvailabilityCellState::Tint tint, const QPalette &palette);
    // The symbol in its tint, for the given device pixel ratio; kept once made.
    QPixmap symbolPixmap(DataAvailabilityCellState::Symbol symbol, const QColor &tint,
                         qreal devicePixelRatio) const;

private:
    void paintSingleLine(QPainter *painter, const QStyleOptionViewItem &option, const Node &node,
                         const QString &key) const;
    void paintDualLine(QPainter *painter, const QStyleOptionViewItem &option, const NodePtr &node,
                       int row, const QString &key) const;
    void paintDataAvailability(QPainter *painter, const QStyleOptionViewItem &option,
                               const NodePtr &node, int row, const QString &key) const;

    PreviewTableDataSource *m_dataSource;
    PreviewTableCellObservers *m_observers;
    mutable QHash<QString, QPixmap> m_symbolCache;
};
