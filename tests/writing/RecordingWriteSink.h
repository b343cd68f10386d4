#pragma once

#include "writing/PendingWriteSink.h"

#include <QList>

// Keeps what would be written, in order, and installs itself for its lifetime.
class RecordingWriteSink : public PendingWriteSink
{
public:
    RecordingWriteSink() { PendingWriteSink::install(this); }
    ~RecordingWriteSink() override { PendingWriteSink::install(nullptr); }

    void addPendingWrite(PendingWrite write) override { writes.append(std::move(write)); }
    void clearErrors() override { ++clearCount; }
    void flushImmediately() override { flushedCount = writes.size(); }

    QList<PendingWrite> writes;
    int clearCount = 0;
    // How many writes had arrived at the last flush.
    qsizetype flushedCount = -1;
};
