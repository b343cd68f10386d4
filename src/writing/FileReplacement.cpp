#include "FileReplacement.h"

#include "commons/Log.h"

#include <QAtomicInt>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

QString errorText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

QByteArray native(const QString &path)
{
    return QFile::encodeName(path);
}

// The names of a file's extended attributes, as listxattr lists them: NUL-terminated.
QList<QByteArray> attributeNames(const std::function<ssize_t(char *, size_t)> &list)
{
    for (int attempt = 0; attempt < 3; ++attempt) {
        const ssize_t size = list(nullptr, 0);
        if (size <= 0)
            return {};
        QByteArray names(size, '\0');
        const ssize_t listed = list(names.data(), size_t(names.size()));
        if (listed < 0 && errno == ERANGE)
            continue; // grew meanwhile
        if (listed <= 0)
            return {};
        names.truncate(listed - 1);
        return names.split('\0');
    }
    return {};
}

QString hiddenSibling(const QString &target, const QString &tail)
{
    static QAtomicInt counter;
    const QFileInfo info(target);
    QString name = QLatin1Char('.') + info.fileName() + QStringLiteral(".palomet-") + tail
        + QStringLiteral("-%1-%2").arg(getpid()).arg(counter.fetchAndAddRelaxed(1));
    return info.path() + QLatin1Char('/') + name;
}

} // namespace

QString FileReplacement::temporaryName(const QString &target)
{
    // The new file keeps the extension, which tells a writer the file's kind.
    const QString suffix = QFileInfo(target).suffix();
    return hiddenSibling(target, QStringLiteral("new"))
        + (suffix.isEmpty() ? QString() : QLatin1Char('.') + suffix);
}

QString FileReplacement::recoveryName(const QString &target)
{
    return hiddenSibling(target, QStringLiteral("recovery"));
}

std::unique_ptr<FileReplacement> FileReplacement::prepare(const QString &path,
                                                          std::optional<QString> &errorMessage)
{
    std::unique_ptr<FileReplacement> replacement(new FileReplacement);
    const QFileInfo info(path);
    const QString resolved = info.isSymLink() ? info.canonicalFilePath() : QString();
    replacement->m_target = resolved.isEmpty() ? path : resolved;
    const QByteArray target = native(replacement->m_target);

    // A missing file is the worker's to report; anything but a regular file is never opened,
    // since a pipe or a device would never answer.
    if (stat(target.constData(), &replacement->m_status) == 0) {
        if (!S_ISREG(replacement->m_status.st_mode)) {
            errorMessage = QStringLiteral("Not a regular file");
            return nullptr;
        }
        replacement->m_exists = true;
        const QList<QByteArray> names = attributeNames(
            [&](char *buffer, size_t size) { return listxattr(target.constData(), buffer, size); });
        for (const QByteArray &name : names) {
            const ssize_t size = getxattr(target.constData(), name.constData(), nullptr, 0);
            if (size < 0)
                continue;
            QByteArray value(size, '\0');
            const ssize_t read = getxattr(target.constData(), name.constData(), value.data(),
                                          size_t(value.size()));
            if (read >= 0)
                replacement->m_attributes.append({name, value.left(read)});
        }
    }

    replacement->m_temporary = temporaryName(replacement->m_target);
    QString why;
    replacement->m_record
        = WriteJournal::begin(replacement->m_target, replacement->m_temporary, &why);
    if (!replacement->m_record)
        Log::line(QStringLiteral("No journal record for the write of %1: %2")
                      .arg(replacement->m_target, why));
    return replacement;
}

FileReplacement::~FileReplacement()
{
    if (!m_committed)
        unlink(native(m_temporary).constData());
}

