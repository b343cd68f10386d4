#pragma once

#include "WriteJournal.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <optional>
#include <sys/stat.h>

// Puts a rewritten file in the place of the original without losing anything the file system
// keeps about it. The worker writes the new file beside the original; commit() gives it the
// original's owner, extended attributes (access control lists among them), mode and
// modification time, and renames it over the original, so that the path shows the old file or
// the new one at any moment. Where a rename would lose something (several hard links, or an
// owner or attribute that we may not set), the new bytes are copied into the original instead,
// with a recovery copy beside it that the journal puts back if the copy is cut off.
class FileReplacement
{
public:
    // Looks at the file about to be written; a symbolic link is followed. Absent, with
    // errorMessage set, when it can't be written at all.
    static std::unique_ptr<FileReplacement> prepare(const QString &path,
                                                    std::optional<QString> &errorMessage);
    // Removes the new file unless it was committed.
    ~FileReplacement();

    FileReplacement(const FileReplacement &) = delete;
    FileReplacement &operator=(const FileReplacement &) = delete;

    // The file that is written, links followed.
    const QString &target() const { return m_target; }
    // Where the worker puts the new file.
    const QString &temporaryPath() const { return m_temporary; }

    // Puts the new file in place. Where the worker made none, the file stays as it is. On false
    // errorText says why, in the system's words, and the original is as it was.
    bool commit(QString *errorText);

    // Hidden names beside the file, so that a scan of the folder never lists them.
    static QString temporaryName(const QString &target);
    static QString recoveryName(const QString &target);

private:
    struct ExtendedAttribute
    {
        QByteArray name;
        QByteArray value;
    };

    FileReplacement() = default;

    bool reapplyExistingAttributes(int fd) const;
    bool replaceInPlace(QString *errorText);

    QString m_target;
    QString m_temporary;
    bool m_exists = false;
    struct stat m_status = {};
    QList<ExtendedAttribute> m_attributes;
    std::unique_ptr<WriteJournal::Record> m_record;
    bool m_committed = false;
};
