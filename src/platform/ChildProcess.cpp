#include "ChildProcess.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace ChildProcess {

Started start(const QString &program, const QList<QByteArray> &arguments, const QString &directory,
              Input input, ErrorOutput errorOutput,
              const std::optional<QList<QByteArray>> &environment)
{
    Started started;
    int inputPipe[2] = {-1, -1};
    int outputPipe[2] = {-1, -1};
    if ((input == Input::Pipe && pipe2(inputPipe, O_CLOEXEC) != 0)
        || pipe2(outputPipe, O_CLOEXEC) != 0) {
        started.launchError = errno;
        for (int fd : {inputPipe[0], inputPipe[1]})
            if (fd >= 0)
                close(fd);
        return started;
    }

    const QByteArray path = QFile::encodeName(program);
    const QByteArray folder = QFile::encodeName(directory);
    std::vector<char *> argv;
    argv.push_back(const_cast<char *>(path.constData()));
    for (const QByteArray &argument : arguments)
        argv.push_back(const_cast<char *>(argument.constData()));
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (input == Input::Pipe)
        posix_spawn_file_actions_adddup2(&actions, inputPipe[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, outputPipe[1], STDOUT_FILENO);
    if (errorOutput == ErrorOutput::IntoOutput)
        posix_spawn_file_actions_adddup2(&actions, outputPipe[1], STDERR_FILENO);
    posix_spawn_file_actions_addchdir_np(&actions, folder.constData());

    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    std::vector<char *> envp;
    if (environment) {
        for (const QByteArray &variable : *environment)
            envp.push_back(const_cast<char *>(variable.constData()));
        envp.push_back(nullptr);
    }
    const int error = posix_spawn(&started.pid, path.constData(), &actions, &attributes,
                                  argv.data(), environment ? envp.data() : environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);

    if (input == Input::Pipe)
        close(inputPipe[0]);
    close(outputPipe[1]);
    if (error != 0) {
        if (input == Input::Pipe)
            close(inputPipe[1]);
        close(outputPipe[0]);
        started = Started();
        started.launchError = error;
        return started;
    }
    started.input = input == Input::Pipe ? inputPipe[1] : -1;
    started.output = outputPipe[0];
    return started;
}

bool writeAll(int fd, const QByteArray &data)
{
    sigset_t pipeSignal;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    sigset_t previous;
    pthread_sigmask(SIG_BLOCK, &pipeSignal, &previous);

    bool written = true;
    qsizetype done = 0;
    while (done < data.size()) {
        const ssize_t count = write(fd, data.constData() + done, size_t(data.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            written = false;
            break;
        }
        done += count;
    }
    if (!written) {
        // Take away the SIGPIPE that the failed write left pending on this thread.
        const timespec noWait {0, 0};
        while (sigtimedwait(&pipeSignal, nullptr, &noWait) == SIGPIPE) { }
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    return written;
}

QByteArray readToEnd(int fd)
{
    QByteArray data;
    char buffer[16384];
    for (;;) {
        const ssize_t count = read(fd, buffer, sizeof buffer);
        if (count > 0)
            data.append(buffer, count);
        else if (count == 0 || errno != EINTR)
            break;
    }
    return data;
}

Exit waitForExit(pid_t pid)
{
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) { }
    if (WIFSIGNALED(status))
        return {WTERMSIG(status), true};
    return {WEXITSTATUS(status), false};
}

void reapInBackground(pid_t pid)
{
    std::thread([pid] { waitForExit(pid); }).detach();
}

std::optional<std::chrono::nanoseconds> processorTime(pid_t pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray line = stat.readAll();
    // The command name may hold spaces; the fields after it are counted from its closing bracket.
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    // State is the first field here, utime the 12th and stime the 13th.
    if (fields.size() < 13 || fields[0] == "Z")
        return std::nullopt;
    static const long ticksPerSecond = sysconf(_SC_CLK_TCK);
    const long long ticks = fields[11].toLongLong() + fields[12].toLongLong();
    return std::chrono::nanoseconds(ticks * 1'000'000'000LL / ticksPerSecond);
}

} // namespace ChildProcess
