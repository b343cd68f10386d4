#include "MapMainContent.h"

#if __has_include("session/MainContentViewing.h")
#include "session/MainContentViewing.h"
#define PALOMET_HAS_MAIN_CONTENT 1
#endif

namespace MapMainContent {

bool selectionChangedFromTable()
{
#ifdef PALOMET_HAS_MAIN_CONTENT
    if (MainContentViewing *view = MainContentViewing::installed())
        return view->selectionChangedFromTable();
#endif
    return false;
}

void selectRowsAccordingToCurrentSelectionVariables()
{
#ifdef PALOMET_HAS_MAIN_CONTENT
    if (MainContentViewing *view = MainContentViewing::installed())
        view->selectRowsAccordingToCurrentSelectionVariables();
#endif
}

void scrollToFirstSelectedItemIfNeeded()
{
#ifdef PALOMET_HAS_MAIN_CONTENT
    if (MainContentViewing *view = MainContentViewing::installed())
        view->scrollToFirstSelectedItemIfNeeded();
#endif
}

PreviewTab shownPreviewTab()
{
#ifdef PALOMET_HAS_MAIN_CONTENT
    if (MainContentViewing *view = MainContentViewing::installed())
        return view->shownPreviewTab();
#endif
    return PreviewTab::map;
}

} // namespace MapMainContent
