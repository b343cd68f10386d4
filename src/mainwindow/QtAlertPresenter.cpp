#include "QtAlertPresenter.h"

#include <QMessageBox>
#include <QPushButton>

int QtAlertPresenter::present(const Alert &alert)
{
    QMessageBox box(m_parent);
    box.setIcon(QMessageBox::Warning);
    box.setText(alert.title);
    box.setInformativeText(alert.text);
    if (!alert.details.isEmpty())
        box.setDetailedText(alert.details);
    QList<QAbstractButton *> buttons;
    const QStringList labels
        = alert.buttons.isEmpty() ? QStringList {QStringLiteral("OK")} : alert.buttons;
    for (int i = 0; i < labels.size(); ++i) {
        QPushButton *button = box.addButton(
            labels.at(i), i == 0 ? QMessageBox::AcceptRole : QMessageBox::RejectRole);
        buttons.append(button);
        if (i == 0)
            box.setDefaultButton(button);
    }
    box.exec();
    const int index = int(buttons.indexOf(box.clickedButton()));
    return index < 0 ? 0 : index;
}
