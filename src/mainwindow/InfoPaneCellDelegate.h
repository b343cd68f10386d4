#pragma once

#include <QFontMetrics>
#include <QStyledItemDelegate>

// Draws the info pane's two cells: the tag's name with its group's abbreviation in grey and a
// smaller font, and the value, in grey while it is a placeholder and in the divergent orange
// when its XMP copy disagrees with the legacy one.
class InfoPaneCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;

    static QFont miniFont(const QFont &base);
    // The text elided to the width, laying out no more of it than can be seen.
    static QString elidedToWidth(const QFontMetrics &metrics, const QString &text, int width);
};
