#include "ClipboardWriter.h"

#include "commons/Log.h"

#include <atomic>

namespace {
std::atomic<ClipboardWriter *> s_writer = nullptr;
}

bool ClipboardWriter::put(const ClipboardContent &content)
{
    if (ClipboardWriter *writer = s_writer.load())
        return writer->write(content);
    return false;
}

void ClipboardWriter::setText(const QString &text)
{
    if (!put({text, std::nullopt}))
        Log::line(text);
}

void ClipboardWriter::install(ClipboardWriter *writer)
{
    s_writer.store(writer);
}
