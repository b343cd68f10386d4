#include "LayoutConstraintMaker.h"

LayoutConstraintMakerWithRelation LayoutConstraintMaker::to(const LayoutItem &relation)
{
    return LayoutConstraintMakerWithRelation(relation, *this);
}

LayoutConstraintMakerWithRelation LayoutConstraintMaker::toSuperview()
{
    return to(subject->parentWidget());
}

LayoutConstraintMaker &LayoutConstraintMaker::size(LayoutAttribute attribute, double value,
                                                   LayoutRelation relation, float priority)
{
    LayoutConstraint c = LayoutConstraint::make(subject, attribute, relation, {},
                                                LayoutAttribute::notAnAttribute, 1, value);
    c.priority = priority;
    constraints.append(c);
    return *this;
}

LayoutConstraintMaker &LayoutConstraintMaker::width(double value, LayoutRelation relation,
                                                    float priority)
{
    return size(LayoutAttribute::width, value, relation, priority);
}

LayoutConstraintMaker &LayoutConstraintMaker::height(double value, LayoutRelation relation,
                                                     float priority)
{
    return size(LayoutAttribute::height, value, relation, priority);
}

LayoutConstraintMakerWithRelation &LayoutConstraintMakerWithRelation::pin(
    LayoutAttribute attribute, LayoutAttribute relationAttribute, double constant)
{
    return place(attribute, LayoutRelation::equal, relationAttribute, constant);
}

LayoutConstraintMakerWithRelation &LayoutConstraintMakerWithRelation::place(
    LayoutAttribute attribute, LayoutRelation relatedBy, LayoutAttribute relationAttribute,
    double constant, float priority)
{
    LayoutConstraint c = LayoutConstraint::make(container.subject, attribute, relatedBy, relation,
                                                relationAttribute, 1, constant);
    c.priority = priority;
    container.constraints.append(c);
    return *this;
}
