#include "MapSearchResultsPopup.h"

#include "map/MapSearch.h"

#include <QApplication>
#include <QListWidget>
#include <QPainter>
#include <QScreen>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

namespace {

constexpr int subtitleRole = Qt::UserRole + 1;

// A suggestion in two lines: the place's name, and where it lies in smaller, dimmer text.
class TwoLineDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override
    {
        return QSize(int(MapSearch::columnWidth), int(MapSearch::rowHeight));
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        QStyleOptionViewItem background = option;
        background.text.clear();
        QApplication::style()->drawControl(QStyle::CE_ItemViewItem, &background, painter);
        const bool selected = option.state & QStyle::State_Selected;
        const QPalette &palette = option.palette;
        const QColor text = palette.color(selected ? QPalette::HighlightedText : QPalette::Text);
        QColor dim = text;
        dim.setAlphaF(0.65);
        const QRect area = option.rect.adjusted(10, 4, -10, -4);
        QFont titleFont = option.font;
        titleFont.setWeight(QFont::DemiBold);
        QFont subtitleFont = option.font;
        subtitleFont.setPointSizeF(option.font.pointSizeF() * 0.9);
        painter->save();
        painter->setFont(titleFont);
        painter->setPen(text);
        const QRect titleRect(area.left(), area.top(), area.width(), area.height() / 2);
        painter->drawText(titleRect, Qt::AlignLeft | Qt::AlignVCenter,
                          QFontMetrics(titleFont).elidedText(index.data().toString(),
                                                             Qt::ElideRight, area.width()));
        painter->setFont(subtitleFont);
        painter->setPen(dim);
        const QRect subtitleRect(area.left(), area.top() + area.height() / 2, area.width(),
                                 area.height() / 2);
        painter->drawText(
            subtitleRect, Qt::AlignLeft | Qt::AlignVCenter,
            QFontMetrics(subtitleFont)
                .elidedText(index.data(subtitleRole).toString(), Qt::ElideRight, area.width()));
        painter->restore();
    }
};

} // namespace

MapSearchResultsPopup::MapSearchResultsPopup(QWidget *parent)
    : QFrame(parent, Qt::ToolTip | Qt::FramelessWindowHint)
    , m_list(new QListWidget(this))
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setFrameShape(QFrame::StyledPanel);
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setSpacing(0);
    m_list->setUniformItemSizes(true);
    m_list->setItemDelegate(new TwoLineDelegate(m_list));
    m_list->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto *layout = new QVBoxLayout(this);
    // The frame's line is the only border: the rows fill the rest exactly.
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_list);
}

void MapSearchResultsPopup::setResults(const QList<Placemark> &results)
{
    m_list->clear();
    for (const Placemark &place : results) {
        auto *item = new QListWidgetItem(place.name, m_list);
        item->setData(subtitleRole, MapSearch::subtitle(place));
        item->setToolTip(place.name + u'\n' + MapSearch::subtitle(place));
    }
    const int rows = int(results.size());
    const int border = 2 * frameWidth();
    setFixedSize(int(MapSearch::columnWidth) + border, rows * int(MapSearch::rowHeight) + border);
}

void MapSearchResultsPopup::setSelectedRow(int row)
{
    if (row < 0 || row >= m_list->count()) {
        m_list->clearSelection();
        return;
    }
    m_list->setCurrentRow(row);
    m_list->scrollToItem(m_list->item(row));
}

int MapSearchResultsPopup::rowCount() const
{
    return m_list->count();
}

void MapSearchResultsPopup::showBelow(QWidget *anchor)
{
    QPoint position = anchor->mapToGlobal(QPoint(0, anchor->height() + 2));
    if (const QScreen *screen = anchor->screen()) {
        const QRect available = screen->availableGeometry();
        position.setX(std::min(position.x(), available.right() - width()));
        if (position.y() + height() > available.bottom())
            setFixedHeight(std::max(int(MapSearch::rowHeight), available.bottom() - position.y()));
    }
    move(position);
    show();
}
