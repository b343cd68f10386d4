#pragma once

#include "KMLOutputOperation.h"
#include "OutputFormatType.h"

// The items with a position as a KML file, always in UTF-8.
class KMLOutputFormat : public OutputFormatOf<KMLOutputOperation>
{
public:
    QStringList allowedFileTypes() const override { return {QStringLiteral("kml")}; }
    TextEncoding fileEncoding(const DataModelSnapshot &) const override
    {
        return TextEncoding::UTF8;
    }
};
