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
