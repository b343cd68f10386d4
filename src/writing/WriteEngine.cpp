#include "WriteEngine.h"

#include "FileOperationLock.h"
#include "UndoJournal.h"
#include "WriteOperation.h"
#include "WriteWorker.h"
#include "platform/AlertPresenter.h"
#include "platform/ClipboardWriter.h"
#include "platform/MainQueue.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QSet>
#include <QThread>
#include <QTimer>

#include <chrono>
#include <thread>

namespace {

constexpr int blockedRetryDelayMs = 100;
constexpr int completionPollMs = 50;

QString lastPathComponent(const QString &path)
{
    return QFileInfo(path).fileName();
}

} // namespace

WriteEngine &WriteEngine::shared()
{
    // Never destroyed: batches, timers and retries may still refer to it while the program ends.
    static std::shared_ptr<WriteEngine> *instance
        = new std::shared_ptr<WriteEngine>(new WriteEngine);
    return **instance;
}

WriteEngine::WriteEngine()
    : m_operationQueue(QStringLiteral("writeEngineQueue"), 1, QualityOfService::UserInitiated)
    , m_serialQueue(QStringLiteral("com.halvern.writeEngine.serial"))
{ }

void WriteEngine::enqueueWrite(PendingWrite write)
{
    m_serialQueue.async(
        [this, write = std::move(write)]() mutable { enqueueOnSerialQueue(std::move(write)); });
}

void WriteEngine::enqueueOnSerialQueue(PendingWrite write)
{
    const QString path = write.filePath;
    // The file's merged write is already on its way to a batch: join it rather than start a
    // second round for the same file.
    if (auto pooled = m_consolidatedWritePool.find(path); pooled != m_consolidatedWritePool.end()) {
        pooled->merge(write);
        return;
    }
    if (!m_pendingWrites.contains(path))
        m_pendingWriteOrder.append(path);
    m_pendingWrites[path].append(std::move(write));
    if (m_writeMode == WriteMode::immediate)
        scheduleFlush();
}

void WriteEngine::scheduleFlush()
{
    std::weak_ptr<WriteEngine> weakEngine = weak_from_this();
    MainQueue::post([weakEngine] {
        std::shared_ptr<WriteEngine> engine = weakEngine.lock();
        if (!engine)
            return;
        if (!engine->m_flushTimer) {
            engine->m_flushTimer = new QTimer;
            engine->m_flushTimer->setSingleShot(true);
            // A coarse timer may fire up to 5% early, inside the quiet time an edit is owed.
            engine->m_flushTimer->setTimerType(Qt::PreciseTimer);
            QObject::connect(engine->m_flushTimer, &QTimer::timeout, engine->m_flushTimer,
                             [weakEngine] {
                                 if (std::shared_ptr<WriteEngine> live = weakEngine.lock())
                                     live->flushPendingWrites();
                             });
        }
        // A run of edits closer together than the delay ends in one flush, after the last.
        engine->m_flushTimer->start(engine->m_debounceDelayMs);
    });
}

void WriteEngine::stopFlushTimer()
{
    if (m_flushTimer)
        m_flushTimer->stop();
}

void WriteEngine::flushImmediately()
{
    if (MainQueue::isMainThread())
        stopFlushTimer();
    else if (QCoreApplication *application = QCoreApplication::instance())
        QMetaObject::invokeMethod(
            application, [this] { stopFlushTimer(); }, Qt::BlockingQueuedConnection);
    flushPendingWrites();
}

void WriteEngine::flushPendingWrites()
{
    std::weak_ptr<WriteEngine> weakEngine = weak_from_this();
    MainQueue::post([weakEngine] {
        if (std::shared_ptr<WriteEngine> engine = weakEngine.lock())
            engine->stopFlushTimer();
    });
    m_serialQueue.async([this] {
        if (!m_pendingWrites.isEmpty())
            consolidatePendingWritesIntoPool();
        startNextOperationIfNeeded();
    });
}

void WriteEngine::consolidatePendingWritesIntoPool()
{
    for (const QString &path : std::as_const(m_pendingWriteOrder)) {
        const auto pending = m_pendingWrites.constFind(path);
        if (pending == m_pendingWrites.cend() || pending->isEmpty())
            continue;
        if (auto pooled = m_consolidatedWritePool.find(path);
            pooled != m_consolidatedWritePool.end()) {
            for (const PendingWrite &write : *pending)
                pooled->merge(write);
            continue;
        }
        ConsolidatedWrite consolidated = ConsolidatedWrite::fromPendingWrite(pending->first());
        for (qsizetype i = 1; i < pending->size(); ++i)
            consolidated.merge(pending->at(i));
        m_consolidatedWritePool.insert(path, std::move(consolidated));
        m_consolidatedWriteOrder.append(path);
    }
    m_pendingWrites.clear();
    m_pendingWriteOrder.clear();
}

