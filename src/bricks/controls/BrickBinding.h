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
// what keeps the two from echoing.
//
// A binding lives as long as its control, not as long as the binding object or its assembly:
// the listener that it leaves in the variable holds the control weakly and nothing of the
// binding, and does nothing once the control is gone. Unbinding silences both directions.
template<typename BrickT, typename T>
class BrickBinding
    : public Binding
    , public Unbindable
{
public:
    using Writer = std::function<void(const T &)>;
    using Presenter = std::function<void(BrickT *, const T &)>;

    BrickBinding(BrickT *brick, std::shared_ptr<ReadWriteVariableType<T>> variable)
        : brick(brick)
        , variable(std::move(variable))
    { }

    Binding *activate() override
    {
        if (variable) {
            variable->addHotListener(
                [control = brick, show = presenter(), bound = m_bound](const T &value) {
                    if (!*bound || !control)
                        return;
                    const QSignalBlocker blocker(control.data());
                    show(control.data(), value);
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
        *m_bound = false;
        if (brick)
            install(brick, nullptr);
    }

    QPointer<BrickT> brick;
    std::shared_ptr<ReadWriteVariableType<T>> variable;

protected:
    // How the control shows a value; what it captures must not be the binding.
    virtual Presenter presenter() const = 0;
    virtual void install(BrickT *brick, Writer write) = 0;

private:
    std::shared_ptr<bool> m_bound = std::make_shared<bool>(true);
};

// A binding that only shows a read-only variable, living as long as its view.
template<typename ViewT, typename T>
class ReadOnlyBinding : public Binding
{
public:
    using Presenter = std::function<void(ViewT *, const T &)>;

    ReadOnlyBinding(ViewT *view, AnyReadOnlyVariable<T> variable)
        : view(view)
        , variable(std::move(variable))
    { }

    Binding *activate() override
    {
        variable.addHotListener([shown = view, show = presenter()](const T &value) {
            if (shown)
                show(shown.data(), value);
        });
        return this;
    }

    QPointer<ViewT> view;
    AnyReadOnlyVariable<T> variable;

protected:
    virtual Presenter presenter() const = 0;
};
