#include "PendingWriteSink.h"

#include "DirectPendingWriteSink.h"

#include <atomic>

namespace {

std::atomic<PendingWriteSink *> installedSink = nullptr;

} // namespace

PendingWriteSink &PendingWriteSink::shared()
{
    if (PendingWriteSink *sink = installedSink.load())
        return *sink;
    static DirectPendingWriteSink direct;
    return direct;
}

void PendingWriteSink::install(PendingWriteSink *sink)
{
    installedSink.store(sink);
}
