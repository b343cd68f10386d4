#include "TSVOutputOperation.h"

#include "ItemOutputFormatter.h"
#include "session/StringHelpers.h"

TSVOutputOperation::TSVOutputOperation(const DataModelSnapshot &dataModelSnapshot,
                                       std::shared_ptr<OutputEngine> outputEngine,
                                       FlatFileListPtr flatFileList)
    : OutputFormatOperation(dataModelSnapshot, std::move(outputEngine), std::move(flatFileList),
                            std::make_unique<ItemOutputFormatter>(dataModelSnapshot))
{ }

void TSVOutputOperation::addLineBreak()
{
    m_outputString += lineBreak(dataModelSnapshot.linebreaksMode);
}

void TSVOutputOperation::appendField(QString text)
{
    if (dataModelSnapshot.multiLineMode == 1)
        text = StringHelpers::withEncodedLineBreaksAndTabs(text);
    // Doubled even without quoting, so that a reader that expects quotes still finds pairs.
    text.replace(QLatin1Char('"'), QLatin1String("\"\""));
    if (dataModelSnapshot.quoteStrings) {
        m_outputString += QLatin1Char('"');
        m_outputString += text;
        m_outputString += QLatin1Char('"');
    } else {
        m_outputString += text;
    }
}

void TSVOutputOperation::main()
{
    if (isCancelled())
        return;
    const QStringList &columns = dataModelSnapshot.columnList;

    if (dataModelSnapshot.includeColumnTitlesMode != 0) {
        const bool withAbbreviation = dataModelSnapshot.includeColumnTitlesMode == 2;
        for (qsizetype i = 0; i < columns.size(); ++i) {
            appendField(columnTitle(columns[i], withAbbreviation));
            if (i + 1 < columns.size())
                m_outputString += QLatin1Char('\t');
        }
        addLineBreak();
    }

    for (const NodePtr &node : flatFileList->files) {
        if (isCancelled())
            return;
        for (qsizetype i = 0; i < columns.size(); ++i) {
            appendField(formattedValue(*node, columns[i]));
            if (i + 1 < columns.size())
                m_outputString += QLatin1Char('\t');
        }
        addLineBreak();
        reserveForAll();
        fileDone();
    }
    finish();
}
