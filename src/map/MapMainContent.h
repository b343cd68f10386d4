#pragma once

#include "session/PreviewTab.h"

// The main view as the map's logic uses it to keep map and tables in step. Without a main view
// (headless runs) the selection is not carried to any table and the map counts as shown alone.
namespace MapMainContent {

bool selectionChangedFromTable();
void selectRowsAccordingToCurrentSelectionVariables();
void scrollToFirstSelectedItemIfNeeded();
PreviewTab shownPreviewTab();

} // namespace MapMainContent
