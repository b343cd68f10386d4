#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>

enum class DelayedBuild { No, Yes };

// The base of the window's controllers: each makes its view in code, in build(). A controller
// made with DelayedBuild::No builds at once; one made with DelayedBuild::Yes has no view until
// its owner calls buildIfNeeded(), so a pane that may never be shown costs nothing. Make
// controllers with make(): a constructor cannot reach a subclass's build().
//
// The controller owns its view and deletes it when it goes, unless the view went first with
// its parent. Main thread only.
class NiblessViewController : public QObject
{
    Q_OBJECT

public:
    using BuildFunc = std::function<QWidget *(NiblessViewController &controller)>;

    template<typename Controller = NiblessViewController, typename... Args>
    static std::unique_ptr<Controller> make(Args &&...args)
    {
        auto controller = std::make_unique<Controller>(std::forward<Args>(args)...);
        if (!controller->delayedBuild())
            controller->buildIfNeeded();
        return controller;
    }

    // Without a build function, a subclass overrides build().
    explicit NiblessViewController(BuildFunc buildFunc = {},
                                   DelayedBuild delayedBuild = DelayedBuild::No);
    explicit NiblessViewController(DelayedBuild delayedBuild);
    ~NiblessViewController() override;

    bool delayedBuild() const { return m_delayedBuild; }
    bool isViewLoaded() const { return m_built; }
    // Null until built, and after the view's parent has deleted it.
    QWidget *view() const;
    // Builds the view the first time; later calls return it.
    QWidget *buildIfNeeded();

protected:
    // Makes the view; the default runs the build function.
    virtual QWidget *build();
    // Each time the view is shown, and each time it is hidden again.
    virtual void viewDidAppear() { }
    virtual void viewDidDisappear() { }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    BuildFunc m_buildFunc;
    bool m_delayedBuild = false;
    bool m_built = false;
    bool m_building = false;
    QPointer<QWidget> m_view;
};
