#include "InfoPaneCellDelegate.h"

#include "InfoPaneDataSource.h"
#include "PreviewTableCellDelegate.h"

#include <QApplication>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int horizontalInset = 6;

} // namespace

QString InfoPaneCellDelegate::elidedToWidth(const QFontMetrics &metrics, const QString &text,
                                            int width)
{
    // A value combined over thousands of files can run to megabytes, and eliding lays out the
    // whole text. Hardly a character is narrower than a pixel, so a cell shows no more characters
    // than it is wide: only those are laid out, with the ellipsis that the rest earns.
    const qsizetype shown = std::max(width, 0) + 1;
    if (text.size() <= shown)
        return metrics.elidedText(text, Qt::ElideRight, width);
    qsizetype cut = shown;
    if (text.at(cut - 1).isHighSurrogate())
        --cut;
    return metrics.elidedText(text.left(cut) + QChar(0x2026), Qt::ElideRight, width);
}

QFont InfoPaneCellDelegate::miniFont(const QFont &base)
{
    QFont font = base;
    font.setPointSizeF(base.pointSizeF() > 0 ? base.pointSizeF() * 9.0 / 13.0 : 7.0);
    return font;
}

void InfoPaneCellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                 const QModelIndex &index) const
{
    const QWidget *widget = option.widget;
    QStyle *style = widget ? widget->style() : QApplication::style();
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, widget);

    const bool highlighted = option.state.testFlag(QStyle::State_Selected)
        && option.state.testFlag(QStyle::State_Active);
    const QPalette &palette = option.palette;
    const QColor textColor
        = palette.color(highlighted ? QPalette::HighlightedText : QPalette::Text);
    QColor greyColor = textColor;
    greyColor.setAlphaF(0.5);
    QRect rect = option.rect.adjusted(horizontalInset, 0, -horizontalInset, 0);
    const QString text = index.data(Qt::DisplayRole).toString();

    painter->save();
    painter->setFont(option.font);
    const QFontMetrics metrics(option.font);
    if (index.column() == 0) {
        painter->setPen(textColor);
        const QString abbreviation = index.data(InfoPaneDataSource::AbbreviationRole).toString();
        const QFont mini = miniFont(option.font);
        const QFontMetrics miniMetrics(mini);
        const int abbreviationWidth
            = abbreviation.isEmpty() ? 0 : miniMetrics.horizontalAdvance(abbreviation) + 5;
        const QString title = elidedToWidth(metrics, text, rect.width() - abbreviationWidth);
        painter->drawText(rect, Qt::AlignLeft | Qt::AlignVCenter, title);
        if (!abbreviation.isEmpty()) {
            // On the title's baseline, just after it.
            const int baseline
                = rect.top() + (rect.height() - metrics.height()) / 2 + metrics.ascent();
            painter->setFont(mini);
            painter->setPen(greyColor);
            painter->drawText(rect.left() + metrics.horizontalAdvance(title) + 5, baseline,
                              abbreviation);
        }
    } else {
        QColor color = textColor;
        if (index.data(InfoPaneDataSource::IsPlaceholderRole).toBool())
            color = greyColor;
        else if (index.data(InfoPaneDataSource::IsDivergentRole).toBool() && !highlighted)
            color = PreviewTableCellDelegate::tintColor(
                DataAvailabilityCellState::Tint::SystemOrange, palette);
        painter->setPen(color);
        painter->drawText(rect, Qt::AlignLeft | Qt::AlignVCenter,
                          elidedToWidth(metrics, text, rect.width()));
    }
    painter->restore();
}
