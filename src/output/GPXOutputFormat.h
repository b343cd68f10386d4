#pragma once

#include "GPXOutputOperation.h"
#include "OutputFormatType.h"

// The items with a position as a GPX file, always in UTF-8.
class GPXOutputFormat : public OutputFormatOf<GPXOutputOperation>
{
public:
    QStringList allowedFileTypes() const override { return {QStringLiteral("gpx")}; }
    TextEncoding fileEncoding(const DataModelSnapshot &) const override
    {
        return TextEncoding::UTF8;
    }
};
