#pragma once

#include "bricks/walls/WallDirectives.h"
#include "output/OutputCommands.h"

#include <QObject>
#include <QPointer>

class DataModel;
class OutputEngine;
class QTimer;

// The output settings of the parameter side: the output format, the settings of the text
// formats (each shown only for the formats it changes), a line that says whether the text is
// ready, and "Copy Output" and "Save Output…". The default format puts the items on the map and
// makes no text, so both commands are off for it. Main thread only.
class OutputSettingsFragment : public QObject
{
    Q_OBJECT

public:
    static BuildDirectivesNamespace::FragmentWall directive(DataModel &model,
                                                            std::shared_ptr<OutputEngine> engine);

    // statusText is what the fragment's status line shows.
    OutputSettingsFragment(DataModel &model, std::shared_ptr<OutputEngine> engine,
                           std::shared_ptr<StraightVariable<QString>> statusText,
                           QWidget *fragment);

    // Reads the engine's state into the status line and the two buttons.
    void refresh();
    void copyOutput();
    // Asks where to save, proposing the format's file type, then saves.
    void saveOutput();

    // How often the state is read while the text is being made.
    static constexpr int refreshIntervalMs = 250;

private:
    DataModel &m_model;
    OutputCommands m_commands;
    std::shared_ptr<StraightVariable<QString>> m_statusText;
    QPointer<QWidget> m_fragment;
    QPointer<QWidget> m_copyButton, m_saveButton;
    QTimer *m_timer;
};
