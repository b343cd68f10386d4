#include "ExifWriteManager.h"

#include "commons/Log.h"
#include "platform/Resources.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace {

struct WorkerRun
{
    bool launched = false;
    int launchError = 0;
    int terminationStatus = 0;
    bool killedBySignal = false;
    QByteArray output;
};

// Starts the worker and waits for it; the one place where the child's life is handled. One
// pipe takes both standard output and standard error, and the environment is inherited. The
// pipe is drained before the child is reaped, so a chatty worker cannot stall on a full pipe.
WorkerRun runWorker(const QString &executable, const QString &workingDirectory,
                    const QList<QByteArray> &arguments)
{
    WorkerRun run;
    int pipeFds[2];
    if (pipe2(pipeFds, O_CLOEXEC) != 0) {
        run.launchError = errno;
        return run;
    }

    const QByteArray program = QFile::encodeName(executable);
    const QByteArray directory = QFile::encodeName(workingDirectory);
    std::vector<char *> argv;
    argv.push_back(const_cast<char *>(program.constData()));
    for (const QByteArray &argument : arguments)
        argv.push_back(const_cast<char *>(argument.constData()));
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDERR_FILENO);
    posix_spawn_file_actions_addchdir_np(&actions, directory.constData());

    pid_t pid = 0;
    const int spawnError
        = posix_spawn(&pid, program.constData(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeFds[1]);
    if (spawnError != 0) {
        close(pipeFds[0]);
        run.launchError = spawnError;
        return run;
    }
    run.launched = true;

    char buffer[4096];
    for (;;) {
        const ssize_t count = read(pipeFds[0], buffer, sizeof buffer);
        if (count > 0)
            run.output.append(buffer, count);
        else if (count == 0 || errno != EINTR)
            break;
    }
    close(pipeFds[0]);

    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) { }
    if (WIFSIGNALED(status)) {
        run.killedBySignal = true;
        run.terminationStatus = WTERMSIG(status);
    } else {
        run.terminationStatus = WEXITSTATUS(status);
    }
    return run;
}

QString errorText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

void printToStandardOutput(const QString &text)
{
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

} // namespace

ExifWriteManager &ExifWriteManager::shared()
{
    static ExifWriteManager &instance = *new ExifWriteManager;
    return instance;
}

bool ExifWriteManager::setTagsOfFile(const QString &path, const QStringList &tagValuePairs,
                                     std::optional<QString> &errorMessage)
{
    if (tagValuePairs.size() % 2 != 0)
        qFatal("setTagsOfFile: the tag and value list has an odd length (%lld)",
               static_cast<long long>(tagValuePairs.size()));

    const QFileInfo info(path);
    if (info.exists() && info.isDir()) {
        errorMessage = QStringLiteral("Path is a directory");
        return false;
    }

    const FileAttributes attributes = readAttributes(path);

    const QString script = Resources::path(QStringLiteral("set_tag.pl"));
    if (!QFileInfo::exists(script)) {
        errorMessage = QStringLiteral("Failed to locate exiftool");
        return false;
    }

    const WorkerRun run
        = runWorker(script, QFileInfo(script).absolutePath(), workerArguments(path, tagValuePairs));
    if (!run.launched) {
        Log::line(QStringLiteral("Failed to run task: ") + errorText(run.launchError));
        errorMessage = QStringLiteral("Failed to launch exiftool: ") + errorText(run.launchError);
        return false;
    }

    if (run.killedBySignal) {
        // A worker stopped before its rename leaves ExifTool's temporary copy beside the file,
        // where scans would list it and the next write would refuse to start.
        const QString written = info.isSymLink() ? info.canonicalFilePath() : path;
        QFile::remove(written + QStringLiteral("_exiftool_tmp"));
    } else if (run.terminationStatus == 0) {
        reapplyExistingAttributes(attributes, path);
        return true;
    }

    errorMessage = parseExifToolError(QString::fromUtf8(run.output), run.terminationStatus);
    return false;
}

QList<QByteArray> ExifWriteManager::workerArguments(const QString &path,
                                                    const QStringList &tagValuePairs)
{
    QList<QByteArray> arguments;
    arguments.reserve(tagValuePairs.size() + 2);
    arguments << QFile::encodeName(path) << QByteArrayLiteral("<none>");
    for (qsizetype i = 0; i + 1 < tagValuePairs.size(); i += 2) {
        arguments << tagValuePairs[i].toUtf8();
        arguments << tagValuePairs[i + 1].toUtf8().toBase64();
    }
    return arguments;
}

QString ExifWriteManager::parseExifToolError(const QString &output, int terminationStatus)
{
    static const std::pair<const char *, const char *> knownCauses[] = {
        {"Permission denied", "Permission denied"},
        {"File not found", "File not found"},
        {"does not exist", "File not found"},
        {"read-only", "File is read-only"},
        {"locked", "File is locked"},
        {"in use", "File is in use"},
        {"No space", "Disk is full"},
        {"Disk full", "Disk is full"},
    };
    for (const auto &[needle, message] : knownCauses) {
        if (output.contains(QLatin1String(needle)))
            return QString::fromLatin1(message);
    }
    if (output.isEmpty())
        return QStringLiteral("Unknown error (exit code %1)").arg(terminationStatus);

    static const QRegularExpression newline(QStringLiteral("[\\n\\r\\x{2028}\\x{2029}]"));
    const QStringList lines = output.split(newline);
    if (lines.isEmpty())
        return QStringLiteral("Unknown error");
    return lines.first();
}

ExifWriteManager::FileAttributes ExifWriteManager::readAttributes(const QString &path)
{
    FileAttributes attributes;
    struct stat status;
    if (stat(QFile::encodeName(path).constData(), &status) != 0)
        return attributes;
    attributes.modificationDate = status.st_mtim;
    attributes.permissions = status.st_mode & 07777;
    attributes.owner = status.st_uid;
    attributes.group = status.st_gid;
    return attributes;
}

// Each step stands on its own, and none fails the write: the tags are in the file by now.
void ExifWriteManager::reapplyExistingAttributes(const FileAttributes &attributes,
                                                 const QString &path)
{
    const QByteArray nativePath = QFile::encodeName(path);

    if (attributes.modificationDate) {
        const timespec times[2] = {{0, UTIME_OMIT}, *attributes.modificationDate};
        if (utimensat(AT_FDCWD, nativePath.constData(), times, 0) != 0)
            printToStandardOutput(QStringLiteral("Failed to set modification date: ")
                                  + errorText(errno));
    }

    // Owner before mode: a change of owner clears the set-user-ID and set-group-ID bits.
    QStringList failures;
    struct stat now;
    const bool known = stat(nativePath.constData(), &now) == 0;
    bool ownerChanged = false;
    if (attributes.owner && attributes.group
        && (!known || now.st_uid != *attributes.owner || now.st_gid != *attributes.group)) {
        ownerChanged = chown(nativePath.constData(), *attributes.owner, *attributes.group) == 0;
        if (!ownerChanged)
            failures << errorText(errno);
    }
    if (attributes.permissions
        && (!known || ownerChanged || (now.st_mode & 07777) != *attributes.permissions)) {
        if (chmod(nativePath.constData(), *attributes.permissions) != 0)
            failures << errorText(errno);
    }
    if (!failures.isEmpty())
        printToStandardOutput(QStringLiteral("Failed to set remaining attributes: ")
                              + failures.join(QStringLiteral("; ")));
}
