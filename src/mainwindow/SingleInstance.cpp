#include "SingleInstance.h"

#include "commons/Log.h"
#include "platform/UserDefaults.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>

#include <unistd.h>

namespace {

constexpr char acknowledgement[] = "ok\n";

} // namespace

SingleInstance::SingleInstance(QString serverName, QObject *parent)
    : QObject(parent)
    , serverName(std::move(serverName))
{ }

SingleInstance::~SingleInstance() = default;

QString SingleInstance::defaultServerName()
{
    const QByteArray settings = UserDefaults::standard().filePath().toUtf8();
    const QByteArray digest
        = QCryptographicHash::hash(settings, QCryptographicHash::Sha256).toHex().left(12);
    return QStringLiteral("palomet-%1-%2").arg(::getuid()).arg(QString::fromLatin1(digest));
}

bool SingleInstance::handOverToRunningInstance(const QStringList &paths, int timeoutMs) const
{
    QLocalSocket socket;
    socket.connectToServer(serverName);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    QByteArray message
        = QJsonDocument(QJsonArray::fromStringList(paths)).toJson(QJsonDocument::Compact);
    message += '\n';
    socket.write(message);
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(timeoutMs))
            return false;
    }
    return socket.readLine() == acknowledgement;
}

bool SingleInstance::listen(std::function<void(const QStringList &)> handler)
{
    m_handler = std::move(handler);
    // A running instance answers; listening would take its name away from it.
    {
        QLocalSocket probe;
        probe.connectToServer(serverName);
        if (probe.waitForConnected(500))
            return false;
    }
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server->listen(serverName)) {
        // A socket left by a run that crashed answers nobody: it may be taken over.
        QLocalServer::removeServer(serverName);
        if (!m_server->listen(serverName)) {
            Log::line(QStringLiteral("Palomet: cannot listen for other starts: %1")
                          .arg(m_server->errorString()));
            return false;
        }
    }
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server->nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                if (!socket->canReadLine())
                    return;
                const QJsonDocument document = QJsonDocument::fromJson(socket->readLine());
                QStringList paths;
                for (const QJsonValue &value : document.array()) {
                    if (value.isString())
                        paths << value.toString();
                }
                socket->write(acknowledgement);
                socket->flush();
                if (m_handler && !paths.isEmpty())
                    m_handler(paths);
            });
        }
    });
    return true;
}
