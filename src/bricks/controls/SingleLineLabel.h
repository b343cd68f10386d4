#pragma once

#include "bricks/walls/Wall.h"

#include <QMargins>

// A cheap one-line label that draws its own text; a change of text only repaints it.
class SingleLineLabel : public Wall
{
    Q_OBJECT

public:
    explicit SingleLineLabel(const QString &stringValue = {}, QWidget *parent = nullptr);

    QString stringValue() const { return m_stringValue; }
    void setStringValue(const QString &value);
    void setTextColor(const QColor &color);
    void setTextAlignment(Qt::Alignment alignment);
    void setLineBreakMode(Qt::TextElideMode mode);
    void setTextInsets(const QMargins &insets);
    Qt::Alignment textAlignment() const { return m_textAlignment; }
    Qt::TextElideMode lineBreakMode() const { return m_lineBreakMode; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_stringValue;
    QMargins m_textInsets {0, 1, 0, 1};
    QColor m_textColor;
    Qt::Alignment m_textAlignment = Qt::AlignLeft | Qt::AlignVCenter;
    Qt::TextElideMode m_lineBreakMode = Qt::ElideRight;
};
