#pragma once

#include <QString>

#include <optional>

// What the write engine's status needs of a running batch. Read from any thread while the batch
// runs; a value a moment stale is fine for a progress display.
class WriteEngineOperationType
{
public:
    virtual ~WriteEngineOperationType() = default;
    virtual int currentFileIndex() const = 0;
    virtual int totalFileCount() const = 0;
    virtual std::optional<QString> currentFilePath() const = 0;
};
