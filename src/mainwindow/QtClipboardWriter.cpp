#include "QtClipboardWriter.h"

#include <QClipboard>
#include <QGuiApplication>

void QtClipboardWriter::writeText(const QString &text)
{
    QGuiApplication::clipboard()->setText(text, QClipboard::Clipboard);
}
