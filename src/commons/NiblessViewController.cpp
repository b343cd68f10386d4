#include "NiblessViewController.h"

#include <QEvent>

NiblessViewController::NiblessViewController(BuildFunc buildFunc, DelayedBuild delayedBuild)
    : m_buildFunc(std::move(buildFunc))
    , m_delayedBuild(delayedBuild == DelayedBuild::Yes)
{ }

NiblessViewController::NiblessViewController(DelayedBuild delayedBuild)
    : NiblessViewController(BuildFunc(), delayedBuild)
{ }

NiblessViewController::~NiblessViewController()
{
    delete m_view.data();
}

QWidget *NiblessViewController::view() const
{
    if (!m_built && !m_building && !m_delayedBuild)
        qFatal("NiblessViewController: %s was asked for its view before its build; make it with "
               "make()",
               metaObject()->className());
    return m_view;
}

QWidget *NiblessViewController::buildIfNeeded()
{
    if (m_built)
        return m_view;
    m_building = true;
    QWidget *view = build();
    m_building = false;
    if (!view)
        qFatal("NiblessViewController: the build of %s made no view", metaObject()->className());
    m_view = view;
    m_built = true;
    view->installEventFilter(this);
    return view;
}

QWidget *NiblessViewController::build()
{
    if (!m_buildFunc)
        qFatal("NiblessViewController: %s has neither a build function nor its own build()",
               metaObject()->className());
    return m_buildFunc(*this);
}

bool NiblessViewController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_view) {
        if (event->type() == QEvent::Show)
            viewDidAppear();
        else if (event->type() == QEvent::Hide)
            viewDidDisappear();
    }
    return QObject::eventFilter(watched, event);
}
