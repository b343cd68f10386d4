#include "OutputFormatOperation.h"

#include "metadata/TagManager.h"
#include "session/OutputEngine.h"

OutputFormatOperation::OutputFormatOperation(
    const DataModelSnapshot &dataModelSnapshot, std::shared_ptr<OutputEngine> outputEngine,
    FlatFileListPtr flatFileList, std::unique_ptr<MetadataItemFormatterType> itemFormatter)
    : m_totalFileCount(flatFileList ? int(flatFileList->files.size()) : 0)
    , outputEngine(std::move(outputEngine))
    , dataModelSnapshot(dataModelSnapshot)
    , flatFileList(flatFileList ? std::move(flatFileList) : std::make_shared<FlatFileList>())
    , itemFormatter(std::move(itemFormatter))
{ }

QString OutputFormatOperation::columnTitle(const QString &columnKey, bool withTagSpaceAbbreviation)
{
    const TagManager &tags = TagManager::shared();
    QString title = tags.columnNameTranslations().value(columnKey);
    if (!withTagSpaceAbbreviation)
        return title;
    const auto space = tags.columnIDsToDescriptiveTagSpaceMapping().constFind(columnKey);
    if (space == tags.columnIDsToDescriptiveTagSpaceMapping().cend())
        return title;
    if (const std::optional<QString> abbreviation = TagManager::localizedAbbreviation(*space))
        title += QStringLiteral(" (") + *abbreviation + QLatin1Char(')');
    return title;
}

QString OutputFormatOperation::indentationUnit(int indentationMode)
{
    if (indentationMode == 0)
        return QString();
    if (indentationMode >= 2 && indentationMode <= 7)
        return QString(indentationMode - 1, QLatin1Char(' '));
    // A tab for mode 1, and for modes the popup does not offer, as the stored default is 1.
    return QStringLiteral("\t");
}

QString OutputFormatOperation::lineBreak(int linebreaksMode)
{
    switch (linebreaksMode) {
    case 1:
        return QStringLiteral("\r");
    case 2:
        return QStringLiteral("\r\n");
    default:
        return QStringLiteral("\n");
    }
}

QString OutputFormatOperation::formattedValue(const Node &node, const QString &columnKey) const
{
    // The node answers its own path columns itself; every other key comes from the store.
    const WrappedMetaDataValue value = node.getWrappedValueSync(columnKey);
    switch (value.kind()) {
    case WrappedMetaDataValue::Kind::StringValue:
        return value.stringValue();
    case WrappedMetaDataValue::Kind::DateValue:
        return itemFormatter->formatDate(value.dateValue(), columnKey);
    case WrappedMetaDataValue::Kind::BoolValue:
        return itemFormatter->formatBoolValue(value.boolValue(), columnKey);
    case WrappedMetaDataValue::Kind::NSInteger:
        return itemFormatter->formatNumber(value.integerValue(), columnKey);
    case WrappedMetaDataValue::Kind::None:
        break;
    }
    return itemFormatter->formatNullValue(columnKey);
}

void OutputFormatOperation::reserveForAll()
{
    if (currentFileCount() != 0 || m_totalFileCount < 2)
        return;
    m_outputString.reserve(m_outputString.size() * m_totalFileCount * 5 / 4);
}

void OutputFormatOperation::finish()
{
    if (!isCancelled() && outputEngine)
        outputEngine->outputOperationFinished(*this);
}
