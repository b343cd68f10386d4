#pragma once

#include "ItemOutputFormatter.h"

// The JSON form's values: its own date mode, and German as the locale of the fixed patterns
// other than the 12-hour one.
class JSONItemOutputFormatter : public ItemOutputFormatter
{
public:
    explicit JSONItemOutputFormatter(const DataModelSnapshot &dataModelSnapshot)
        : ItemOutputFormatter(dataModelSnapshot, dataModelSnapshot.jsonDateFormatMode,
                              FixedPatternLocale::German)
    { }
};
