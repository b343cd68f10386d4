#pragma once

#include "JSONOutputOperation.h"
#include "OutputFormatType.h"

// An array of objects, saved to a file.
class JSONOutputFormat : public OutputFormatOf<JSONOutputOperation>
{
public:
    QStringList allowedFileTypes() const override { return {QStringLiteral("json")}; }
};
