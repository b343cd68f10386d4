#pragma once

#include <QPointer>
#include <QWidget>

#include <optional>

enum class BrickSize { standard, mini, small, inherited };

// The state of a layout cursor, for controls placed in code rather than by a description.
class BricksFactory
{
public:
    BrickSize brickSize = BrickSize::standard;
    std::optional<double> horizontalInset;
    std::optional<double> verticalInset;
    QPointer<QWidget> currentView;
    QPointer<QWidget> previous;
    QPointer<QWidget> containerView;
    QPointer<QWidget> elementCreationTarget;
};
