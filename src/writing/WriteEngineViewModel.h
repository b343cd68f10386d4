#pragma once

#include <QString>

#include <optional>

// The write engine's status, polled by the interface.
struct WriteEngineViewModel
{
    bool isActive = false;
    int currentFileIndex = 0;
    int totalFileCount = 0;
    bool indeterminateProgress = false;
    std::optional<QString> currentFilePath;
};
