#include "WriteOperation.h"

#include "ExifWriteManager.h"
#include "UndoJournal.h"
#include "WriteEngine.h"
#include "WriteWorker.h"
#include "metadata/DataCoordinator.h"
#include "platform/MainQueue.h"

#include <QFileInfo>

WriteOperation::WriteOperation(QList<ConsolidatedWrite> consolidatedWrites,
                               std::weak_ptr<WriteEngine> engine)
    : m_totalFileCount(int(consolidatedWrites.size()))
    , m_consolidatedWrites(std::move(consolidatedWrites))
    , m_engine(std::move(engine))
{ }

int WriteOperation::currentFileIndex() const
{
    return m_currentFileIndex.load(std::memory_order_relaxed);
}

std::optional<QString> WriteOperation::currentFilePath() const
{
    std::lock_guard lock(m_currentFilePathLock);
    return m_currentFilePath;
}

void WriteOperation::main()
{
    // The engine's long-running worker serves the whole batch; without an engine each file gets
    // a worker of its own.
    std::shared_ptr<WriteWorker> worker;
    if (std::shared_ptr<WriteEngine> engine = m_engine.lock())
        worker = engine->writeWorker();
    UndoJournal &journal = UndoJournal::shared();
    const bool recording = worker && journal.isEnabled();
    // The batch's edits form one command of the journal, named when its first file is written.
    quint64 batchCommand = 0;
    for (int index = 0; index < m_consolidatedWrites.size(); ++index) {
        if (isCancelled())
            break;
        const ConsolidatedWrite &write = m_consolidatedWrites.at(index);
        m_currentFileIndex.store(index, std::memory_order_relaxed);
        {
            std::lock_guard lock(m_currentFilePathLock);
            m_currentFilePath = write.filePath;
        }
        std::optional<QString> errorMessage;
        WriteRecording record;
        quint64 command = write.undoCommand;
        if (recording) {
            record.willReplace = [&](const QStringList &undoPairs) {
                if (command == 0) {
                    if (batchCommand == 0)
                        batchCommand = journal.beginCommand(UndoJournal::Kind::edit, 0, editName());
                    command = batchCommand;
                }
                journal.willWrite(command, write.filePath, write.allTagValuePairs,
                                  write.undoCommand != 0 ? write.reversingPairs : undoPairs);
            };
        }
        const bool success = worker
            ? ExifWriteManager::shared().setTagsOfFile(write.filePath, write.allTagValuePairs,
                                                       errorMessage, *worker,
                                                       recording ? &record : nullptr)
            : ExifWriteManager::shared().setTagsOfFile(write.filePath, write.allTagValuePairs,
                                                       errorMessage);
        if (success && record.written)
            journal.didWrite(command, write.filePath, *record.written);
        reportResult(write, success, errorMessage, m_engine);
    }
    if (recording)
        journal.sync();

    // Keeps this operation alive, and so readable by the engine's status, until the engine has
    // seen all of the batch's results.
    auto self = std::static_pointer_cast<WriteOperation>(shared_from_this());
    MainQueue::post([self] {
        if (std::shared_ptr<WriteEngine> engine = self->m_engine.lock())
            engine->operationFinished(self);
    });
}

QString WriteOperation::editName() const
{
    QStringList pairs;
    for (const ConsolidatedWrite &write : m_consolidatedWrites) {
        if (write.undoCommand == 0)
            pairs << write.allTagValuePairs;
    }
    return UndoJournal::describeTags(pairs);
}

void WriteOperation::reportResult(const ConsolidatedWrite &write, bool success,
                                  const std::optional<QString> &errorMessage,
                                  const std::weak_ptr<WriteEngine> &engine)
{
    MainQueue::post([write, success, errorMessage, engine] {
        if (success) {
            NodePtr node = write.node;
            if (!node) {
                const QString name = QFileInfo(write.filePath).fileName();
                node = FileNode::create(name, write.filePath, name);
            }
            DataCoordinator::shared().invalidateData(node);
        } else if (std::shared_ptr<WriteEngine> liveEngine = engine.lock()) {
            liveEngine->recordFailure(write.filePath,
                                      errorMessage.value_or(QStringLiteral("Unknown error")));
        }
        for (const std::function<void(bool)> &handler : write.completionHandlers)
            handler(success);
    });
}
