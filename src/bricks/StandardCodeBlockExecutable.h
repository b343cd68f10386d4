#pragma once

#include "BuildDirectivesCore.h"

#include <functional>

// The general executable behind code and style: a closure over the view, binding and assembly.
class StandardCodeBlockExecutable : public CodeBlockExecutable
{
public:
    using Closure = std::function<void(QWidget *, Binding *, Assembly *)>;
    explicit StandardCodeBlockExecutable(Closure closure)
        : closure(std::move(closure))
    { }
    void execute(QWidget *view, Binding *binding, Assembly *assembly) override
    {
        closure(view, binding, assembly);
    }

    const Closure closure;
};
