#include "ClipboardWriter.h"

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

void ClipboardWriter::install(ClipboardWriter *writer)
{
    s_writer.store(writer);
}
