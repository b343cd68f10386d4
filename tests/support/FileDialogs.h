#pragma once

#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QLineEdit>
#include <QTimer>

#include <functional>

namespace TestSupport {

// Answers the next file dialog once it is on screen: types path into its name field, as a user
// does, and accepts. Polls rather than firing once, because a loaded machine can take a second
// to open the dialog. seen receives the dialog first (for what it proposes).
inline void answerFileDialog(QObject *context, const QString &path,
                             std::function<void(QFileDialog *)> seen = {})
{
    auto *poll = new QTimer(context);
    auto *waited = new int(0);
    poll->setInterval(50);
    QObject::connect(poll, &QTimer::timeout, poll, [poll, waited, path, seen] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        auto *name
            = dialog ? dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")) : nullptr;
        if (!name || !dialog->isVisible()) {
            if (++*waited < 400)
                return;
        } else {
            if (seen)
                seen(dialog);
            name->setText(path);
            static_cast<QDialog *>(dialog)->accept();
        }
        delete waited;
        poll->deleteLater();
    });
    poll->start();
}

} // namespace TestSupport
