#include "UndoJournal.h"

#include "commons/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

// One line a record, fields separated by spaces, texts in base64:
//   C <id> <e|u|r> <reversed id> <what>
//   F <id> <path> <written> <reversing>     lists: items in base64 joined by ",", "." when empty
//   D <id> <path> <change time ns> <size>
namespace {

QByteArray encoded(const QString &text)
{
    return text.toUtf8().toBase64();
}

QString decoded(const QByteArray &field)
{
    return QString::fromUtf8(QByteArray::fromBase64(field));
}

QByteArray encodedList(const QStringList &items)
{
    if (items.isEmpty())
        return "."_ba;
    QByteArrayList fields;
    fields.reserve(items.size());
    for (const QString &item : items)
        fields << encoded(item);
    return fields.join(',');
}

QStringList decodedList(const QByteArray &field)
{
    QStringList items;
    if (field == ".")
        return items;
    for (const QByteArray &item : field.split(','))
        items << decoded(item);
    return items;
}

char kindLetter(UndoJournal::Kind kind)
{
    switch (kind) {
    case UndoJournal::Kind::edit:
        return 'e';
    case UndoJournal::Kind::undo:
        return 'u';
    case UndoJournal::Kind::redo:
        return 'r';
    }
    return 'e';
}

QByteArray commandLine(const UndoJournal::Command &command)
{
    return "C " + QByteArray::number(command.id) + ' ' + kindLetter(command.kind) + ' '
        + QByteArray::number(command.reverses) + ' ' + encoded(command.what) + '\n';
}

QByteArray fileLine(quint64 id, const QString &path, const QStringList &written,
                    const QStringList &reversing)
{
    return "F " + QByteArray::number(id) + ' ' + encoded(path) + ' ' + encodedList(written) + ' '
        + encodedList(reversing) + '\n';
}

QByteArray stampLine(quint64 id, const QString &path, const FileStamp &stamp)
{
    return "D " + QByteArray::number(id) + ' ' + encoded(path) + ' '
        + QByteArray::number(stamp.changeTimeNanoseconds) + ' ' + QByteArray::number(stamp.size)
        + '\n';
}

bool writeAll(int fd, const QByteArray &bytes)
{
    const char *data = bytes.constData();
    size_t size = size_t(bytes.size());
    while (size > 0) {
        const ssize_t count = write(fd, data, size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        data += count;
        size -= size_t(count);
    }
    return true;
}

// The names of a write's tags as the user knows them, in order of first appearance.
QString fieldName(QString tag)
{
    tag = tag.section(u':', -1);
    if (tag.endsWith(u'#'))
        tag.chop(1);
    if (tag.startsWith(u"GPS"_s))
        return u"GPS"_s;
    if (tag == u"State"_s)
        return u"Province-State"_s;
    if (tag == u"Location"_s)
        return u"Sub-location"_s;
    return tag;
}

} // namespace

QList<UndoJournal::FileRecord> UndoJournal::Command::writtenFiles() const
{
    QList<FileRecord> written;
    for (const FileRecord &file : files) {
        if (file.after)
            written << file;
    }
    return written;
}

UndoJournal &UndoJournal::shared()
{
    static UndoJournal &journal = *new UndoJournal;
    return journal;
}

QString UndoJournal::defaultFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation)
        + u"/undo-journal"_s;
}

bool UndoJournal::isEnabled() const
{
    std::lock_guard lock(m_lock);
    return m_fd >= 0;
}

