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
#include <QStringDecoder>
#include <QtEndian>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

using namespace Qt::StringLiterals;

namespace WriteFixtures {

namespace {

const QStringList imageTypes
    = {u"jpg"_s, u"tif"_s, u"png"_s, u"heic"_s, u"webp"_s, u"gif"_s, u"ppm"_s};

// What every image carries before a write. IPTC, where the type holds it, in Keywords, By-line
// and Caption-Abstract as iptcText says; its other fields in Latin-1.
QList<QStringList> imageMetadata(const QString &extension, IptcText iptcText)
{
    if (extension == u"ppm")
        return {{u"-Comment=Hafen bei Dämmerung"_s}};
    QStringList arguments = {u"-XMP-dc:Title=Harbour at dawn"_s, u"-XMP-dc:Subject=boats"_s};
    if (extension == u"gif")
        return {arguments << u"-Comment=Hafen bei Dämmerung"_s};
    arguments << u"-EXIF:Make=PalometCam"_s << u"-EXIF:Model=Field Unit"_s
              << u"-EXIF:DateTimeOriginal=2019:05:06 07:08:09"_s << u"-EXIF:Artist=Jürgen Weiß"_s;
    if (extension != u"jpg" && extension != u"tif")
        return {arguments};
    arguments << u"-IPTC:ObjectName=Hafen"_s << u"-IPTC:Province-State=Baden-Württemberg"_s;
    const QStringList text = {u"-IPTC:Keywords=Bäume"_s, u"-IPTC:By-line=Jürgen"_s};
    const QStringList moreText
        = {u"-IPTC:Keywords=Küste"_s, u"-IPTC:Caption-Abstract=Straße am Hafen"_s};
    switch (iptcText) {
    case IptcText::Latin1:
        return {arguments + text + moreText};
    case IptcText::DeclaredUtf8:
        return {arguments + text + moreText + QStringList {u"-IPTC:CodedCharacterSet=UTF8"_s}};
    case IptcText::UndeclaredMixed:
        // UTF-8 bytes first, with nothing in the record to say so; then Latin-1 beside them.
        return {
            QStringList {u"-charset"_s, u"iptc=UTF8"_s} + arguments + text,
            QStringList {u"-IPTC:Keywords+=Küste"_s, u"-IPTC:Caption-Abstract=Straße am Hafen"_s}};
    }
    return {arguments};
}

// The smallest PDF that readers accept: one empty page, with its cross-reference table.
QByteArray minimalPdf()
{
    const QList<QByteArray> objects = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 64 48] >>",
    };
    QByteArray pdf = "%PDF-1.4\n";
    QList<qsizetype> offsets;
    for (qsizetype i = 0; i < objects.size(); ++i) {
        offsets << pdf.size();
        pdf += QByteArray::number(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const qsizetype table = pdf.size();
    pdf += "xref\n0 " + QByteArray::number(objects.size() + 1) + "\n0000000000 65535 f \n";
    for (qsizetype offset : offsets)
        pdf += QByteArray::number(offset).rightJustified(10, '0') + " 00000 n \n";
    pdf += "trailer\n<< /Size " + QByteArray::number(objects.size() + 1)
        + " /Root 1 0 R >>\nstartxref\n" + QByteArray::number(table) + "\n%%EOF\n";
    return pdf;
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

const QStringList &writableFixtureTypes()
{
    static const QStringList types = {u"jpg"_s, u"tif"_s, u"png"_s, u"heic"_s, u"webp"_s, u"gif"_s,
                                      u"pdf"_s, u"xmp"_s, u"mp4"_s, u"mov"_s,  u"m4a"_s};
    return types;
}

QString makeFixture(const QString &path, IptcText iptcText)
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
        for (const QStringList &arguments : imageMetadata(extension, iptcText)) {
            result = exifTool(QStringList {u"-q"_s, u"-overwrite_original"_s} + arguments
                              + QStringList {path});
            if (result.exitCode != 0)
                return failure(u"exiftool"_s, result);
        }
        return QString();
    }
    if (extension == u"pdf" || extension == u"xmp") {
        if (extension == u"pdf") {
            QFile file(path);
            if (!file.open(QIODevice::WriteOnly) || file.write(minimalPdf()) < 0)
                return u"can't write "_s + path;
        }
        // ExifTool makes the sidecar from scratch and adds an XMP packet to the PDF.
        result = exifTool({u"-q"_s, u"-overwrite_original"_s, u"-XMP-dc:Title=Harbour at dawn"_s,
                           u"-XMP-dc:Subject=boats"_s, u"-XMP-dc:Subject=Küste"_s,
                           u"-XMP-photoshop:Headline=Hafen bei Dämmerung"_s, path});
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
    // group (a QuickTime file has a handler per box), and every copy must be compared. IPTC
    // comes as the bytes stored, each item of a list decoded on its own.
    const CommandResult result = exifTool(
        {u"-a"_s, u"-G0:1:4"_s, u"-s"_s, u"-charset"_s, u"iptc=UTF8"_s, u"-sep"_s, u"]|["_s, path});
    static const QRegularExpression member(u"^\\[([^\\]]+)\\]\\s+(\\S+)\\s*: (.*)$"_s);
    MetadataDump dump;
    const QList<QByteArray> lines = result.standardOutput.split('\n');
    for (const QByteArray &bytes : lines) {
        QStringList items;
        // ExifTool shows control characters as dots, so the separator is plain text.
        for (qsizetype start = 0; start <= bytes.size();) {
            qsizetype end = bytes.indexOf("]|[", start);
            if (end < 0)
                end = bytes.size();
            const QByteArray item = bytes.mid(start, end - start);
            QStringDecoder utf8(QStringConverter::Utf8);
            const QString text = utf8.decode(item);
            items << (utf8.hasError() ? QString::fromLatin1(item) : text);
            start = end + 3;
        }
        const QRegularExpressionMatch match = member.match(items.join(u", "_s));
        if (!match.hasMatch())
            continue;
        // Family 0, then family 1 where it differs, then the copy's number.
        QStringList groups = match.captured(1).split(u':');
        if (groups.size() > 1 && groups.last().startsWith(u"Copy"))
            groups.removeLast();
        dump[groups.last() + u':' + match.captured(2)] << match.captured(3);
    }
    return dump;
}

ExtendedAttributes extendedAttributes(const QString &path)
{
    const QByteArray native = QFile::encodeName(path);
    ExtendedAttributes attributes;
    QByteArray names(65536, '\0');
    const ssize_t size = listxattr(native.constData(), names.data(), size_t(names.size()));
    if (size <= 0)
        return attributes;
    names.truncate(size - 1);
    for (const QByteArray &name : names.split('\0')) {
        QByteArray value(65536, '\0');
        const ssize_t length
            = getxattr(native.constData(), name.constData(), value.data(), size_t(value.size()));
        if (length >= 0)
            attributes.insert(name, value.left(length));
    }
    return attributes;
}

QString setExtendedAttributes(const QString &path)
{
    // An access control list as the kernel stores it: a version, then tag, permissions and id
    // per entry, sorted by tag. The owner and "nobody" read and write, the rest read.
    auto entry = [](quint16 tag, quint16 permissions, quint32 id) {
        QByteArray bytes(8, '\0');
        qToLittleEndian(tag, bytes.data());
        qToLittleEndian(permissions, bytes.data() + 2);
        qToLittleEndian(id, bytes.data() + 4);
        return bytes;
    };
    constexpr quint32 noId = 0xffffffff;
    QByteArray acl(4, '\0');
    qToLittleEndian(quint32(2), acl.data());
    acl += entry(0x01, 6, noId) + entry(0x02, 6, 65534) + entry(0x04, 4, noId)
        + entry(0x10, 6, noId) + entry(0x20, 4, noId);

    const QList<std::pair<QByteArray, QByteArray>> attributes = {
        {"user.xdg.tags", "harbour,dawn"},
        {"user.xdg.comment", "Ausflug an die Küste"},
        {"user.xdg.origin.url", "https://example.org/photos/1"},
        {"user.palomet.binary", QByteArray("\x00\x01\xfe\xff", 4)},
        {"system.posix_acl_access", acl},
    };
    const QByteArray native = QFile::encodeName(path);
    for (const auto &[name, value] : attributes) {
        if (setxattr(native.constData(), name.constData(), value.constData(), size_t(value.size()),
                     0)
            != 0)
            return u"can't set "_s + QString::fromLatin1(name) + u": "_s
                + QString::fromLocal8Bit(strerror(errno));
    }
    return QString();
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
    } else if (extension == u"pdf") {
        // ExifTool adds to a PDF as an update behind the original, which stays as it was.
        QFile file(path);
        if (file.open(QIODevice::ReadOnly)) {
            const QByteArray bytes = file.readAll();
            const qsizetype end = bytes.indexOf("%%EOF");
            if (end >= 0)
                result = {0, bytes.left(end), {}};
        }
    } else if (extension == u"xmp") {
        // A sidecar is nothing but metadata.
        return QByteArrayLiteral("sidecar");
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
