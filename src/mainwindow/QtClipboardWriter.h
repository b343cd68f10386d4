#pragma once

#include "platform/ClipboardWriter.h"

// The system clipboard.
class QtClipboardWriter : public ClipboardWriter
{
public:
    void writeText(const QString &text) override;
};
