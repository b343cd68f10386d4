#pragma once

#include "BrickBinding.h"

#include <QColor>
#include <QToolButton>

// A swatch of a colour; clicking it opens the colour chooser.
class ColorWellBrick
    : public QToolButton
    , public BrickType
{
    Q_OBJECT

public:
    explicit ColorWellBrick(const QColor &color = Qt::white, QWidget *parent = nullptr);
    QColor color() const { return m_color; }
    void setColor(const QColor &color);
    std::function<void(const QColor &)> valueChangedFunc;

protected:
    QWidget *brickWidget() override { return this; }

private:
    QColor m_color;
};
