#pragma once

#include "OutputFormatOperation.h"

#include <optional>

// The default format's pass: it makes no text, but puts every item with a complete GPS position
// from the image reader on the map as a plain marker, titled with the item's city.
class CSVOutputOperation : public OutputFormatOperation
{
public:
    CSVOutputOperation(const DataModelSnapshot &dataModelSnapshot,
                       std::shared_ptr<OutputEngine> outputEngine, FlatFileListPtr flatFileList);

    void main() override;

    // The decimal number at the start of the text, after any white space, with "." as the
    // decimal separator whatever the user's locale; absent when the text starts with none.
    static std::optional<double> leadingDecimal(const QString &text);
};
