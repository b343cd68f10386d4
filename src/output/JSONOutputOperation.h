#pragma once

#include "OutputFormatOperation.h"

// The list as an array of objects, one for each item, with one member for each column. Text
// values are written as they are apart from line breaks and tabs: a quote or a backslash in a
// value is not escaped, so the result is not always strict JSON.
class JSONOutputOperation : public OutputFormatOperation
{
public:
    JSONOutputOperation(const DataModelSnapshot &dataModelSnapshot,
                        std::shared_ptr<OutputEngine> outputEngine, FlatFileListPtr flatFileList);

    void main() override;

    // The indentation of a depth; empty below 1.
    QString tabs(int depth) const;
    QString outputValueForItem(const WrappedMetaDataValue &wrappedValue,
                               const QString &columnName) const;

private:
    void addLineBreak() { m_outputString += m_lineBreak; }
    QString memberName(const QString &columnKey) const;

    const QString m_indentationUnit;
    const QString m_lineBreak;
};
