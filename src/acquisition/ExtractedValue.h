#pragma once

#include "metadata/WrappedMetaDataValue.h"

#include <QList>
#include <QString>

// One value a platform reader found in a file, under the key it is stored with.
struct ExtractedValue
{
    QString key;
    WrappedMetaDataValue value;

    bool operator==(const ExtractedValue &other) const = default;
};

// A reader's values in the order in which they are stored.
using ExtractedValues = QList<ExtractedValue>;

#if __has_include("metadata/MetadataStorage.h")
#include "metadata/MetadataSource.h"

// Stores each value in MetadataStorage under the path and source: texts as texts, dates as
// dates, in order.
void storeExtractedValues(const QString &path, MetadataSource source,
                          const ExtractedValues &values);
#endif
