#pragma once

#include "TSVOutputOperation.h"

// The tab-separated text as a spreadsheet takes it from the clipboard: rows always end in a
// single line feed, whatever break the settings name.
class CopyToExcelOutputOperation : public TSVOutputOperation
{
public:
    using TSVOutputOperation::TSVOutputOperation;

protected:
    void addLineBreak() override { m_outputString += QLatin1Char('\n'); }
};
