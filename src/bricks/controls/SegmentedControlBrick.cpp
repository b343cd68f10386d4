#include "SegmentedControlBrick.h"

#include <QButtonGroup>
#include <QEvent>
#include <QHBoxLayout>
#include <QToolButton>

SegmentedControlBrick::SegmentedControlBrick(const QStringList &labels, QWidget *parent)
    : QWidget(parent)
    , m_group(new QButtonGroup(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (int i = 0; i < labels.size(); ++i) {
        auto *button = new QToolButton(this);
        button->setText(labels[i]);
        button->setCheckable(true);
        button->setAutoRaise(false);
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
        m_group->addButton(button, i);
        layout->addWidget(button);
    }
    m_group->setExclusive(true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    // idClicked comes from the user only.
    connect(m_group, &QButtonGroup::idClicked, this, [this](int id) {
        if (selectedSegmentFunc)
            selectedSegmentFunc(id);
    });
    connect(m_group, &QButtonGroup::idToggled, this, [this] { markSelectedSegment(); });
}

void SegmentedControlBrick::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        markSelectedSegment();
}

// A style's own checked look is a slightly darker button, which a dark palette hides: the chosen
// segment takes the selection's colours instead.
void SegmentedControlBrick::markSelectedSegment()
{
    QPalette chosen = palette();
    chosen.setColor(QPalette::Button, chosen.color(QPalette::Highlight));
    chosen.setColor(QPalette::ButtonText, chosen.color(QPalette::HighlightedText));
    for (QAbstractButton *button : m_group->buttons())
        button->setPalette(button->isChecked() ? chosen : QPalette());
}

int SegmentedControlBrick::selectedSegment() const
{
    return m_group->checkedId();
}

void SegmentedControlBrick::setSelectedSegment(int index)
{
    if (QAbstractButton *button = m_group->button(index)) {
        button->setChecked(true);
        return;
    }
    // No valid segment: none is chosen.
    m_group->setExclusive(false);
    if (QAbstractButton *checked = m_group->checkedButton())
        checked->setChecked(false);
    m_group->setExclusive(true);
}

int SegmentedControlBrick::segmentCount() const
{
    return int(m_group->buttons().size());
}

QToolButton *SegmentedControlBrick::segment(int index) const
{
    return qobject_cast<QToolButton *>(m_group->button(index));
}
