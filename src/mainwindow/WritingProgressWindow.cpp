#include "WritingProgressWindow.h"

#include "writing/WriteEngine.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <QVBoxLayout>

WritingProgressWindow::WritingProgressWindow(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
    , m_label(new QLabel(this))
    , m_bar(new QProgressBar(this))
{
    setObjectName(QStringLiteral("writingProgressWindow"));
    setWindowTitle(tr("Finishing Writes"));
    setModal(false);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 16, 20, 16);
    layout->setSpacing(10);
    auto *note = new QLabel(tr("Palomet quits once the changes are in the files."), this);
    note->setWordWrap(true);
    layout->addWidget(m_label);
    layout->addWidget(m_bar);
    layout->addWidget(note);
    m_bar->setTextVisible(false);
    setMinimumWidth(340);
    auto *timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &WritingProgressWindow::refresh);
    timer->start(100);
    refresh();
}

void WritingProgressWindow::refresh()
{
    const WriteEngineViewModel model = WriteEngine::shared().createViewModel();
    if (model.isActive && model.totalFileCount > 0) {
        m_label->setText(
            tr("Writing %1 of %2…").arg(model.currentFileIndex + 1).arg(model.totalFileCount));
        m_bar->setRange(0, model.totalFileCount);
        m_bar->setValue(model.currentFileIndex);
    } else {
        m_label->setText(tr("Writing…"));
        m_bar->setRange(0, 0);
    }
}

QString WritingProgressWindow::text() const
{
    return m_label->text();
}

void WritingProgressWindow::closeEvent(QCloseEvent *event)
{
    event->ignore();
}

void WritingProgressWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        return;
    QDialog::keyPressEvent(event);
}