void UndoJournal::enable(const QString &filePath)
{
    std::lock_guard lock(m_lock);
    if (m_fd >= 0)
        close(m_fd);
    m_filePath = filePath;
    QDir().mkpath(QFileInfo(filePath).absolutePath());
    m_fd = open(QFile::encodeName(filePath).constData(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC,
                0600);
    if (m_fd < 0)
        Log::line(u"Undo is off: can't open "_s + filePath);
    readFile();
}

void UndoJournal::disable()
{
    std::lock_guard lock(m_lock);
    if (m_fd >= 0)
        close(m_fd);
    m_fd = -1;
    m_commands.clear();
    m_index.clear();
    m_lastWritten.clear();
}

void UndoJournal::reload()
{
    std::lock_guard lock(m_lock);
    readFile();
}

qint64 UndoJournal::maximumSize() const
{
    std::lock_guard lock(m_lock);
    return m_maximumSize;
}

void UndoJournal::setMaximumSize(qint64 bytes)
{
    std::lock_guard lock(m_lock);
    m_maximumSize = bytes;
}

qint64 UndoJournal::fileSize() const
{
    std::lock_guard lock(m_lock);
    struct stat status = {};
    return m_fd >= 0 && fstat(m_fd, &status) == 0 ? qint64(status.st_size) : 0;
}

void UndoJournal::readFile()
{
    m_commands.clear();
    m_index.clear();
    m_lastWritten.clear();
    m_nextId = 1;
    if (m_fd < 0)
        return;
    QFile file(m_filePath);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray content = file.readAll();
    // A last line without its line feed was cut off and never counted; it goes, so that the
    // next line appended starts a line of its own.
    const qsizetype end = content.lastIndexOf('\n');
    if (end + 1 < content.size() && ftruncate(m_fd, end + 1) != 0)
        Log::line(u"Undo journal: can't mend "_s + m_filePath);
    if (end < 0)
        return;
    for (const QByteArray &line : QByteArrayView(content).first(end).toByteArray().split('\n'))
        apply(line);
}

UndoJournal::Command *UndoJournal::command(quint64 id)
{
    const auto found = m_index.constFind(id);
    return found == m_index.constEnd() ? nullptr : &m_commands[*found];
}

const UndoJournal::Command *UndoJournal::find(quint64 id) const
{
    const auto found = m_index.constFind(id);
    return found == m_index.constEnd() ? nullptr : &m_commands[*found];
}

// Applies one line to the commands in memory; a damaged line changes nothing.
void UndoJournal::apply(const QByteArray &line)
{
    const QList<QByteArray> fields = line.split(' ');
    bool ok = false;
    const quint64 id = fields.value(1).toULongLong(&ok);
    if (!ok || id == 0)
        return;
    if (fields.at(0) == "C" && fields.size() == 5 && !m_index.contains(id)) {
        Command added;
        added.id = id;
        const QByteArray &kind = fields.at(2);
        added.kind = kind == "u" ? Kind::undo : kind == "r" ? Kind::redo : Kind::edit;
        added.reverses = fields.at(3).toULongLong();
        added.what = decoded(fields.at(4));
        m_index.insert(id, m_commands.size());
        m_commands << added;
        m_nextId = std::max(m_nextId, id + 1);
        return;
    }
    Command *target = command(id);
    if (!target)
        return;
    const QString path = decoded(fields.value(2));
    if (fields.at(0) == "F" && fields.size() == 5) {
        target->files << FileRecord {path, decodedList(fields.at(3)), decodedList(fields.at(4)),
                                     std::nullopt};
    } else if (fields.at(0) == "D" && fields.size() == 5) {
        bool timeOk = false;
        bool sizeOk = false;
        const FileStamp stamp {fields.at(3).toLongLong(&timeOk), fields.at(4).toLongLong(&sizeOk)};
        if (!timeOk || !sizeOk)
            return;
        for (qsizetype i = target->files.size() - 1; i >= 0; --i) {
            if (target->files.at(i).path == path && !target->files.at(i).after) {
                target->files[i].after = stamp;
                m_lastWritten.insert(path, stamp);
                break;
            }
        }
    }
}

void UndoJournal::append(const QByteArray &line)
{
    if (m_fd >= 0 && !writeAll(m_fd, line))
        Log::line(u"Undo journal: can't write to "_s + m_filePath);
    apply(line.chopped(1));
}

quint64 UndoJournal::beginCommand(Kind kind, quint64 reverses, const QString &what)
{
    std::lock_guard lock(m_lock);
    if (m_fd < 0)
        return 0;
    Command added;
    added.id = m_nextId;
    added.kind = kind;
    added.reverses = reverses;
    added.what = what;
    append(commandLine(added));
    return added.id;
}

void UndoJournal::willWrite(quint64 command, const QString &path, const QStringList &written,
                            const QStringList &reversing)
{
    std::lock_guard lock(m_lock);
    if (m_fd >= 0 && command != 0)
        append(fileLine(command, path, written, reversing));
}

void UndoJournal::didWrite(quint64 command, const QString &path, const FileStamp &stamp)
{
    std::lock_guard lock(m_lock);
    if (m_fd >= 0 && command != 0)
        append(stampLine(command, path, stamp));
}

void UndoJournal::sync()
{
    std::lock_guard lock(m_lock);
    if (m_fd < 0)
        return;
    fdatasync(m_fd);
    struct stat status = {};
    if (fstat(m_fd, &status) == 0 && qint64(status.st_size) > m_maximumSize)
        compact();
}

// Keeps the newest commands that fit in half the bound (at least the newest one), written to a
// new file that takes the old one's place.
void UndoJournal::compact()
{
    QList<QByteArray> kept;
    qint64 size = 0;
    qsizetype first = m_commands.size();
    for (qsizetype i = m_commands.size() - 1; i >= 0; --i) {
        const Command &kept_command = m_commands.at(i);
        QByteArray text = commandLine(kept_command);
        for (const FileRecord &file : kept_command.files) {
            text += fileLine(kept_command.id, file.path, file.written, file.reversing);
            if (file.after)
                text += stampLine(kept_command.id, file.path, *file.after);
        }
        if (first < m_commands.size() && size + text.size() > m_maximumSize / 2)
            break;
        size += text.size();
        kept.prepend(text);
        first = i;
    }
    const QString temporary = m_filePath + u".new"_s;
    const int fd = open(QFile::encodeName(temporary).constData(),
                        O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return;
    bool written = true;
    for (const QByteArray &text : std::as_const(kept))
        written = written && writeAll(fd, text);
    if (!written || fsync(fd) != 0
        || rename(QFile::encodeName(temporary).constData(),
                  QFile::encodeName(m_filePath).constData())
            != 0) {
        close(fd);
        unlink(QFile::encodeName(temporary).constData());
        return;
    }
    close(fd);
    close(m_fd);
    m_fd = open(QFile::encodeName(m_filePath).constData(), O_RDWR | O_APPEND | O_CLOEXEC);
    const quint64 nextId = m_nextId;
    readFile();
    m_nextId = std::max(m_nextId, nextId);
}

// The undo stack (or the redo stack), oldest first, rebuilt from the commands in order: an edit
// or a redo goes on the undo stack, an undo moves its command to the redo stack, a redo moves it
// back, and an edit clears the redo stack. An edit that changed no file counts for nothing.
QList<quint64> UndoJournal::stack(bool undo) const
{
    QList<quint64> undoStack;
    QList<quint64> redoStack;
    for (const Command &each : m_commands) {
        switch (each.kind) {
        case Kind::edit:
            if (each.writtenFiles().isEmpty())
                break;
            undoStack << each.id;
            redoStack.clear();
            break;
        case Kind::undo:
            undoStack.removeAll(each.reverses);
            redoStack << each.id;
            break;
        case Kind::redo:
            redoStack.removeAll(each.reverses);
            undoStack << each.id;
            break;
        }
    }
    return undo ? undoStack : redoStack;
}

std::optional<UndoJournal::Command> UndoJournal::undoable() const
{
    std::lock_guard lock(m_lock);
    const QList<quint64> ids = stack(true);
    if (ids.isEmpty())
        return std::nullopt;
    return *find(ids.last());
}

std::optional<UndoJournal::Command> UndoJournal::redoable() const
{
    std::lock_guard lock(m_lock);
    const QList<quint64> ids = stack(false);
    if (ids.isEmpty())
        return std::nullopt;
    return *find(ids.last());
}

std::optional<FileStamp> UndoJournal::lastWritten(const QString &path) const
{
    std::lock_guard lock(m_lock);
    const auto found = m_lastWritten.constFind(path);
    if (found == m_lastWritten.constEnd())
        return std::nullopt;
    return *found;
}

QList<UndoJournal::Command> UndoJournal::commands() const
{
    std::lock_guard lock(m_lock);
    return m_commands;
}

QString UndoJournal::describeTags(const QStringList &tagValuePairs)
{
    QStringList names;
    for (qsizetype i = 0; i < tagValuePairs.size(); i += 2) {
        const QString name = fieldName(tagValuePairs.at(i));
        if (!names.contains(name))
            names << name;
    }
    if (names.size() <= 1)
        return names.value(0);
    const QString last = names.takeLast();
    return names.join(u", "_s) + u" and "_s + last;
}
