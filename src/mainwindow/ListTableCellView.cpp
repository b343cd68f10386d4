#include "ListTableCellView.h"

#include "bricks/SymbolIcons.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

ListTableCellView::ListTableCellView(const QString &name, const QString &abbreviation,
                                     const QString &symbol, const QString &buttonToolTip,
                                     std::function<void()> buttonAction, QWidget *parent)
    : QWidget(parent)
    , nameLabel(new QLabel(this))
    , button(new QToolButton(this))
    , m_name(name)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 0, 2, 0);
    layout->setSpacing(4);
    nameLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
    nameLabel->setToolTip(name);
    nameLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    layout->addWidget(nameLabel, 1);
    if (!abbreviation.isEmpty()) {
        abbreviationLabel = new QLabel(abbreviation, this);
        abbreviationLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
        layout->addWidget(abbreviationLabel);
    }
    button->setIcon(SymbolIcons::icon(symbol));
    button->setAutoRaise(true);
    button->setIconSize(QSize(14, 14));
    button->setToolTip(buttonToolTip);
    button->setAccessibleName(buttonToolTip);
    button->setFocusPolicy(Qt::NoFocus);
    layout->addWidget(button);
    connect(button, &QToolButton::clicked, this, [action = std::move(buttonAction)] { action(); });
    applyTheme();
    elideName();
}

void ListTableCellView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    elideName();
}

void ListTableCellView::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        applyTheme();
}

void ListTableCellView::elideName()
{
    const int width = std::max(nameLabel->width(), 40);
    nameLabel->setText(nameLabel->fontMetrics().elidedText(m_name, Qt::ElideMiddle, width));
}

void ListTableCellView::applyTheme()
{
    if (!abbreviationLabel)
        return;
    QPalette palette = this->palette();
    palette.setColor(QPalette::WindowText, palette.color(QPalette::PlaceholderText));
    abbreviationLabel->setPalette(palette);
}
