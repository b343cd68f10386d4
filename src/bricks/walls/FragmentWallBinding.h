#pragma once

#include "FragmentStackView.h"
#include "FragmentWall.h"
#include "bricks/BuildDirectivesCore.h"
#include "bricks/Variables.h"

#include <QPointer>

#include <functional>

// Shows or hides a fragment by a variable; outside a fragment stack the variable is ignored.
template<typename T>
class FragmentWallBinding : public Binding
{
public:
    FragmentWallBinding(FragmentWall *fragmentWall, AnyReadOnlyVariable<T> variable,
                        std::function<bool(const T &)> shouldHideClosure)
        : fragmentWall(fragmentWall)
        , variable(std::move(variable))
        , shouldHideClosure(std::move(shouldHideClosure))
    { }

    Binding *activate() override
    {
        QPointer<FragmentWall> fragment = fragmentWall;
        const auto shouldHide = shouldHideClosure;
        variable.addHotListener([fragment, shouldHide](const T &value) {
            if (!fragment)
                return;
            if (auto *stack = qobject_cast<FragmentStackView *>(fragment->parentWidget()))
                stack->setVisibilityPriority(shouldHide(value) ? FragmentStackView::notVisible
                                                               : FragmentStackView::mustHold,
                                             fragment);
        });
        return this;
    }

    QPointer<FragmentWall> fragmentWall;
    AnyReadOnlyVariable<T> variable;
    std::function<bool(const T &)> shouldHideClosure;
};
