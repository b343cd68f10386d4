#pragma once

#include "LayoutConstraint.h"

#include <QList>

class LayoutConstraintMakerWithRelation;

// Collects constraints about one subject view, for the layout decorators.
class LayoutConstraintMaker
{
public:
    explicit LayoutConstraintMaker(QWidget *subject)
        : subject(subject)
    { }

    LayoutConstraintMakerWithRelation to(const LayoutItem &relation);
    LayoutConstraintMakerWithRelation toSuperview();
    LayoutConstraintMaker &width(double value, LayoutRelation relation = LayoutRelation::equal,
                                 float priority = LayoutPriority::required);
    LayoutConstraintMaker &height(double value, LayoutRelation relation = LayoutRelation::equal,
                                  float priority = LayoutPriority::required);

    QWidget *const subject;
    QList<LayoutConstraint> constraints;

private:
    LayoutConstraintMaker &size(LayoutAttribute attribute, double value, LayoutRelation relation,
                                float priority);
};

class LayoutConstraintMakerWithRelation
{
public:
    LayoutConstraintMakerWithRelation(LayoutItem relation, LayoutConstraintMaker &container)
        : relation(relation)
        , container(container)
    { }

    // subject.attribute == relation.relationAttribute + constant
    LayoutConstraintMakerWithRelation &pin(LayoutAttribute attribute,
                                           LayoutAttribute relationAttribute, double constant = 0);
    // The same with a free choice of relation and priority.
    LayoutConstraintMakerWithRelation &place(LayoutAttribute attribute, LayoutRelation relatedBy,
                                             LayoutAttribute relationAttribute, double constant = 0,
                                             float priority = LayoutPriority::required);

    const LayoutItem relation;
    LayoutConstraintMaker &container;
};
