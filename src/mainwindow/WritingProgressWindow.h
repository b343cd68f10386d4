#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;

// What the user sees while the quit waits for the writes: "Writing N of M…" and a bar, brought
// up to date ten times a second from the write engine. It cannot be closed: the quit goes on
// once the files are written.
class WritingProgressWindow : public QDialog
{
    Q_OBJECT

public:
    explicit WritingProgressWindow(QWidget *parent = nullptr);

    void refresh();
    QString text() const;

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QLabel *m_label;
    QProgressBar *m_bar;
};
