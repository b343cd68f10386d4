#include "MapAnnotationSink.h"

#include <atomic>

namespace {
std::atomic<MapAnnotationSink *> s_sink = nullptr;
}

MapAnnotationSink *MapAnnotationSink::installed()
{
    return s_sink.load();
}

void MapAnnotationSink::install(MapAnnotationSink *sink)
{
    s_sink.store(sink);
}
