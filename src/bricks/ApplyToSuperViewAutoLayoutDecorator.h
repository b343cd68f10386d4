#pragma once

#include "ApplyToSelfAutoLayoutDecorator.h"

// The same, with the constraints added to the view's parent, which is in place when a child is
// built.
class ApplyToSuperViewAutoLayoutDecorator : public ApplyToSelfAutoLayoutDecorator
{
public:
    using ApplyToSelfAutoLayoutDecorator::ApplyToSelfAutoLayoutDecorator;

protected:
    QWidget *constraintHolder(QWidget *view) const override
    {
        QWidget *superview = view->parentWidget();
        if (!superview)
            qFatal("ApplyToSuperViewAutoLayoutDecorator: the view has no superview");
        return superview;
    }
};
