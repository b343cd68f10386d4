#pragma once

#include "MetadataItemFormatterType.h"
#include "session/FlatFileList.h"
#include "session/OutputEngineOperationType.h"
#include "session/OutputTypes.h"

#include <QString>

#include <atomic>
#include <memory>

class OutputEngine;

// What every format's operation shares: the list it walks, the snapshot it formats with, its
// progress, and how a column's value is found and turned into text. Made for one run; its
// fields are written only by the thread that runs main().
class OutputFormatOperation : public OutputOperationType
{
public:
    OutputFormatOperation(const DataModelSnapshot &dataModelSnapshot,
                          std::shared_ptr<OutputEngine> outputEngine, FlatFileListPtr flatFileList,
                          std::unique_ptr<MetadataItemFormatterType> itemFormatter);

    int currentFileCount() const override
    {
        return m_currentFileCount.load(std::memory_order_relaxed);
    }
    int totalFileCount() const override { return m_totalFileCount; }
    bool indeterminateProgress() const override { return false; }
    QString outputString() const override { return m_outputString; }
    std::optional<OutputFormatIndexEnum> outputFormat() const override
    {
        return dataModelSnapshot.outputFormat;
    }

    // The title of a column as the catalogue names it, empty for an unknown key; with the tag
    // space's abbreviation in brackets where asked for and the column has one.
    static QString columnTitle(const QString &columnKey, bool withTagSpaceAbbreviation);
    // The indentation unit of an indentation mode: none, a tab, or one to six blanks.
    static QString indentationUnit(int indentationMode);
    // The break of linebreaksMode: line feed, carriage return, or both.
    static QString lineBreak(int linebreaksMode);

protected:
    // A column's value as text: text as it is, anything else through the item formatter.
    QString formattedValue(const Node &node, const QString &columnKey) const;
    void fileDone() { m_currentFileCount.fetch_add(1, std::memory_order_relaxed); }
    // After the first item, makes room for the whole list at that item's size, so that a long
    // text is not copied again and again as it grows.
    void reserveForAll();
    // Hands the text to the engine, unless the run was cancelled.
    void finish();

    std::atomic_int m_currentFileCount = 0;
    const int m_totalFileCount;
    const std::shared_ptr<OutputEngine> outputEngine;
    const DataModelSnapshot dataModelSnapshot;
    const FlatFileListPtr flatFileList;
    QString m_outputString;
    const std::unique_ptr<MetadataItemFormatterType> itemFormatter;
};
