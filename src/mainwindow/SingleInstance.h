#pragma once

#include <QObject>
#include <QStringList>

#include <functional>

class QLocalServer;

// One Palomet per user and settings file: the first start listens on a local socket; a later
// start hands its paths to it and exits, so two processes never write the same files. The
// socket's name holds the user's id and a digest of the settings file's path, so runs with their
// own settings (tests, benchmarks) stay apart. Main thread only.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    explicit SingleInstance(QString serverName = defaultServerName(), QObject *parent = nullptr);
    ~SingleInstance() override;

    static QString defaultServerName();

    // Gives the paths to a running instance; true when one took them.
    bool handOverToRunningInstance(const QStringList &paths, int timeoutMs = 3000) const;
    // Becomes the running instance; paths handed over later go to the handler. False when the
    // name cannot be taken.
    bool listen(std::function<void(const QStringList &paths)> handler);

    const QString serverName;

private:
    QLocalServer *m_server = nullptr;
    std::function<void(const QStringList &)> m_handler;
};
