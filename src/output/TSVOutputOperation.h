#pragma once

#include "OutputFormatOperation.h"

// The list as tab-separated text: an optional title row, then one row for each item and one
// column for each entry of the column list, each row ended by a line break.
class TSVOutputOperation : public OutputFormatOperation
{
public:
    TSVOutputOperation(const DataModelSnapshot &dataModelSnapshot,
                       std::shared_ptr<OutputEngine> outputEngine, FlatFileListPtr flatFileList);

    void main() override;

protected:
    virtual void addLineBreak();

private:
    void appendField(QString text);
};
