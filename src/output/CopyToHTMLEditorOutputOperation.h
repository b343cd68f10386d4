#pragma once

#include "HTMLOutputOperation.h"

// The same page as the HTML format; what differs is where it goes: onto the clipboard.
class CopyToHTMLEditorOutputOperation : public HTMLOutputOperation
{
public:
    using HTMLOutputOperation::HTMLOutputOperation;
};
