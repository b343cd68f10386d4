#pragma once

#include "platform/AlertPresenter.h"

class QWidget;

// Alerts as message boxes over the main window.
class QtAlertPresenter : public AlertPresenter
{
public:
    explicit QtAlertPresenter(QWidget *parent = nullptr)
        : m_parent(parent)
    { }
    void setParent(QWidget *parent) { m_parent = parent; }
    int present(const Alert &alert) override;

private:
    QWidget *m_parent;
};