void WriteEngine::startNextOperationIfNeeded()
{
    if (m_isOperationRunning || m_consolidatedWritePool.isEmpty())
        return;

    QList<ConsolidatedWrite> taken;
    QStringList takenPaths;
    for (const QString &path : std::as_const(m_consolidatedWriteOrder)) {
        auto pooled = m_consolidatedWritePool.find(path);
        if (pooled == m_consolidatedWritePool.end())
            continue;
        taken.append(std::move(*pooled));
        takenPaths.append(path);
        m_consolidatedWritePool.erase(pooled);
    }
    m_consolidatedWriteOrder.clear();

    const QStringList beingRead
        = FileOperationLock::shared().anyMetadataRetrievalActive(takenPaths);
    const QSet<QString> blockedPaths(beingRead.cbegin(), beingRead.cend());
    QList<ConsolidatedWrite> ready;
    for (ConsolidatedWrite &write : taken) {
        if (blockedPaths.contains(write.filePath)) {
            m_consolidatedWriteOrder.append(write.filePath);
            m_consolidatedWritePool.insert(write.filePath, std::move(write));
        } else {
            ready.append(std::move(write));
        }
    }

    if (ready.isEmpty()) {
        scheduleRetry();
        return;
    }

    m_isOperationRunning = true;
    auto operation = std::make_shared<WriteOperation>(std::move(ready), weak_from_this());
    m_currentOperation = operation;
    m_operationQueue.addOperation(operation);
}

void WriteEngine::scheduleRetry()
{
    // Off the main thread, so that files held back by a re-read are taken up even while the
    // main thread waits for the engine.
    std::weak_ptr<WriteEngine> weakEngine = weak_from_this();
    std::thread([weakEngine] {
        std::this_thread::sleep_for(std::chrono::milliseconds(blockedRetryDelayMs));
        if (std::shared_ptr<WriteEngine> engine = weakEngine.lock())
            engine->m_serialQueue.async([engine] { engine->startNextOperationIfNeeded(); });
    }).detach();
}

void WriteEngine::recordFailure(const QString &path, const QString &error)
{
    m_serialQueue.async([this, path, error] { m_failedPaths.append({path, error}); });
}

void WriteEngine::clearErrors()
{
    m_serialQueue.async([this] { m_failedPaths.clear(); });
}

WriteEngineViewModel WriteEngine::createViewModel()
{
    return m_serialQueue.syncValue<WriteEngineViewModel>([this] {
        WriteEngineViewModel model;
        if (std::shared_ptr<WriteEngineOperationType> operation = m_currentOperation.lock()) {
            model.isActive = true;
            model.currentFileIndex = operation->currentFileIndex();
            model.totalFileCount = operation->totalFileCount();
            model.currentFilePath = operation->currentFilePath();
        }
        return model;
    });
}

bool WriteEngine::hasPendingWrites()
{
    return m_serialQueue.syncValue<bool>([this] {
        return !m_pendingWrites.isEmpty() || !m_consolidatedWritePool.isEmpty()
            || m_isOperationRunning;
    });
}

void WriteEngine::waitForCompletion()
{
    flushImmediately();
    const bool onMainThread = MainQueue::isMainThread();
    for (;;) {
        if (onMainThread) {
            // Each file's result and each batch's end come through the main queue: the wait
            // lets them run as they come, so re-reads follow the writes instead of queueing
            // behind the whole batch, and a progress window keeps painting.
            do {
                QDeadlineTimer pause(completionPollMs);
                do {
                    QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
                    QThread::msleep(1);
                } while (!pause.hasExpired());
            } while (m_operationQueue.operationCount() > 0);
        } else {
            m_operationQueue.waitUntilAllOperationsAreFinished();
            QThread::msleep(completionPollMs);
        }
        const bool busy = m_serialQueue.syncValue<bool>(
            [this] { return !m_consolidatedWritePool.isEmpty() || m_isOperationRunning; });
        if (!busy)
            return;
    }
}

std::shared_ptr<WriteWorker> WriteEngine::writeWorker()
{
    return m_serialQueue.syncValue<std::shared_ptr<WriteWorker>>([this] {
        if (!m_writeWorker)
            m_writeWorker = std::make_shared<WriteWorker>(WriteWorker::defaultHangTimeout,
                                                          UndoJournal::shared().isEnabled());
        return m_writeWorker;
    });
}

