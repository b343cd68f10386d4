#pragma once

#include "BuildDirectivesCore.h"
#include "layout/ConstraintLayout.h"
#include "layout/LayoutConstraintMaker.h"

#include <functional>

// Constraints about the view itself, added to the view while it is built.
class ApplyToSelfAutoLayoutDecorator : public Decorator
{
public:
    explicit ApplyToSelfAutoLayoutDecorator(
        std::function<void(LayoutConstraintMaker &)> autoLayoutClosure)
        : autoLayoutClosure(std::move(autoLayoutClosure))
    { }

    void apply(QWidget *view, const std::shared_ptr<Binding> &, Assembly *,
               CodeExecutionPhase codePhase, QList<CodeBlock> &) override
    {
        if (codePhase != CodeExecutionPhase::buildAndLayout || !view)
            return;
        LayoutConstraintMaker maker(view);
        autoLayoutClosure(maker);
        ConstraintLayout::installConstraints(constraintHolder(view), maker.constraints);
    }

    const std::function<void(LayoutConstraintMaker &)> autoLayoutClosure;

protected:
    virtual QWidget *constraintHolder(QWidget *view) const { return view; }
};
