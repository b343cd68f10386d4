#pragma once

#include "PreviewTab.h"

// What the window's pieces (the tables, the map, the editors) need of the main view to keep one
// selection in step. A selection made in a table carries the table as its origin, so that the
// listeners of the selection do not select the same rows again; a selection made elsewhere asks
// the window to select and reveal its rows. The main view installs itself; a recording double
// does for tests. Used on the main thread only.
class MainContentViewing
{
public:
    virtual ~MainContentViewing() = default;

    // True from the moment a table announces its selection until the main queue has turned.
    virtual bool selectionChangedFromTable() const = 0;
    virtual void setSelectionChangedFromTable(bool fromTable) = 0;

    // Selects the rows of both tables whose nodes are in the model's selected nodes.
    virtual void selectRowsAccordingToCurrentSelectionVariables() = 0;
    // Scrolls the first selected row into view in whichever table is shown.
    virtual void scrollToFirstSelectedItemIfNeeded() = 0;

    // The tab whose walls hold the table and the map now; `wait` until they have been placed.
    virtual PreviewTab shownPreviewTab() const = 0;

    // The main view, or null while there is none (headless runs, before the window is built).
    static MainContentViewing *installed();
    static void install(MainContentViewing *view);
};
