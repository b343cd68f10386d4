#pragma once

#include <QString>
#include <QStringList>

// A modal message with buttons. The application installs a QMessageBox presenter; tests install
// one that records the words and answers a chosen button.
struct Alert
{
    QString title;
    QString text;
    QStringList buttons; // first is the default
    QString details; // optional longer text
};

class AlertPresenter
{
public:
    virtual ~AlertPresenter() = default;
    // Returns the index of the chosen button.
    virtual int present(const Alert &alert) = 0;

    // The installed presenter; without one, alerts are written to the log and answer 0.
    static int show(const Alert &alert);
    static void install(AlertPresenter *presenter);
};