bool FileReplacement::commit(QString *errorText)
{
    const QByteArray temporary = native(m_temporary);
    struct stat made;
    if (lstat(temporary.constData(), &made) != 0) {
        m_committed = true;
        return true;
    }

    // A new file (a sidecar made for the write) has nothing to keep.
    if (!m_exists) {
        if (rename(temporary.constData(), native(m_target).constData()) != 0) {
            *errorText
                = QStringLiteral("Error renaming temporary file (%1)").arg(::errorText(errno));
            return false;
        }
        m_committed = true;
        return true;
    }
    if (m_status.st_nlink <= 1) {
        const int fd = open(temporary.constData(), O_RDWR | O_CLOEXEC);
        const bool kept = fd >= 0 && reapplyExistingAttributes(fd);
        if (fd >= 0)
            close(fd);
        if (kept) {
            if (rename(temporary.constData(), native(m_target).constData()) != 0) {
                *errorText
                    = QStringLiteral("Error renaming temporary file (%1)").arg(::errorText(errno));
                return false;
            }
            m_committed = true;
            return true;
        }
    }
    return replaceInPlace(errorText);
}

// Owner first, since a change of owner clears the set-user-ID and set-group-ID bits; the mode
// after the access control list, as both set the group bits; the time last.
bool FileReplacement::reapplyExistingAttributes(int fd) const
{
    struct stat now;
    if (fstat(fd, &now) != 0)
        return false;
    if ((now.st_uid != m_status.st_uid || now.st_gid != m_status.st_gid)
        && fchown(fd, m_status.st_uid, m_status.st_gid) != 0)
        return false;

    // A folder's default access control list gives a new file one the original may not have.
    const QList<QByteArray> present
        = attributeNames([&](char *buffer, size_t size) { return flistxattr(fd, buffer, size); });
    for (const QByteArray &name : present) {
        const bool original
            = std::any_of(m_attributes.cbegin(), m_attributes.cend(),
                          [&](const ExtendedAttribute &a) { return a.name == name; });
        if (!original && fremovexattr(fd, name.constData()) != 0)
            return false;
    }
    for (const ExtendedAttribute &attribute : m_attributes) {
        if (fsetxattr(fd, attribute.name.constData(), attribute.value.constData(),
                      size_t(attribute.value.size()), 0)
            != 0)
            return false;
    }

    if (fchmod(fd, m_status.st_mode & 07777) != 0)
        return false;
    const timespec times[2] = {{0, UTIME_OMIT}, m_status.st_mtim};
    return futimens(fd, times) == 0;
}

bool FileReplacement::replaceInPlace(QString *errorText)
{
    if (!m_record) {
        *errorText = QStringLiteral("Error writing file (no journal for a recovery copy)");
        return false;
    }
    const QString recovery = recoveryName(m_target);
    const QByteArray recoveryPath = native(recovery);
    m_record->noteRecoveryCopy(recovery);
    const int made = open(recoveryPath.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    QString why;
    if (made < 0 || close(made) != 0 || !WriteJournal::copyInPlace(m_target, recovery, &why)
        || !m_record->markRecoveryCopyComplete()) {
        *errorText = QStringLiteral("Error writing recovery copy (%1)")
                         .arg(why.isEmpty() ? ::errorText(errno) : why);
        unlink(recoveryPath.constData());
        return false;
    }

    // The new bytes take the original's time, which the copy into the original carries over.
    const int fd = open(native(m_temporary).constData(), O_RDWR | O_CLOEXEC);
    if (fd >= 0) {
        const timespec times[2] = {{0, UTIME_OMIT}, m_status.st_mtim};
        futimens(fd, times);
        close(fd);
    }
    if (!WriteJournal::copyInPlace(m_temporary, m_target, &why)) {
        *errorText = QStringLiteral("Error writing file (%1)").arg(why);
        QString undoWhy;
        if (WriteJournal::copyInPlace(recovery, m_target, &undoWhy)) {
            unlink(recoveryPath.constData());
        } else {
            Log::line(QStringLiteral("Could not put back %1: %2; its recovery copy is %3")
                          .arg(m_target, undoWhy, recovery));
            m_record->keepForNextStart();
        }
        return false;
    }
    unlink(recoveryPath.constData());
    m_committed = true;
    unlink(native(m_temporary).constData());
    return true;
}
