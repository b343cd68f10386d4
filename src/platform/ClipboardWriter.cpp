#include "ClipboardWriter.h"

#include "commons/Log.h"

#include <atomic>

namespace {

std::atomic<ClipboardWriter *> installedWriter = nullptr;

} // namespace

void ClipboardWriter::setText(const QString &text)
{
    if (ClipboardWriter *writer = installedWriter.load())
        writer->writeText(text);
    else
        Log::line(QStringLiteral("Clipboard: ") + text);
}

void ClipboardWriter::install(ClipboardWriter *writer)
{
    installedWriter.store(writer);
}
