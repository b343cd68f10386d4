#pragma once

#include "Appcast.h"

#include <QDialog>

class QPushButton;
class QTextBrowser;

// Offers a newer release: what it is, its release notes, and the user's choice of getting it now,
// later, or never for this version. Not modal; deletes itself when closed.
class UpdateOfferDialog : public QDialog
{
    Q_OBJECT

public:
    enum class Choice { download, later, skip };

    UpdateOfferDialog(const QString &productName, const QString &currentVersion, AppcastItem item,
                      QWidget *parent = nullptr);

    const AppcastItem &item() const { return m_item; }
    QString headline() const;
    QString releaseNotesText() const; // as shown, without markup

signals:
    void chosen(UpdateOfferDialog::Choice choice);

private:
    void choose(Choice choice);

    AppcastItem m_item;
    QString m_headline;
    QTextBrowser *m_notes = nullptr;
};
