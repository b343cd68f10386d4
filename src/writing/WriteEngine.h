#pragma once

#include "ConsolidatedWrite.h"
#include "PendingWrite.h"
#include "PendingWriteSink.h"
#include "WriteEngineOperationType.h"
#include "WriteEngineViewModel.h"
#include "bricks/Variables.h"
#include "platform/OperationQueue.h"
#include "platform/SerialQueue.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>

class QTimer;
class WriteOperation;
class WriteWorker;

enum class WriteMode : int { immediate = 0, batched = 1 };

// The one place where writes to files are queued. Edits arrive per file; the engine merges them
// per file in the order the files first appeared, holds back files that are being re-read, and
// runs the rest as one background batch at a time. When a batch ends it tells its listeners and
// reports the batch's failures in one alert. Created on first use and never destroyed.
class WriteEngine
    : public PendingWriteSink
    , public std::enable_shared_from_this<WriteEngine>
{
public:
    struct FailedPath
    {
        QString path;
        QString error;
        bool operator==(const FailedPath &) const = default;
    };

    static WriteEngine &shared();

    WriteEngine(const WriteEngine &) = delete;
    WriteEngine &operator=(const WriteEngine &) = delete;

    // Returns at once; the write waits for the debounce delay or for a flush.
    void enqueueWrite(PendingWrite write);
    void addPendingWrite(PendingWrite write) override { enqueueWrite(std::move(write)); }
    // Callable on any thread: drops the debounce and starts what is pending. From another thread
    // it waits for the main thread to stop the timer, so the main thread must not wait for it.
    void flushImmediately() override;
    void flushPendingWrites();

    void recordFailure(const QString &path, const QString &error);
    void clearErrors() override;

    WriteEngineViewModel createViewModel();
    bool hasPendingWrites();
    // Blocks until every write enqueued so far has run. On the main thread it keeps the event
    // loop turning, since the batches' results and ends are delivered there.
    void waitForCompletion();
    // The queue of the batches, for a caller that waits for them on another thread.
    OperationQueue &operationQueue() { return m_operationQueue; }

    // Called by a WriteOperation, on the main thread, after all of its per-file results.
    void operationFinished(const std::shared_ptr<WriteOperation> &operation);

    // The long-running write worker that the batches share: started on the first write, kept
    // while writes come and let go once none has come for the idle delay. Any thread.
    std::shared_ptr<WriteWorker> writeWorker();
    // Whether a worker is kept now.
    bool hasWriteWorker();
    void setWriteWorkerIdleDelay(std::chrono::milliseconds delay);

    // Set to true at the end of every batch, failures or not; listeners run on the main thread.
    StraightVariable<bool> &writeCompletePublisher() { return m_writeCompletePublisher; }

    // The three alerts of a batch with failures. An empty list shows nothing.
    static void showErrorSummary(const QList<FailedPath> &failures);
    static void showDetailedErrorList(const QList<FailedPath> &failures);
    static void copyErrorsToClipboard(const QList<FailedPath> &failures);
    static constexpr int maximumListedFailures = 20;

private:
    WriteEngine();

    static QString detailedErrorListText(const QList<FailedPath> &failures);
    static QString clipboardText(const QList<FailedPath> &failures);

    void enqueueOnSerialQueue(PendingWrite write);
    void scheduleFlush();
    void stopFlushTimer();
    void consolidatePendingWritesIntoPool();
    void startNextOperationIfNeeded();
    void scheduleRetry();
    void scheduleWorkerRelease();

    OperationQueue m_operationQueue;
    SerialQueue m_serialQueue;

    // Owned by m_serialQueue: everything from here to m_failedPaths.
    QHash<QString, QList<PendingWrite>> m_pendingWrites;
    QStringList m_pendingWriteOrder;
    QHash<QString, ConsolidatedWrite> m_consolidatedWritePool;
    QStringList m_consolidatedWriteOrder;
    bool m_isOperationRunning = false;
    std::weak_ptr<WriteEngineOperationType> m_currentOperation;
    const WriteMode m_writeMode = WriteMode::immediate;
    const int m_debounceDelayMs = 300;
    QList<FailedPath> m_failedPaths;
    std::shared_ptr<WriteWorker> m_writeWorker;
    std::chrono::milliseconds m_writeWorkerIdleDelay = std::chrono::minutes(1);

    // Main thread only.
    QTimer *m_flushTimer = nullptr;
    QTimer *m_workerReleaseTimer = nullptr;
    StraightVariable<bool> m_writeCompletePublisher {false};
};
