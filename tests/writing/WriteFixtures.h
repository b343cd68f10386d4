#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QMap>
#include <QString>
#include <QStringList>

#include <ctime>

// Real media files for the write tests, made on the spot with ImageMagick, ffmpeg and the
// bundled ExifTool, and the means to compare them before and after a write.
namespace WriteFixtures {

struct CommandResult
{
    int exitCode = -1;
    QByteArray standardOutput;
    QByteArray standardError;
};

CommandResult run(const QString &program, const QStringList &arguments);

// The bundled ExifTool command, the same library the write worker loads.
CommandResult exifTool(const QStringList &arguments);

// How the IPTC text of a fixture is stored: Latin-1 as ExifTool stores it by default, UTF-8
// declared by the record, or a record without declaration that holds both UTF-8 (as many
// programs write it) and Latin-1 values.
enum class IptcText { Latin1, DeclaredUtf8, UndeclaredMixed };

// Makes a small file of the type given by the extension, carrying some metadata of its own so
// that a write has something to keep: images (jpg, tif, png with XMP, heic, webp, gif, ppm), a
// PDF, an XMP sidecar (xmp), video and audio (mp4, mov, m4a, mp3, wav, flac, ogg, mkv, avi,
// aiff). JPEG and TIFF carry IPTC text (Keywords, By-line, Caption-Abstract, ...) stored as
// iptcText says. Returns an empty text on success, else what went wrong.
QString makeFixture(const QString &path, IptcText iptcText = IptcText::Latin1);

// The extensions of the fixtures that can hold a position and place names.
const QStringList &writableFixtureTypes();

// An uncompressed 8-bit RGB TIFF of kilopixels thousand pixels, three bytes each.
QString makeLargeFixture(const QString &path, int kilopixels);

// Everything ExifTool lists, every copy of a repeated tag included (-a -G0:1:4): "Group:Tag"
// (the family 1 group) with the values of all copies. IPTC text is decoded as its bytes say:
// valid UTF-8 as UTF-8, anything else as Latin-1, whatever the record declares.
using MetadataDump = QMap<QString, QStringList>;
MetadataDump metadataDump(const QString &path);

// A file's extended attributes by name, following links.
using ExtendedAttributes = QMap<QByteArray, QByteArray>;
ExtendedAttributes extendedAttributes(const QString &path);
// Gives the file the freedesktop tags, comment and origin, an attribute of binary bytes and
// an access control list that lets the user "nobody" read it. Empty text on success.
QString setExtendedAttributes(const QString &path);

// exiftool -G1 -j -n: the numeric values, for checking what a write stored.
QJsonObject numericValues(const QString &path);

// A JSON value as text, lists joined with ", ".
QString dumpValue(const QJsonValue &value);

// A hash of the decoded pixels of an image or of the media streams' packets.
QByteArray contentHash(const QString &path);

QByteArray fileHash(const QString &path);

void setModificationTime(const QString &path, const timespec &time);
timespec modificationTime(const QString &path);

} // namespace WriteFixtures
