#pragma once

#include "bricks/layout/LayoutRecipes.h"

// Keeps a view at least some distance inside one side of its container, or exactly there at a
// weaker priority. Rows of controls of different heights use it so that the tallest one sets the
// row's height whatever the style and the font make of each control.
class ContainerBound : public LayoutDirective
{
public:
    ContainerBound(LayoutSubject subject, SmartLayoutDirectionsType side, double inset,
                   LayoutRelation relation, float priority = LayoutPriority::required);

    // At least `inset` inside that side.
    static ContainerBound atLeast(LayoutSubject subject, SmartLayoutDirectionsType side,
                                  double inset);

    QList<LayoutConstraint> createConstraints(QWidget *containerView) const override;
    LayoutItem subjectItem(QWidget *containerView) const override;

    LayoutDirectiveRef subject;
    SmartLayoutDirectionsType side;
    double inset;
    // Read inward: greaterThanOrEqual is "at least inset inside".
    LayoutRelation relation;
    float priority;
};

// One row of controls filling its container's height: none closer than `inset` to the top or
// the bottom, all on one centre line, the container as low as the tallest allows.
LayoutDirectiveList rowWithin(const QList<LayoutSubject> &items, double inset);
