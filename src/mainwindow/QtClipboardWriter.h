#pragma once

#include "platform/ClipboardWriter.h"

// The application's clipboard through Qt.
class QtClipboardWriter : public ClipboardWriter
{
public:
    bool write(const ClipboardContent &content) override;
};
