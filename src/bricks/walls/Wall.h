#pragma once

#include "BricksFactory.h"
#include "bricks/EndOfLifeBag.h"

#include <QColor>
#include <QWidget>

#include <functional>
#include <optional>

// The toolkit's container: paints its own background and any of its four borders, and runs its
// bag of clean-up closures when it goes away. Its children are placed by the constraints that
// relate them, solved together with those of the walls around it that they reach.
class Wall : public QWidget
{
    Q_OBJECT

public:
    explicit Wall(QWidget *parent = nullptr);
    ~Wall() override;

    EndOfLifeBag &endOfLifeBag() { return m_endOfLifeBag; }
    BricksFactory &factory() { return m_factory; }

    bool inheritsVibrancy = false;
    bool inheritsFlipped = true;
    std::optional<QColor> backgroundColor;
    QColor borderColor = QColor(0, 0, 0, 40);
    std::optional<QColor> layerBorderColor;
    double layerBorderWidth = 1.0;
    double layerCornerRadius = 0;
    bool drawLeftBorder = false;
    bool drawRightBorder = false;
    bool drawTopBorder = false;
    bool drawBottomBorder = false;
    std::function<void(const QRect &dirty)> backgroundDrawingFunc;
    std::function<void(const QRect &bounds, bool top, bool bottom, bool left, bool right)>
        borderDrawingFunc;

    void setBackgroundColor(const std::optional<QColor> &color);
    void setBorders(bool top, bool bottom, bool left, bool right);
    // Applies the layer border settings (colour, width, corner radius).
    void updateLayerBorder();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    // Declared first so that it is destroyed last, after the fields its closures may reach.
    EndOfLifeBag m_endOfLifeBag;
    BricksFactory m_factory;
    bool m_layerBorderApplied = false;
};
