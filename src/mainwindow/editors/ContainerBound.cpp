#include "ContainerBound.h"

using D = SmartLayoutDirectionsType;

ContainerBound::ContainerBound(LayoutSubject subject, SmartLayoutDirectionsType side, double inset,
                               LayoutRelation relation, float priority)
    : subject(subject.directive)
    , side(side)
    , inset(inset)
    , relation(relation)
    , priority(priority)
{ }

ContainerBound ContainerBound::atLeast(LayoutSubject subject, SmartLayoutDirectionsType side,
                                       double inset)
{
    return ContainerBound(std::move(subject), side, inset, LayoutRelation::greaterThanOrEqual);
}

QList<LayoutConstraint> ContainerBound::createConstraints(QWidget *containerView) const
{
    QList<LayoutConstraint> list = subject->createConstraints(containerView);
    // On the far sides inward is the negative direction, so the inset and the relation turn.
    const bool farSide = side == D::right || side == D::bottom;
    LayoutRelation outward = relation;
    if (farSide && relation != LayoutRelation::equal)
        outward = relation == LayoutRelation::greaterThanOrEqual
            ? LayoutRelation::lessThanOrEqual
            : LayoutRelation::greaterThanOrEqual;
    const LayoutAttribute attribute = asLayoutAttribute(side);
    LayoutConstraint c
        = LayoutConstraint::make(subject->subjectItem(containerView), attribute, outward,
                                 containerView, attribute, 1, farSide ? -inset : inset);
    c.priority = priority;
    list.append(c);
    return list;
}

LayoutItem ContainerBound::subjectItem(QWidget *containerView) const
{
    return subject->subjectItem(containerView);
}

LayoutDirectiveList rowWithin(const QList<LayoutSubject> &items, double inset)
{
    LayoutDirectiveList list;
    for (const LayoutSubject &item : items) {
        list.append(ContainerBound::atLeast(item, D::top, inset));
        list.append(ContainerBound::atLeast(item, D::bottom, inset));
    }
    list.append(LayoutRecipeNamespace::sameCenterY(items));
    // Where the container is taller than its row needs, the row keeps to the middle.
    if (!items.isEmpty())
        list.append(ContainerBound(items.first(), D::centerY, 0, LayoutRelation::equal,
                                   LayoutPriority::defaultLow));
    return list;
}
