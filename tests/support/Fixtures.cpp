#include "Fixtures.h"

#include "TestSupport.h"
#include "platform/Resources.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

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
