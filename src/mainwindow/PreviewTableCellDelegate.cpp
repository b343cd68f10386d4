#include "PreviewTableCellDelegate.h"

#include "PreviewTableCellObservers.h"
#include "PreviewTableDataSource.h"
#include "bricks/SymbolIcons.h"

#include <QApplication>
#include <QPainter>

using Symbol = DataAvailabilityCellState::Symbol;
using Tint = DataAvailabilityCellState::Tint;

namespace {

constexpr int horizontalInset = 6;
constexpr int verticalInset = 4;

// The small system font the cells are drawn in.
QFont cellFont(const QFont &base)
{
    QFont font = base;
    font.setPointSizeF(base.pointSizeF() > 0 ? base.pointSizeF() * 11.0 / 13.0 : 9.0);
    return font;
}

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Base).lightness() < 128;
}

bool isEmphasized(const QStyleOptionViewItem &option)
{
    return option.state.testFlag(QStyle::State_Selected)
        && option.state.testFlag(QStyle::State_Active);
}

} // namespace

PreviewTableCellDelegate::PreviewTableCellDelegate(PreviewTableDataSource *dataSource,
                                                   PreviewTableCellObservers *observers,
                                                   QObject *parent)
    : QStyledItemDelegate(parent)
    , m_dataSource(dataSource)
    , m_observers(observers)
{ }

QSize PreviewTableCellDelegate::sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const
{
    return QSize(40, 24);
}

void PreviewTableCellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                     const QModelIndex &index) const
{
    if (!index.isValid() || index.row() >= m_dataSource->rowCount()
        || index.column() >= m_dataSource->columnCount())
        return;
    // The selection's background, as the style draws it.
    const QWidget *widget = option.widget;
    QStyle *style = widget ? widget->style() : QApplication::style();
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, widget);

    const NodePtr &node = m_dataSource->nodeAt(index.row());
    const QString &key = m_dataSource->columnKeys().at(index.column());
    painter->save();
    switch (PreviewTableDataSource::cellKind(key)) {
    case PreviewTableDataSource::CellKind::SingleLine:
        paintSingleLine(painter, option, *node, key);
        break;
    case PreviewTableDataSource::CellKind::DualLine:
        paintDualLine(painter, option, node, index.row(), key);
        break;
    case PreviewTableDataSource::CellKind::DataAvailability:
        paintDataAvailability(painter, option, node, index.row(), key);
        break;
    }
    painter->restore();
}

void PreviewTableCellDelegate::paintSingleLine(QPainter *painter,
                                               const QStyleOptionViewItem &option, const Node &node,
                                               const QString &key) const
{
    const QFont font = cellFont(option.font);
    const QRect textRect
        = option.rect.adjusted(horizontalInset, verticalInset, -horizontalInset, -verticalInset);
    const QString text = PreviewTableDataSource::cellText(node.getDisplayString(key));
    painter->setFont(font);
    painter->setPen(
        option.palette.color(isEmphasized(option) ? QPalette::HighlightedText : QPalette::Text));
    const QFontMetrics metrics(font);
    painter->drawText(textRect, Qt::AlignLeft | Qt::AlignVCenter,
                      metrics.elidedText(text, Qt::ElideRight, textRect.width()));
}

