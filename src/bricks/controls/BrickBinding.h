#pragma once

#include "bricks/BuildDirectivesCore.h"
#include "bricks/Variables.h"
#include "bricks/walls/BricksFactory.h"

#include <QPointer>
#include <QSignalBlocker>

#include <functional>
#include <memory>

// The interface of a brick: a control that offers its change as a plain callback.
class BrickType
{
public:
    virtual ~BrickType() = default;
    virtual void setBrickSize(BrickSize size);

protected:
    virtual QWidget *brickWidget() = 0;
};

// The pattern every two-way binding follows. Activation first subscribes to the variable, so
// that the control shows the current value at once, then installs the control's callback that
// writes the variable. A value set on the control by the listener sends no action, which is
// what keeps the two from echoing. Unbinding silences both directions.
template<typename BrickT, typename T>
class BrickBinding
    : public Binding
    , public Unbindable
{
public:
    using Writer = std::function<void(const T &)>;

    BrickBinding(BrickT *brick, std::shared_ptr<ReadWriteVariableType<T>> variable)
        : brick(brick)
        , variable(std::move(variable))
    { }
    ~BrickBinding() override { *m_alive = false; }

    Binding *activate() override
    {
        if (variable) {
            const std::shared_ptr<bool> alive = m_alive;
            variable->addHotListener([this, alive](const T &value) {
                if (!*alive || !brick)
                    return;
                const QSignalBlocker blocker(brick.data());
                show(brick, value);
            });
        }
        if (brick) {
            const auto target = variable;
            install(brick, [target](const T &value) {
                if (target)
                    target->setValue(value);
            });
        }
        return this;
    }

    void unbind() override
    {
        *m_alive = false;
        if (brick)
            install(brick, nullptr);
    }

    QPointer<BrickT> brick;
    std::shared_ptr<ReadWriteVariableType<T>> variable;

protected:
    virtual void show(BrickT *brick, const T &value) = 0;
    virtual void install(BrickT *brick, Writer write) = 0;

private:
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

// A binding that only shows a read-only variable.
template<typename ViewT, typename T>
class ReadOnlyBinding : public Binding
{
public:
    ReadOnlyBinding(ViewT *view, AnyReadOnlyVariable<T> variable)
        : view(view)
        , variable(std::move(variable))
    { }
    ~ReadOnlyBinding() override { *m_alive = false; }

    Binding *activate() override
    {
        const std::shared_ptr<bool> alive = m_alive;
        variable.addHotListener([this, alive](const T &value) {
            if (*alive && view)
                show(view, value);
        });
        return this;
    }

    QPointer<ViewT> view;
    AnyReadOnlyVariable<T> variable;

protected:
    virtual void show(ViewT *view, const T &value) = 0;

private:
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};
