#pragma once

#include "ConsolidatedWrite.h"
#include "WriteEngineOperationType.h"
#include "platform/Operation.h"

#include <QList>

#include <atomic>
#include <memory>
#include <mutex>

class WriteEngine;

// One batch of merged writes, run file after file on the write engine's operation queue. Each
// file's result goes to the main queue as soon as it is known, so results arrive in batch order
// and the engine hears of the batch's end after the last of them.
class WriteOperation final
    : public Operation
    , public WriteEngineOperationType
{
public:
    WriteOperation(QList<ConsolidatedWrite> consolidatedWrites, std::weak_ptr<WriteEngine> engine);

    void main() override;

    int currentFileIndex() const override;
    int totalFileCount() const override { return m_totalFileCount; }
    std::optional<QString> currentFilePath() const override;

    const QList<ConsolidatedWrite> &consolidatedWrites() const { return m_consolidatedWrites; }

private:
    // The words for the tags of the batch's edits, for the name of its undo.
    QString editName() const;
    static void reportResult(const ConsolidatedWrite &write, bool success,
                             const std::optional<QString> &errorMessage,
                             const std::weak_ptr<WriteEngine> &engine);

    // Written by main() only; read by the engine's status from other threads.
    std::atomic_int m_currentFileIndex = 0;
    const int m_totalFileCount;
    mutable std::mutex m_currentFilePathLock;
    // Owned by m_currentFilePathLock.
    std::optional<QString> m_currentFilePath;

    const QList<ConsolidatedWrite> m_consolidatedWrites;
    const std::weak_ptr<WriteEngine> m_engine;
};
