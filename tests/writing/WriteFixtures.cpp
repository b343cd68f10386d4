#include "WriteFixtures.h"

#include "platform/Resources.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

#include <cmath>
#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace WriteFixtures {

namespace {

const QStringList imageTypes = {u"jpg"_s, u"tif"_s, u"png"_s, u"heic"_s, u"webp"_s};

// What every image carries before a write; IPTC where the type holds it, in Latin-1 as
// ExifTool stores it by default, so that a later UTF-8 write must keep it readable.
QStringList imageMetadata(const QString &extension)
{
    QStringList arguments = {u"-EXIF:Make=PalometCam"_s,
                             u"-EXIF:Model=Field Unit"_s,
                             u"-EXIF:DateTimeOriginal=2019:05:06 07:08:09"_s,
                             u"-EXIF:Artist=Jürgen Weiß"_s,
                             u"-XMP-dc:Title=Harbour at dawn"_s,
                             u"-XMP-dc:Subject=boats"_s};
    if (extension == u"jpg" || extension == u"tif")
        arguments << u"-IPTC:Keywords=Bäume"_s << u"-IPTC:Keywords=Küste"_s
                  << u"-IPTC:By-line=Jürgen"_s << u"-IPTC:ObjectName=Hafen"_s
                  << u"-IPTC:Province-State=Baden-Württemberg"_s;
    return arguments;
}

QString failure(const QString &what, const CommandResult &result)
{
    return what + u": "_s + QString::fromUtf8(result.standardError).trimmed();
}

} // namespace

CommandResult run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    CommandResult result;
    if (!process.waitForStarted(10000)) {
        result.standardError = process.errorString().toUtf8();
        return result;
    }
    process.closeWriteChannel();
    process.waitForFinished(120000);
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.standardOutput = process.readAllStandardOutput();
    result.standardError = process.readAllStandardError();
    return result;
}

CommandResult exifTool(const QStringList &arguments)
{
    return run(u"perl"_s, QStringList {Resources::path(u"exiftool/exiftool"_s)} + arguments);
}

QString makeFixture(const QString &path)
{
    const QString extension = QFileInfo(path).suffix().toLower();
    const QStringList ffmpeg = {u"-y"_s, u"-v"_s, u"error"_s};
    const QStringList video = {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc=size=64x48:rate=10"_s};
    const QStringList audio = {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=frequency=440"_s};
    const QStringList tags
        = {u"-metadata"_s, u"title=Harbour at dawn"_s, u"-metadata"_s, u"artist=Jürgen Weiß"_s};
    const QStringList oneSecond = {u"-t"_s, u"1"_s};

    CommandResult result;
    if (imageTypes.contains(extension)) {
        result = run(u"convert"_s, {u"-size"_s, u"64x48"_s, u"gradient:red-blue"_s, path});
        if (result.exitCode != 0)
            return failure(u"convert"_s, result);
        result = exifTool(QStringList {u"-q"_s, u"-overwrite_original"_s} + imageMetadata(extension)
                          + QStringList {path});
        return result.exitCode == 0 ? QString() : failure(u"exiftool"_s, result);
    }

    QStringList arguments = ffmpeg;
    if (extension == u"mp4" || extension == u"mov" || extension == u"mkv" || extension == u"avi") {
        arguments << video << audio << oneSecond;
        if (extension == u"mp4" || extension == u"mov")
            arguments << u"-c:v"_s << u"libx264"_s << u"-pix_fmt"_s << u"yuv420p"_s << u"-c:a"_s
                      << u"aac"_s;
    } else if (extension == u"m4a") {
        arguments << audio << oneSecond << u"-c:a"_s << u"aac"_s;
    } else if (extension == u"ogg") {
        arguments << audio << oneSecond << u"-c:a"_s << u"libvorbis"_s;
    } else {
        arguments << audio << oneSecond;
    }
    arguments << tags << path;
    result = run(u"ffmpeg"_s, arguments);
    if (result.exitCode != 0)
        return failure(u"ffmpeg"_s, result);

    // A position with an altitude, which a new position must keep.
    if (extension == u"mov") {
        result = exifTool({u"-q"_s, u"-overwrite_original"_s, u"-n"_s,
                           u"-UserData:GPSCoordinates=10.5 20.25 123.5"_s, path});
        if (result.exitCode != 0)
            return failure(u"exiftool"_s, result);
    }
    return QString();
}

QString makeLargeFixture(const QString &path, int kilopixels)
{
    const int side = int(std::sqrt(kilopixels * 1000.0));
    const QString size = QString::number(side) + u"x"_s + QString::number(side);
    const CommandResult result = run(u"convert"_s,
                                     {u"-size"_s, size, u"gradient:red-blue"_s, u"-depth"_s, u"8"_s,
                                      u"-compress"_s, u"none"_s, path});
    return result.exitCode == 0 ? QString() : failure(u"convert"_s, result);
}

MetadataDump metadataDump(const QString &path)
{
    // The listing rather than -j: ExifTool's JSON keeps one value of a name repeated within a
    // group (a QuickTime file has a handler per box), and a repeat must be compared as well.
    const CommandResult result = exifTool({u"-a"_s, u"-G1"_s, u"-s"_s, path});
    static const QRegularExpression member(u"^\\[([^\\]]+)\\]\\s+(\\S+)\\s*: (.*)$"_s);
    MetadataDump dump;
    const QStringList lines = QString::fromUtf8(result.standardOutput).split(u'\n');
    for (const QString &line : lines) {
        const QRegularExpressionMatch match = member.match(line);
        if (match.hasMatch())
            dump[match.captured(1) + u':' + match.captured(2)] << match.captured(3);
    }
    return dump;
}

QJsonObject numericValues(const QString &path)
{
    const CommandResult result = exifTool({u"-G1"_s, u"-j"_s, u"-n"_s, path});
    return QJsonDocument::fromJson(result.standardOutput).array().first().toObject();
}

QString dumpValue(const QJsonValue &value)
{
    if (value.isArray()) {
        QStringList parts;
        for (const QJsonValue &item : value.toArray())
            parts << item.toVariant().toString();
        return parts.join(u", "_s);
    }
    return value.toVariant().toString();
}

QByteArray contentHash(const QString &path)
{
    const QString extension = QFileInfo(path).suffix().toLower();
    CommandResult result;
    if (imageTypes.contains(extension)) {
        result = run(u"convert"_s, {path, u"-depth"_s, u"8"_s, u"rgba:-"_s});
    } else {
        result = run(u"ffmpeg"_s,
                     {u"-v"_s, u"error"_s, u"-i"_s, path, u"-map"_s, u"0"_s, u"-c"_s, u"copy"_s,
                      u"-f"_s, u"streamhash"_s, u"-hash"_s, u"sha256"_s, u"-"_s});
    }
    if (result.exitCode != 0 || result.standardOutput.isEmpty())
        return QByteArray();
    return QCryptographicHash::hash(result.standardOutput, QCryptographicHash::Sha256).toHex();
}

QByteArray fileHash(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(&file);
    return hash.result().toHex();
}

void setModificationTime(const QString &path, const timespec &time)
{
    const timespec times[2] = {{0, UTIME_OMIT}, time};
    utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0);
}

timespec modificationTime(const QString &path)
{
    struct stat status = {};
    stat(QFile::encodeName(path).constData(), &status);
    return status.st_mtim;
}

} // namespace WriteFixtures
