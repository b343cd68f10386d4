#pragma once

#include "location/GPSCoordinateComponent.h"
#include "platform/AlertPresenter.h"
#include "platform/ClipboardWriter.h"
#include "session/MainContentViewing.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <algorithm>

// Stand-ins for the dialogs, the clipboard and the main view that record what the program asks
// of them.

// Records each alert and answers the button given for it in turn (the first, by default).
class RecordingPresenter : public AlertPresenter
{
public:
    int present(const Alert &alert) override
    {
        alerts.append(alert);
        return answers.value(alerts.size() - 1, 0);
    }
    QList<Alert> alerts;
    QList<int> answers;
};

class RecordingClipboard : public ClipboardWriter
{
public:
    bool write(const ClipboardContent &content) override
    {
        written.append(content);
        texts.append(content.plainText);
        return true;
    }
    QList<ClipboardContent> written;
    QStringList texts;
};

// Records the pins asked for, and whether the map was to be shown for the last one.
class RecordingPinWorkflow : public PinWorkflow
{
public:
    void addPinUsingCurrentFlagWorkflow(Coordinate2D coordinate, bool switchToMap) override
    {
        coordinates << coordinate;
        switched = switchToMap;
    }
    QList<Coordinate2D> coordinates;
    bool switched = false;
};

// Records what the window's pieces ask of the main view, in order, with the origin flag as it
// stood at each request. Tell it which tab holds the table and the map with `shownTab`. It leaves
// the installed slot empty when it goes, if it was the one installed there.
class RecordingMainContentView : public MainContentViewing
{
public:
    struct Call
    {
        QString name;
        bool selectionChangedFromTable = false;
        bool operator==(const Call &) const = default;
    };

    ~RecordingMainContentView() override
    {
        if (MainContentViewing::installed() == this)
            MainContentViewing::install(nullptr);
    }

    bool selectionChangedFromTable() const override { return fromTable; }
    void setSelectionChangedFromTable(bool value) override
    {
        fromTable = value;
        calls.append({QStringLiteral("setSelectionChangedFromTable"), value});
    }
    void selectRowsAccordingToCurrentSelectionVariables() override
    {
        calls.append({QStringLiteral("selectRowsAccordingToCurrentSelectionVariables"), fromTable});
    }
    void scrollToFirstSelectedItemIfNeeded() override
    {
        calls.append({QStringLiteral("scrollToFirstSelectedItemIfNeeded"), fromTable});
    }
    PreviewTab shownPreviewTab() const override { return shownTab; }

    int count(const QString &name) const
    {
        return int(std::count_if(calls.cbegin(), calls.cend(),
                                 [&](const Call &call) { return call.name == name; }));
    }

    PreviewTab shownTab = PreviewTab::items;
    bool fromTable = false;
    QList<Call> calls;
};
