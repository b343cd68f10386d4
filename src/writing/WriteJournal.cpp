#include "WriteJournal.h"

#include "commons/Log.h"

#include <QAtomicInt>
#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

std::mutex directoryLock;
// Owned by directoryLock.
QString overriddenDirectory;

QString errorText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

QByteArray native(const QString &path)
{
    return QFile::encodeName(path);
}

// A record holds its fields separated by NUL bytes, which no path contains: target, temporary
// file, recovery copy and "1" once the copy is complete.
QList<QByteArray> readFields(int fd)
{
    QByteArray content;
    char buffer[4096];
    off_t offset = 0;
    for (;;) {
        const ssize_t count = pread(fd, buffer, sizeof buffer, offset);
        if (count <= 0)
            break;
        content.append(buffer, count);
        offset += count;
    }
    return content.split('\0');
}

bool writeAllAt(int fd, const char *data, size_t size, off_t offset)
{
    while (size > 0) {
        const ssize_t count = pwrite(fd, data, size, offset);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        data += count;
        size -= size_t(count);
        offset += count;
    }
    return true;
}

} // namespace

WriteJournal::Record::Record(int fd, QString file, QString target, QString temporary)
    : m_fd(fd)
    , m_file(std::move(file))
    , m_target(std::move(target))
    , m_temporary(std::move(temporary))
{ }

WriteJournal::Record::~Record()
{
    if (!m_kept)
        unlink(native(m_file).constData());
    close(m_fd);
}

bool WriteJournal::Record::noteRecoveryCopy(const QString &recoveryPath)
{
    m_recovery = recoveryPath;
    m_recoveryComplete = false;
    return store(false);
}

bool WriteJournal::Record::markRecoveryCopyComplete()
{
    m_recoveryComplete = true;
    return store(true);
}

bool WriteJournal::Record::store(bool durable)
{
    const QByteArray content = native(m_target) + '\0' + native(m_temporary) + '\0'
        + native(m_recovery) + '\0' + (m_recoveryComplete ? "1" : "0");
    if (!writeAllAt(m_fd, content.constData(), size_t(content.size()), 0)
        || ftruncate(m_fd, content.size()) != 0)
        return false;
    // Only a record that can undo a write in place must outlive a crash of the system itself.
    return !durable || fsync(m_fd) == 0;
}

QString WriteJournal::directory()
{
    {
        std::lock_guard lock(directoryLock);
        if (!overriddenDirectory.isEmpty())
            return overriddenDirectory;
    }
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation)
        + QStringLiteral("/unfinished-writes");
}

void WriteJournal::setDirectory(const QString &directory)
{
    std::lock_guard lock(directoryLock);
    overriddenDirectory = directory;
}

std::unique_ptr<WriteJournal::Record> WriteJournal::begin(const QString &target,
                                                          const QString &temporary,
                                                          QString *errorText)
{
    static QAtomicInt counter;
    const QString folder = directory();
    if (!QDir().mkpath(folder)) {
        *errorText = QStringLiteral("Can't make the folder ") + folder;
        return nullptr;
    }
    const QString file
        = folder + QStringLiteral("/%1-%2").arg(getpid()).arg(counter.fetchAndAddRelaxed(1));
    const int fd = open(native(file).constData(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0) {
        *errorText = ::errorText(errno);
        return nullptr;
    }
    flock(fd, LOCK_EX);
    std::unique_ptr<Record> record(new Record(fd, file, target, temporary));
    if (!record->store(false)) {
        *errorText = ::errorText(errno);
        return nullptr;
    }
    return record;
}

int WriteJournal::recoverUnfinishedWrites()
{
    int restored = 0;
    const QDir folder(directory());
    const QStringList names = folder.entryList(QDir::Files | QDir::Hidden);
    for (const QString &name : names) {
        const QString file = folder.filePath(name);
        const int fd = open(native(file).constData(), O_RDWR | O_CLOEXEC);
        if (fd < 0)
            continue;
        // A record still locked belongs to a write of a running instance.
        if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
            close(fd);
            continue;
        }
        const QList<QByteArray> fields = readFields(fd);
        if (fields.size() == 4) {
            const QString target = QFile::decodeName(fields[0]);
            const QString temporary = QFile::decodeName(fields[1]);
            const QString recovery = QFile::decodeName(fields[2]);
            if (!recovery.isEmpty() && fields[3] == "1" && QFile::exists(recovery)) {
                QString why;
                if (copyInPlace(recovery, target, &why)) {
                    ++restored;
                    Log::line(QStringLiteral("Put back %1 as it was before an unfinished write")
                                  .arg(target));
                } else {
                    // Keep the record and the copy for the next start: the copy is the file.
                    Log::line(QStringLiteral("Could not put back %1 from %2: %3")
                                  .arg(target, recovery, why));
                    close(fd);
                    continue;
                }
            }
            if (!recovery.isEmpty())
                unlink(native(recovery).constData());
            if (!temporary.isEmpty())
                unlink(native(temporary).constData());
        }
        unlink(native(file).constData());
        close(fd);
    }
    return restored;
}

bool WriteJournal::copyInPlace(const QString &source, const QString &target, QString *errorText)
{
    const int in = open(native(source).constData(), O_RDONLY | O_CLOEXEC);
    if (in < 0) {
        *errorText = ::errorText(errno);
        return false;
    }
    const int out = open(native(target).constData(), O_WRONLY | O_CLOEXEC);
    if (out < 0) {
        *errorText = ::errorText(errno);
        close(in);
        return false;
    }
    bool copied = true;
    off_t offset = 0;
    std::vector<char> buffer(1 << 20);
    for (;;) {
        const ssize_t count = read(in, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 || (count > 0 && !writeAllAt(out, buffer.data(), size_t(count), offset))) {
            copied = false;
            break;
        }
        if (count == 0)
            break;
        offset += count;
    }
    struct stat status;
    copied = copied && ftruncate(out, offset) == 0 && fsync(out) == 0 && fstat(in, &status) == 0;
    if (copied) {
        // Setting a time needs the file's owner; others get the time of the copy.
        const timespec times[2] = {{0, UTIME_OMIT}, status.st_mtim};
        if (futimens(out, times) != 0)
            Log::line(QStringLiteral("Failed to set modification date: ") + ::errorText(errno));
    } else {
        *errorText = ::errorText(errno);
    }
    close(in);
    close(out);
    return copied;
}
