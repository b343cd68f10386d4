#pragma once

#include "HTMLOutputOperation.h"
#include "OutputFormatType.h"

// A page with one table, saved to a file.
class HTMLOutputFormat : public OutputFormatOf<HTMLOutputOperation>
{
public:
    QStringList allowedFileTypes() const override
    {
        return {QStringLiteral("html"), QStringLiteral("htm")};
    }
};
