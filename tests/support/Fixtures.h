#pragma once

#include "session/Node.h"

#include <QMap>
#include <QString>
#include <QStringList>

// Real media files for tests, made with the tools the set-up installs: ImageMagick, ffmpeg and
// the ExifTool among the resources. Each helper returns the new file's path; a tool that fails
// makes the calling test fail.
namespace Fixtures {

// The resource ExifTool's command-line script.
QString exifToolPath();

// Runs program with arguments; true when it exits with status 0. Its output goes to output.
bool run(const QString &program, const QStringList &arguments, QByteArray *output = nullptr);

// Sets tags with ExifTool arguments such as "-GPSLatitude=48.85" (the file is rewritten).
bool writeTags(const QString &path, const QStringList &exifToolArguments);

// A small JPEG, PNG or GIF, then the given ExifTool arguments.
QString makeJpeg(const QString &directory, const QString &name,
                 const QStringList &exifToolArguments = {});
QString makePng(const QString &directory, const QString &name,
                const QStringList &exifToolArguments = {});
QString makeGif(const QString &directory, const QString &name,
                const QStringList &exifToolArguments = {});

// A one-second file from ffmpeg with the given output options, such as "-metadata",
// "location=+48.8583+002.2944/". The extension of name picks the container.
QString makeVideo(const QString &directory, const QString &name,
                  const QStringList &ffmpegOptions = {});
QString makeAudio(const QString &directory, const QString &name,
                  const QStringList &ffmpegOptions = {});

// A file with exactly the given bytes.
QString makeFile(const QString &directory, const QString &name, const QByteArray &bytes);

// Things named like media files (name + "." + extension) that can't be read: a named pipe, a
// socket, a device (a link to /dev/zero), and a regular file whose every read fails with an I/O
// error (a link to /proc/self/mem). Keyed by those four kinds.
QMap<QString, QString> makeUnreadableFiles(const QString &directory, const QString &name,
                                           const QString &extension);

// An executable script: a stand-in for a worker.
QString makeScript(const QString &directory, const QString &name, const QByteArray &text);

// A node for the file once its ExifTool values have been read (the GPS status is stored with
// them), with the reader started by the node's creation; null after twenty seconds without.
NodePtr readNode(const QString &path);

} // namespace Fixtures
