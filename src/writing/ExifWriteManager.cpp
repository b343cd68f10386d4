#include "ExifWriteManager.h"

#include "FileReplacement.h"
#include "WriteWorker.h"
#include "commons/Log.h"
#include "platform/ChildProcess.h"
#include "platform/Resources.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace {

QString errorText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

QString workerScript()
{
    return Resources::path(QStringLiteral("set_tag.pl"));
}

std::optional<QString> launchFailure(int error)
{
    Log::line(QStringLiteral("Failed to run task: ") + errorText(error));
    return QStringLiteral("Failed to launch exiftool: ") + errorText(error);
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
    return writeFile(
        path, tagValuePairs, errorMessage,
        [](const FileReplacement &replacement, const QStringList &pairs) {
            const QString script = workerScript();
            // One pipe takes both outputs; it is drained before the child is
            // reaped, so a chatty worker can't stall on a full pipe.
            const ChildProcess::Started started = ChildProcess::start(
                script, workerArguments(replacement.target(), replacement.temporaryPath(), pairs),
                QFileInfo(script).absolutePath(), ChildProcess::Input::Inherited,
                ChildProcess::ErrorOutput::IntoOutput);
            if (started.launchError != 0)
                return WorkerResult {0, QString(), launchFailure(started.launchError), {}};
            const QByteArray output = ChildProcess::readToEnd(started.output);
            close(started.output);
            const ChildProcess::Exit exit = ChildProcess::waitForExit(started.pid);
            return WorkerResult {exit.status, QString::fromUtf8(output), std::nullopt, {}};
        });
}

bool ExifWriteManager::setTagsOfFile(const QString &path, const QStringList &tagValuePairs,
                                     std::optional<QString> &errorMessage, WriteWorker &worker,
                                     WriteRecording *recording)
{
    return writeFile(
        path, tagValuePairs, errorMessage,
        [&worker](const FileReplacement &replacement, const QStringList &pairs) {
            const WriteWorker::Answer answer
                = worker.write(replacement.target(), replacement.temporaryPath(), pairs);
            using Outcome = WriteWorker::Answer::Outcome;
            switch (answer.outcome) {
            case Outcome::answered:
                return WorkerResult {answer.status, answer.output, std::nullopt, answer.undoPairs};
            case Outcome::notStarted:
                return WorkerResult {0, QString(), launchFailure(answer.launchError), {}};
            case Outcome::stopped:
                return WorkerResult {0,
                                     QString(),
                                     QStringLiteral("The write worker stopped unexpectedly; the "
                                                    "file was left as it was"),
                                     {}};
            case Outcome::hung:
                return WorkerResult {0,
                                     QString(),
                                     QStringLiteral("The write worker stopped answering; the file "
                                                    "was left as it was"),
                                     {}};
            }
            return WorkerResult {};
        },
        recording);
}

bool ExifWriteManager::writeFile(const QString &path, const QStringList &tagValuePairs,
                                 std::optional<QString> &errorMessage, const WorkerRun &run,
                                 WriteRecording *recording)
{
    if (tagValuePairs.size() % 2 != 0)
        qFatal("setTagsOfFile: the tag and value list has an odd length (%lld)",
               static_cast<long long>(tagValuePairs.size()));

    if (QFileInfo(path).isDir()) {
        errorMessage = QStringLiteral("Path is a directory");
        return false;
    }
    if (!QFileInfo::exists(workerScript())) {
        errorMessage = QStringLiteral("Failed to locate exiftool");
        return false;
    }

    // The undo of a file that a write made (a new sidecar) removes it.
    if (tagValuePairs == removalPairs()) {
        if (recording && recording->willReplace)
            recording->willReplace({});
        if (unlink(QFile::encodeName(path).constData()) != 0 && errno != ENOENT) {
            errorMessage = parseExifToolError(QStringLiteral("Error: ") + errorText(errno), 1);
            return false;
        }
        if (recording)
            recording->written = FileStamp::absent();
        return true;
    }

    const std::unique_ptr<FileReplacement> replacement
        = FileReplacement::prepare(path, errorMessage);
    if (!replacement)
        return false;

    const WorkerResult result = run(*replacement, tagValuePairs);
    if (result.failure) {
        errorMessage = result.failure;
        return false;
    }
    if (result.status != 0) {
        errorMessage = parseExifToolError(result.output, result.status);
        return false;
    }
    if (recording && recording->willReplace)
        recording->willReplace(result.undoPairs);
    QString why;
    if (!replacement->commit(&why)) {
        errorMessage = parseExifToolError(QStringLiteral("Error: ") + why, 1);
        return false;
    }
    if (recording)
        recording->written = FileStamp::of(replacement->target());
    return true;
}

const QStringList &ExifWriteManager::removalPairs()
{
    static const QStringList pairs = {QStringLiteral("=File:*"), QStringLiteral("-")};
    return pairs;
}

QList<QByteArray> ExifWriteManager::workerArguments(const QString &path, const QString &destination,
                                                    const QStringList &tagValuePairs)
{
    QList<QByteArray> arguments;
    arguments.reserve(tagValuePairs.size() + 2);
    arguments << QFile::encodeName(path) << QFile::encodeName(destination);
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

    // The first line that says anything; output that starts with a line break still has one.
    static const QRegularExpression newline(QStringLiteral("[\\n\\r\\x{2028}\\x{2029}]"));
    const QStringList lines = output.split(newline);
    for (const QString &line : lines) {
        if (!line.trimmed().isEmpty())
            return line;
    }
    return QStringLiteral("Unknown error");
}
