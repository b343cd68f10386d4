#include "JSONOutputOperation.h"

#include "JSONItemOutputFormatter.h"
#include "session/StringHelpers.h"

JSONOutputOperation::JSONOutputOperation(const DataModelSnapshot &dataModelSnapshot,
                                         std::shared_ptr<OutputEngine> outputEngine,
                                         FlatFileListPtr flatFileList)
    : OutputFormatOperation(dataModelSnapshot, std::move(outputEngine), std::move(flatFileList),
                            std::make_unique<JSONItemOutputFormatter>(dataModelSnapshot))
    , m_indentationUnit(indentationUnit(dataModelSnapshot.jsonIndentationMode))
    , m_lineBreak(lineBreak(dataModelSnapshot.linebreaksMode))
{ }

QString JSONOutputOperation::tabs(int depth) const
{
    return depth < 1 ? QString() : m_indentationUnit.repeated(depth);
}

QString JSONOutputOperation::outputValueForItem(const WrappedMetaDataValue &wrappedValue,
                                                const QString &columnName) const
{
    const auto quoted = [](const QString &text) {
        return QLatin1Char('"') + text + QLatin1Char('"');
    };
    switch (wrappedValue.kind()) {
    case WrappedMetaDataValue::Kind::StringValue:
        return quoted(StringHelpers::withEncodedLineBreaksAndTabs(wrappedValue.stringValue()));
    case WrappedMetaDataValue::Kind::DateValue:
        return quoted(itemFormatter->formatDate(wrappedValue.dateValue(), columnName));
    case WrappedMetaDataValue::Kind::BoolValue:
        // JSON's own literals, whatever boolValuesMode says.
        return wrappedValue.boolValue() ? QStringLiteral("true") : QStringLiteral("false");
    case WrappedMetaDataValue::Kind::NSInteger:
        return itemFormatter->formatNumber(wrappedValue.integerValue(), columnName);
    case WrappedMetaDataValue::Kind::None:
        break;
    }
    return QStringLiteral("null");
}

QString JSONOutputOperation::memberName(const QString &columnKey) const
{
    QString name = dataModelSnapshot.multiLineMode == 1
        ? StringHelpers::withEncodedLineBreaksAndTabs(columnKey)
        : columnKey;
    name.replace(QLatin1Char('"'), QLatin1String("\"\""));
    if (dataModelSnapshot.quoteStrings)
        name = QLatin1Char('"') + name + QLatin1Char('"');
    return name;
}

void JSONOutputOperation::main()
{
    if (isCancelled())
        return;
    const QStringList &columns = dataModelSnapshot.columnList;
    // The member names are the same for every item.
    QStringList names;
    for (const QString &column : columns)
        names << tabs(2) + memberName(column) + QLatin1Char(':');

    const QString objectOpen = tabs(1) + QLatin1Char('{') + m_lineBreak;
    const QString objectClose = tabs(1) + QLatin1Char('}');
    m_outputString = QStringLiteral("[");
    addLineBreak();
    const qsizetype nodeCount = flatFileList->files.size();
    for (qsizetype n = 0; n < nodeCount; ++n) {
        if (isCancelled())
            return;
        const Node &node = *flatFileList->files[n];
        m_outputString += objectOpen;
        for (qsizetype i = 0; i < columns.size(); ++i) {
            m_outputString += names[i];
            m_outputString += outputValueForItem(node.getWrappedValueSync(columns[i]), columns[i]);
            if (i + 1 < columns.size())
                m_outputString += QLatin1Char(',');
            addLineBreak();
        }
        m_outputString += objectClose;
        if (n + 1 < nodeCount)
            m_outputString += QLatin1Char(',');
        addLineBreak();
        reserveForAll();
        fileDone();
    }
    m_outputString += QLatin1Char(']');
    finish();
}
