#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <chrono>
#include <optional>
#include <sys/types.h>

// Starting and talking to the workers: children with pipes, as POSIX offers them. The pipes are
// close-on-exec, so that no other child holds a worker's pipes open, and the child starts with
// no blocked signals and a default SIGPIPE, whatever the starting thread has.
namespace ChildProcess {

enum class Input { Pipe, Inherited };
enum class ErrorOutput { IntoOutput, Inherited };

struct Started
{
    pid_t pid = -1;
    int input = -1; // our end of the child's standard input, or -1
    int output = -1; // our end of the child's standard output
    int launchError = 0; // errno of a failed start; then nothing is open
};

// Starts program (its own executable) with the arguments, in directory, with the environment
// given as NAME=VALUE entries or else ours.
Started start(const QString &program, const QList<QByteArray> &arguments, const QString &directory,
              Input input, ErrorOutput errorOutput,
              const std::optional<QList<QByteArray>> &environment = std::nullopt);

// Writes all of data; false when the reader is gone. SIGPIPE is held back on this thread
// meanwhile, so a dead child can't end the application.
bool writeAll(int fd, const QByteArray &data);

// Reads until end of file.
QByteArray readToEnd(int fd);

struct Exit
{
    int status = 0; // exit status, or the signal's number
    bool killedBySignal = false;
};
Exit waitForExit(pid_t pid);

// For a child that is let go: reaping it must not hold anyone up.
void reapInBackground(pid_t pid);

// The processor time the child has used so far (user and system); absent once it is gone.
std::optional<std::chrono::nanoseconds> processorTime(pid_t pid);

} // namespace ChildProcess
