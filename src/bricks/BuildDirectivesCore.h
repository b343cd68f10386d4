#pragma once

// The small interfaces shared by build directives, bindings and code blocks.

#include "BricksLogging.h"

#include <QList>
#include <QPointer>
#include <QWidget>

#include <memory>

class Assembly;

enum class CodeExecutionPhase { buildAndLayout = 0, prepare = 1, activate = 2, finalize = 3 };

// Connects one view to its variables; activate gives the binding itself.
class Binding
{
public:
    virtual ~Binding() = default;
    virtual Binding *activate() = 0;
};

// A binding that can be disconnected again.
class Unbindable
{
public:
    virtual ~Unbindable() = default;
    virtual void unbind() = 0;
};

// For directives that bind nothing.
class NullBinding : public Binding
{
public:
    Binding *activate() override { return this; }
};

class CodeBlockExecutable
{
public:
    virtual ~CodeBlockExecutable() = default;
    virtual void execute(QWidget *view, Binding *binding, Assembly *assembly) = 0;
};

struct CodeBlock
{
    CodeExecutionPhase phase;
    std::shared_ptr<CodeBlockExecutable> executable;
    QPointer<QWidget> view;
    std::shared_ptr<Binding> binding;
};

// Something done to a built view. Decorators have identity: directives share them by pointer.
class Decorator
{
public:
    virtual ~Decorator() = default;
    virtual void apply(QWidget *view, const std::shared_ptr<Binding> &binding, Assembly *assembly,
                       CodeExecutionPhase codePhase, QList<CodeBlock> &codeBlocks)
        = 0;
};
