#pragma once

#include "RecordingDoubles.h"
#include "bricks/BuildDirective.h"
#include "platform/Beeper.h"
#include "session/Node.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

class Assembly;
class DataModel;

// What the tests of the parameter side's fragments share: real files in a temporary folder, the
// real readers and write engine, recording alerts, clipboard and beeps, a fresh data model, and
// the fragment under test built, activated and shown as a window.
class EditorTestBench
{
public:
    class CountingBeeper : public Beeper
    {
    public:
        void makeBeep() override { ++beeps; }
        int beeps = 0;
    };

    // Once per test program, before anything reads the preferences or a file.
    static void setUpOnce();

    EditorTestBench();
    ~EditorTestBench();

    DataModel &model() { return *m_model; }

    // A small JPEG made with the ExifTool arguments, and its node once it has been read.
    NodePtr readJpeg(const QString &name, const QStringList &exifToolArguments = {});
    // A tag as ExifTool reads it from the file now ("-n" form), or empty.
    static QString tagInFile(const QString &path, const QString &tag);
    // Waits until every write has been made and each file read again.
    static bool waitForWrites();

    // Builds the directive in a stack of its own, activates it and shows it `width` wide.
    QWidget *show(const BuildDirectiveList &directive, int width = 440);
    template<typename T = QWidget>
    T *view(const QString &name) const
    {
        return m_root ? m_root->findChild<T *>(name) : nullptr;
    }

    RecordingPresenter alerts;
    RecordingClipboard clipboard;
    CountingBeeper beeper;

private:
    QTemporaryDir m_directory;
    std::unique_ptr<DataModel> m_model;
    std::shared_ptr<Assembly> m_assembly;
    QWidget *m_root = nullptr;
    int m_files = 0;
};
