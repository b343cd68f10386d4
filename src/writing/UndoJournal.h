#pragma once

#include "FileStamp.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <mutex>
#include <optional>

// The record of what Palomet's writes replaced, so that they can be undone and redone, across
// restarts. One append-only file in the application's data folder: each command (a batch of
// edits, or the undo or redo of a command) names itself once, and each file it writes gets two
// lines, the pairs written and the pairs that reverse them before the file is replaced, and the
// file's stamp after. Appends are flushed to disk once per batch; a line cut off by a crash is
// ignored. Once the file grows past its bound, the oldest commands are dropped.
//
// Any thread; one leaf lock guards the file and the commands.
class UndoJournal
{
public:
    enum class Kind { edit, undo, redo };

    struct FileRecord
    {
        QString path;
        QStringList written;
        QStringList reversing;
        // Absent until the new file is in place: a record without it never changed the file.
        std::optional<FileStamp> after;
    };

    struct Command
    {
        quint64 id = 0;
        Kind kind = Kind::edit;
        quint64 reverses = 0; // the command an undo or a redo reverses
        QString what; // "City", "GPS and City"
        QList<FileRecord> files; // in the order written; only those with a stamp count

        QList<FileRecord> writtenFiles() const;
    };

    static UndoJournal &shared();

    // The journal's file: the application's data folder unless set for tests.
    static QString defaultFilePath();

    // Off until enabled: then the file is opened (made if need be) and read.
    bool isEnabled() const;
    void enable(const QString &filePath = defaultFilePath());
    void disable();
    // Forgets what is in memory and reads the file again, as a new run would.
    void reload();

    qint64 maximumSize() const;
    void setMaximumSize(qint64 bytes);
    qint64 fileSize() const;

    // A new command; returns its id (0 when the journal is off).
    quint64 beginCommand(Kind kind, quint64 reverses, const QString &what);
    // Before a file is replaced: what is written and what writes it back.
    void willWrite(quint64 command, const QString &path, const QStringList &written,
                   const QStringList &reversing);
    // After it was replaced.
    void didWrite(quint64 command, const QString &path, const FileStamp &stamp);
    // Flushes the batch's lines to disk and keeps the file within its bound.
    void sync();

    // The command that Undo and Redo would reverse now.
    std::optional<Command> undoable() const;
    std::optional<Command> redoable() const;
    // The stamp of the file after Palomet's last recorded write to it.
    std::optional<FileStamp> lastWritten(const QString &path) const;
    QList<Command> commands() const;

    // The words for the tags of a write: "GPS", "City", "GPS and City", "City, Country and GPS".
    static QString describeTags(const QStringList &tagValuePairs);

private:
    UndoJournal() = default;

    void readFile();
    void apply(const QByteArray &line);
    void append(const QByteArray &line);
    void compact();
    Command *command(quint64 id);
    QList<quint64> stack(bool undo) const;
    const Command *find(quint64 id) const;

    mutable std::mutex m_lock;
    // Owned by m_lock.
    QString m_filePath;
    int m_fd = -1;
    qint64 m_maximumSize = 32 * 1024 * 1024;
    quint64 m_nextId = 1;
    QList<Command> m_commands;
    QHash<quint64, qsizetype> m_index;
    QHash<QString, FileStamp> m_lastWritten;
};