bool WriteEngine::hasWriteWorker()
{
    return m_serialQueue.syncValue<bool>([this] { return m_writeWorker != nullptr; });
}

void WriteEngine::setWriteWorkerIdleDelay(std::chrono::milliseconds delay)
{
    m_serialQueue.async([this, delay] { m_writeWorkerIdleDelay = delay; });
}

// On the main thread, after a batch: a worker that no batch has needed for the idle delay is
// let go, and exits once its input is closed.
void WriteEngine::scheduleWorkerRelease()
{
    const int delayMs
        = m_serialQueue.syncValue<int>([this] { return int(m_writeWorkerIdleDelay.count()); });
    if (!m_workerReleaseTimer) {
        m_workerReleaseTimer = new QTimer;
        m_workerReleaseTimer->setSingleShot(true);
        std::weak_ptr<WriteEngine> weakEngine = weak_from_this();
        QObject::connect(m_workerReleaseTimer, &QTimer::timeout, m_workerReleaseTimer,
                         [weakEngine] {
                             if (std::shared_ptr<WriteEngine> engine = weakEngine.lock())
                                 engine->m_serialQueue.async([engine] {
                                     if (!engine->m_isOperationRunning)
                                         engine->m_writeWorker.reset();
                                 });
                         });
    }
    m_workerReleaseTimer->start(delayMs);
}

void WriteEngine::operationFinished(const std::shared_ptr<WriteOperation> &operation)
{
    Q_UNUSED(operation);
    scheduleWorkerRelease();
    std::weak_ptr<WriteEngine> weakEngine = weak_from_this();
    MainQueue::post([weakEngine] {
        if (std::shared_ptr<WriteEngine> engine = weakEngine.lock())
            engine->m_writeCompletePublisher.setValue(true);
    });
    // A copy, so that a clearing before the alert shows doesn't empty it.
    const QList<FailedPath> failures
        = m_serialQueue.syncValue<QList<FailedPath>>([this] { return m_failedPaths; });
    if (!failures.isEmpty())
        MainQueue::post([failures] { showErrorSummary(failures); });
    m_serialQueue.async([this] {
        m_currentOperation.reset();
        m_isOperationRunning = false;
        startNextOperationIfNeeded();
    });
}

void WriteEngine::showErrorSummary(const QList<FailedPath> &failures)
{
    if (failures.isEmpty())
        return;
    Alert alert;
    alert.title = QStringLiteral("Some files could not be modified");
    if (failures.size() == 1) {
        const FailedPath &failure = failures.first();
        alert.text = lastPathComponent(failure.path) + QStringLiteral(": ") + failure.error;
        alert.buttons = {QStringLiteral("OK")};
        AlertPresenter::show(alert);
    } else {
        alert.text = QString::number(failures.size())
            + QStringLiteral(" files could not be modified. This may be due to permission issues "
                             "or locked files.");
        alert.buttons = {QStringLiteral("OK"), QStringLiteral("Show Details…")};
        if (AlertPresenter::show(alert) == 1)
            showDetailedErrorList(failures);
    }
    shared().clearErrors();
}

QString WriteEngine::detailedErrorListText(const QList<FailedPath> &failures)
{
    QString text;
    const qsizetype listed = std::min<qsizetype>(failures.size(), maximumListedFailures);
    for (qsizetype i = 0; i < listed; ++i) {
        const FailedPath &failure = failures.at(i);
        text += QString::number(i + 1) + QStringLiteral(". ") + lastPathComponent(failure.path)
            + QStringLiteral("\n   ") + failure.error + QStringLiteral("\n\n");
    }
    if (failures.size() > maximumListedFailures)
        text += QStringLiteral("… and ") + QString::number(failures.size() - maximumListedFailures)
            + QStringLiteral(" more files");
    return text;
}

void WriteEngine::showDetailedErrorList(const QList<FailedPath> &failures)
{
    Alert alert;
    alert.title = QStringLiteral("Failed Files");
    alert.text = detailedErrorListText(failures);
    alert.buttons = {QStringLiteral("OK"), QStringLiteral("Copy to Clipboard")};
    if (AlertPresenter::show(alert) == 1)
        copyErrorsToClipboard(failures);
}

QString WriteEngine::clipboardText(const QList<FailedPath> &failures)
{
    QString text = QStringLiteral("Failed to modify the following files:\n\n");
    for (const FailedPath &failure : failures)
        text += failure.path + QStringLiteral("\n  Error: ") + failure.error
            + QStringLiteral("\n\n");
    return text;
}

void WriteEngine::copyErrorsToClipboard(const QList<FailedPath> &failures)
{
    ClipboardWriter::setText(clipboardText(failures));
}
