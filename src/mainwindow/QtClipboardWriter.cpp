#include "QtClipboardWriter.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

bool QtClipboardWriter::write(const ClipboardContent &content)
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (!clipboard)
        return false;
    auto *data = new QMimeData;
    data->setText(content.plainText);
    if (content.html)
        data->setHtml(*content.html);
    // The clipboard takes ownership of the data.
    clipboard->setMimeData(data);
    return true;
}
