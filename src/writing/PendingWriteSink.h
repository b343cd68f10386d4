#pragma once

#include "PendingWrite.h"

// Where edits go to be written: the write engine, or a stand-in. All calls come from the main
// thread; what happens to a write afterwards is the sink's business, but its completion
// handler runs on the main thread after the file has been read again.
class PendingWriteSink
{
public:
    virtual ~PendingWriteSink() = default;

    virtual void addPendingWrite(PendingWrite write) = 0;
    // Forgets the failures of earlier writes that have not been shown yet.
    virtual void clearErrors() = 0;
    // Starts the writes added so far without waiting for more.
    virtual void flushImmediately() = 0;

    // The installed sink, or the direct one when none is installed.
    static PendingWriteSink &shared();
    // Not owned; nullptr goes back to the direct sink.
    static void install(PendingWriteSink *sink);
};
