#pragma once

#include "SortMode.h"

#include <QList>
#include <QStringList>

#include <array>

// Stages of the pipeline, in order.
enum class OutputOperationTypeEnum { scanning, resorting, computingOutput, ready };

// Persisted as its raw value, which is not the declared position: JSON was given the last number.
enum class OutputFormatIndexEnum : int {
    CSV = 0,
    TSV = 1,
    JSON = 5,
    HTML = 2,
    CopyToHTML = 3,
    CopyToExcel = 4,
    // Map formats added after the list formats, with numbers of their own.
    KML = 6,
    GPX = 7
};

namespace OutputFormatIndex {
// In declared order.
inline constexpr std::array<OutputFormatIndexEnum, 8> allCases = {
    OutputFormatIndexEnum::CSV,        OutputFormatIndexEnum::TSV,
    OutputFormatIndexEnum::JSON,       OutputFormatIndexEnum::HTML,
    OutputFormatIndexEnum::CopyToHTML, OutputFormatIndexEnum::CopyToExcel,
    OutputFormatIndexEnum::KML,        OutputFormatIndexEnum::GPX,
};
inline bool isValidRawValue(int raw)
{
    return raw >= 0 && raw <= 7;
}
} // namespace OutputFormatIndex

// The settings one pipeline run works with, copied at launch and never changed.
struct DataModelSnapshot
{
    OutputFormatIndexEnum outputFormat = OutputFormatIndexEnum::CSV;
    SortMode firstSortMode = SortMode::nameAndSequenceAscending;
    SortMode secondSortMode = SortMode::nameAndSequenceAscending;
    bool quoteStrings = true;
    int includeColumnTitlesMode = 0;
    int boolValuesMode = 0;
    int nullValuesMode = 0;
    int dateFormatMode = 0;
    int multiLineMode = 0;
    int linebreaksMode = 0;
    int encodingMode = 0;
    int htmlIndentationMode = 1;
    int htmlColumnIdHeaderMode = 0;
    int htmlColumnClassMode = 0;
    int jsonIndentationMode = 1;
    int jsonDateFormatMode = 1;
    QStringList sourceList;
    QStringList columnList;
};

// The engine's status, polled by the interface.
struct OutputEngineViewModel
{
    OutputOperationTypeEnum activeStage = OutputOperationTypeEnum::ready;
    int currentNumberOfMetadataItems = 0;
    int currentNumberOfItems = 0;
    int currentItemProcessing = 0;
    int totalItemProcessing = 0;
    bool indeterminateProgress = false;
};
