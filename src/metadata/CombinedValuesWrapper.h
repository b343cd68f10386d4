#pragma once

#include <QString>
#include <QStringList>

// One key combined over several items: all equal, several different, still waiting, or none.
struct CombinedValuesWrapper
{
    enum class Kind { SingleValue, MultipleValues, Waiting, NoValue };

    Kind kind = Kind::NoValue;
    // The one value, or the distinct values in order of first appearance.
    QStringList values;
    // Some items have no value (with the first two kinds only).
    bool someValuesMissing = false;

    QString singleValue() const { return values.value(0); }
    bool operator==(const CombinedValuesWrapper &) const = default;
};
