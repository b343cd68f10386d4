#include "FragmentStackView.h"

#include <QPaintEvent>
#include <QPainter>
#include <QVBoxLayout>

FragmentStackView::FragmentStackView(QWidget *parent)
    : QWidget(parent)
    , m_layout(new QVBoxLayout(this))
{
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    // Panes keep their own heights; room left over stays below the last one.
    m_layout->addStretch(1);
}

void FragmentStackView::addArrangedSubview(QWidget *view)
{
    if (view->parentWidget() != this)
        view->setParent(this);
    m_layout->removeWidget(view);
    m_layout->insertWidget(m_layout->count() - 1, view);
}

QList<QWidget *> FragmentStackView::arrangedSubviews() const
{
    QList<QWidget *> views;
    for (int i = 0; i < m_layout->count(); ++i)
        if (QWidget *w = m_layout->itemAt(i)->widget())
            views.append(w);
    return views;
}

void FragmentStackView::adoptSubview(QWidget *child)
{
    addArrangedSubview(child);
}

// The box layout leaves hidden widgets out, which is what closes the gap.
void FragmentStackView::setVisibilityPriority(int priority, QWidget *view)
{
    m_priorities.insert(view, priority);
    view->setVisible(priority > notVisible);
}

int FragmentStackView::visibilityPriority(QWidget *view) const
{
    return m_priorities.value(view, mustHold);
}

void FragmentStackView::paintEvent(QPaintEvent *event)
{
    if (backgroundDrawingFunc) {
        backgroundDrawingFunc(event->rect());
    } else if (backgroundColor) {
        QPainter painter(this);
        painter.fillRect(event->rect(), *backgroundColor);
    }
}