void PreviewTableCellDelegate::paintDualLine(QPainter *painter, const QStyleOptionViewItem &option,
                                             const NodePtr &node, int row, const QString &key) const
{
    const DisplayStringWrapper name = node->getDisplayString(key);
    bool waiting = name.kind() == DisplayStringWrapper::Kind::Waiting;
    QString proposedString;
    const QString proposedKey = PreviewTableDataSource::proposedValueKey(key);
    if (!proposedKey.isEmpty()) {
        const DisplayStringWrapper proposed = node->getDisplayString(proposedKey);
        waiting = waiting || proposed.kind() == DisplayStringWrapper::Kind::Waiting;
        proposedString = PreviewTableDataSource::cellText(proposed);
    }
    if (waiting)
        m_observers->observe(row, node, key);

    // Two lines meet at the middle of the row; the row is too low for the insets to hold both.
    const QFont font = cellFont(option.font);
    const QFontMetrics metrics(font);
    const int lineHeight = metrics.ascent() + metrics.descent();
    const int left = option.rect.left() + horizontalInset;
    const int width = option.rect.width() - 2 * horizontalInset;
    const int middle = option.rect.top() + option.rect.height() / 2;
    const QRect upper(left, middle - lineHeight, width, lineHeight);
    const QRect lower(left, middle, width, lineHeight);

    const bool emphasized = isEmphasized(option);
    const QPalette &palette = option.palette;
    painter->setFont(font);
    painter->setPen(palette.color(emphasized ? QPalette::HighlightedText : QPalette::Text));
    painter->drawText(
        upper, Qt::AlignLeft | Qt::AlignBottom,
        metrics.elidedText(PreviewTableDataSource::cellText(name), Qt::ElideRight, width));
    if (proposedString.isEmpty())
        return;
    // Lighter than the value above it, on a plain row and on the selection alike.
    QColor secondary = palette.color(emphasized ? QPalette::HighlightedText : QPalette::Text);
    secondary.setAlphaF(emphasized ? 0.75 : 0.55);
    painter->setPen(secondary);
    painter->drawText(lower, Qt::AlignLeft | Qt::AlignTop,
                      metrics.elidedText(proposedString, Qt::ElideRight, width));
}

void PreviewTableCellDelegate::paintDataAvailability(QPainter *painter,
                                                     const QStyleOptionViewItem &option,
                                                     const NodePtr &node, int row,
                                                     const QString &key) const
{
    const std::optional<DataAvailabilityCellState> state = DataAvailabilityCellState::configure(
        *node, key, DataAvailabilityCellState::Tooltip::Omit);
    if (!state)
        return;
    if (state->observe)
        m_observers->observe(row, node, key);
    const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
    const QPixmap pixmap
        = symbolPixmap(state->symbol, tintColor(state->tint, option.palette), ratio);
    if (pixmap.isNull())
        return;
    const QSize size = pixmap.deviceIndependentSize().toSize();
    QRect target(QPoint(), size);
    target.moveCenter(option.rect.center());
    painter->drawPixmap(target, pixmap);
}

QColor PreviewTableCellDelegate::tintColor(Tint tint, const QPalette &palette)
{
    const bool dark = isDark(palette);
    switch (tint) {
    case Tint::ControlText:
        return palette.color(QPalette::Active, QPalette::Text);
    case Tint::DisabledControlText:
        return palette.color(QPalette::Disabled, QPalette::Text);
    case Tint::Green:
        return dark ? QColor(48, 209, 88) : QColor(40, 167, 69);
    case Tint::Yellow:
        return dark ? QColor(255, 214, 10) : QColor(222, 170, 0);
    case Tint::SystemOrange:
        return dark ? QColor(255, 159, 10) : QColor(255, 149, 0);
    }
    return palette.color(QPalette::Text);
}

QPixmap PreviewTableCellDelegate::symbolPixmap(Symbol symbol, const QColor &tint,
                                               qreal devicePixelRatio) const
{
    const QString name = DataAvailabilityCellState::symbolName(symbol);
    const QString cacheKey
        = name + QLatin1Char('/') + tint.name(QColor::HexArgb) + QString::number(devicePixelRatio);
    const auto cached = m_symbolCache.constFind(cacheKey);
    if (cached != m_symbolCache.cend())
        return *cached;
    const QPixmap pixmap
        = SymbolIcons::pixmap(name, tint, QSize(symbolSize, symbolSize), devicePixelRatio);
    m_symbolCache.insert(cacheKey, pixmap);
    return pixmap;
}
