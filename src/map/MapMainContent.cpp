#include "MapMainContent.h"

#include "session/MainContentViewing.h"

namespace MapMainContent {

bool selectionChangedFromTable()
{
    const MainContentViewing *view = MainContentViewing::installed();
    return view && view->selectionChangedFromTable();
}

void selectRowsAccordingToCurrentSelectionVariables()
{
    if (MainContentViewing *view = MainContentViewing::installed())
        view->selectRowsAccordingToCurrentSelectionVariables();
}

void scrollToFirstSelectedItemIfNeeded()
{
    if (MainContentViewing *view = MainContentViewing::installed())
        view->scrollToFirstSelectedItemIfNeeded();
}

PreviewTab shownPreviewTab()
{
    const MainContentViewing *view = MainContentViewing::installed();
    return view ? view->shownPreviewTab() : PreviewTab::map;
}

} // namespace MapMainContent
