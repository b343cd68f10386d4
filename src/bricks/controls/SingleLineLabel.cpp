#include "SingleLineLabel.h"

#include <QPainter>

SingleLineLabel::SingleLineLabel(const QString &stringValue, QWidget *parent)
    : Wall(parent)
    , m_stringValue(stringValue)
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void SingleLineLabel::setStringValue(const QString &value)
{
    if (value == m_stringValue)
        return;
    const bool widthChanges
        = fontMetrics().horizontalAdvance(value) != fontMetrics().horizontalAdvance(m_stringValue);
    m_stringValue = value;
    if (widthChanges)
        updateGeometry();
    update();
}

void SingleLineLabel::setTextColor(const QColor &color)
{
    m_textColor = color;
    update();
}

void SingleLineLabel::setTextAlignment(Qt::Alignment alignment)
{
    m_textAlignment = alignment;
    update();
}

void SingleLineLabel::setLineBreakMode(Qt::TextElideMode mode)
{
    m_lineBreakMode = mode;
    update();
}

void SingleLineLabel::setTextInsets(const QMargins &insets)
{
    m_textInsets = insets;
    updateGeometry();
}

QSize SingleLineLabel::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    return QSize(metrics.horizontalAdvance(m_stringValue) + m_textInsets.left()
                     + m_textInsets.right(),
                 metrics.height() + m_textInsets.top() + m_textInsets.bottom());
}

QSize SingleLineLabel::minimumSizeHint() const
{
    return QSize(0, sizeHint().height());
}

void SingleLineLabel::paintEvent(QPaintEvent *event)
{
    Wall::paintEvent(event);
    QPainter painter(this);
    const QRect area = rect().marginsRemoved(m_textInsets);
    painter.setPen(m_textColor.isValid() ? m_textColor : palette().color(QPalette::WindowText));
    painter.drawText(area, int(m_textAlignment),
                     fontMetrics().elidedText(m_stringValue, m_lineBreakMode, area.width()));
}
