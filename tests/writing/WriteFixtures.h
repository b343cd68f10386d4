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

// Makes a small file of the type given by the extension (jpg, tif, png, heic, webp, mp4, mov,
// m4a,
// mp3, wav, flac, ogg, mkv, avi, aiff), carrying some metadata of its own so that a write has
// something to keep. Returns an empty text on success, else what went wrong.
QString makeFixture(const QString &path);

// An uncompressed 8-bit RGB TIFF of kilopixels thousand pixels, three bytes each.
QString makeLargeFixture(const QString &path, int kilopixels);

// exiftool -a -G1: each group-qualified tag name with all its values, in the order listed.
using MetadataDump = QMap<QString, QStringList>;
MetadataDump metadataDump(const QString &path);

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
