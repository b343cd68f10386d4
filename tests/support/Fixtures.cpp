#include "Fixtures.h"

#include "TestSupport.h"
#include "platform/Resources.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <cstring>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace Fixtures {

QString exifToolPath()
{
    return Resources::path(u"exiftool/exiftool"_s);
}

bool run(const QString &program, const QStringList &arguments, QByteArray *output)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    if (!process.waitForFinished(60000)) {
        qWarning("%s did not finish", qPrintable(program));
        process.kill();
        process.waitForFinished();
        return false;
    }
    if (output)
        *output = process.readAllStandardOutput();
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

bool writeTags(const QString &path, const QStringList &exifToolArguments)
{
    if (exifToolArguments.isEmpty())
        return true;
    return run(exifToolPath(),
               QStringList {u"-q"_s, u"-overwrite_original"_s} + exifToolArguments
                   + QStringList {path});
}

namespace {

QString madeWith(const QString &path, const QString &program, const QStringList &arguments,
                 const QStringList &exifToolArguments)
{
    if (!run(program, arguments) || !writeTags(path, exifToolArguments)) {
        QTest::qFail(qPrintable(u"Could not make "_s + path), __FILE__, __LINE__);
        return QString();
    }
    return path;
}

} // namespace

QString makeJpeg(const QString &directory, const QString &name,
                 const QStringList &exifToolArguments)
{
    const QString path = QDir(directory).filePath(name);
    return madeWith(path, u"convert"_s,
                    {u"-size"_s, u"16x16"_s, u"xc:steelblue"_s, u"jpg:"_s + path},
                    exifToolArguments);
}

QString makePng(const QString &directory, const QString &name, const QStringList &exifToolArguments)
{
    const QString path = QDir(directory).filePath(name);
    return madeWith(path, u"convert"_s, {u"-size"_s, u"16x16"_s, u"xc:orange"_s, u"png:"_s + path},
                    exifToolArguments);
}

QString makeGif(const QString &directory, const QString &name, const QStringList &exifToolArguments)
{
    const QString path = QDir(directory).filePath(name);
    return madeWith(path, u"convert"_s, {u"-size"_s, u"16x16"_s, u"xc:olive"_s, u"gif:"_s + path},
                    exifToolArguments);
}

namespace {

// One second of a synthetic lavfi source, encoded by ffmpeg into the container of name.
QString madeByFfmpeg(const QString &directory, const QString &name, const QString &source,
                     const QStringList &ffmpegOptions)
{
    const QString path = QDir(directory).filePath(name);
    const QStringList input = {u"-nostdin"_s, u"-loglevel"_s, u"error"_s, u"-y"_s,
                               u"-f"_s,       u"lavfi"_s,     u"-i"_s,    source};
    return madeWith(path, u"ffmpeg"_s, input + ffmpegOptions + QStringList {path}, {});
}

} // namespace

QString makeVideo(const QString &directory, const QString &name, const QStringList &ffmpegOptions)
{
    return madeByFfmpeg(directory, name, u"color=c=blue:s=32x32:d=1"_s, ffmpegOptions);
}

QString makeAudio(const QString &directory, const QString &name, const QStringList &ffmpegOptions)
{
    return madeByFfmpeg(directory, name, u"sine=frequency=440:duration=1"_s, ffmpegOptions);
}

QString makeFile(const QString &directory, const QString &name, const QByteArray &bytes)
{
    const QString path = QDir(directory).filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        QTest::qFail(qPrintable(u"Could not write "_s + path), __FILE__, __LINE__);
        return QString();
    }
    return path;
}

QMap<QString, QString> makeUnreadableFiles(const QString &directory, const QString &name,
                                           const QString &extension)
{
    const auto pathOf = [&](const QString &kind) {
        return QDir(directory).filePath(name + u'-' + kind + u'.' + extension);
    };
    QMap<QString, QString> files;
    files.insert(u"named pipe"_s, pathOf(u"pipe"_s));
    files.insert(u"socket"_s, pathOf(u"socket"_s));
    files.insert(u"device"_s, pathOf(u"device"_s));
    files.insert(u"read error"_s, pathOf(u"read-error"_s));

    bool made = ::mkfifo(QFile::encodeName(files[u"named pipe"_s]).constData(), 0600) == 0;
    // A socket's file stays after the socket is closed, as one left behind by a crashed program.
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray socketPath = QFile::encodeName(files[u"socket"_s]);
    made = made && size_t(socketPath.size()) < sizeof address.sun_path;
    if (made) {
        std::memcpy(address.sun_path, socketPath.constData(), size_t(socketPath.size()));
        const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
        made = socket >= 0
            && ::bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
        if (socket >= 0)
            ::close(socket);
    }
    made = made && QFile::link(u"/dev/zero"_s, files[u"device"_s])
        && QFile::link(u"/proc/self/mem"_s, files[u"read error"_s]);
    if (!made) {
        QTest::qFail(qPrintable(u"Could not make unreadable files in "_s + directory), __FILE__,
                     __LINE__);
        return {};
    }
    return files;
}

QString makeScript(const QString &directory, const QString &name, const QByteArray &text)
{
    const QString path = makeFile(directory, name, text);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

NodePtr readNode(const QString &path)
{
    const NodePtr node = FileNode::create(QFileInfo(path).fileName(), path, QString());
    const bool read = TestSupport::waitUntil(
        [&] { return node->getDisplayString(u"GPSDataAvailable"_s).isPresent(); }, 20000);
    return read ? node : NodePtr();
}

} // namespace Fixtures
