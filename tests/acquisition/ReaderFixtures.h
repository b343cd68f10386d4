#pragma once

#include "acquisition/ExtractedValue.h"

#include <QString>
#include <QStringList>

// Sample files for the platform readers' tests, made on the spot with ffmpeg, ImageMagick, the
// resource ExifTool and TagLib (the tools run through Fixtures::run). Each maker returns the new
// file's path, or an empty string after printing why it failed.
namespace ReaderFixtures {

// 64x48 JPEG without alpha: Exif camera data, GPS (48.8584 N, 2.2945 W, 35 m), IPTC keywords
// "alpha", "beta", "gamma", city, country, headline, copyright, dated 2024:05:01 12:34:56.
QString jpegWithMetadata(const QString &dir, const QString &name = QStringLiteral("photo.jpg"));
// 32x16 PNG with an alpha channel and a resolution of 150 dpi.
QString pngWithAlpha(const QString &dir);
// 40x30 16-bit TIFF with make and model.
QString tiffWithCamera(const QString &dir);
// 1.5 s H.264/AAC clips with title "Eiffel clip", artist "Ana", copyright "(c) Ana",
// comment "a comment", location +48.8584+002.2945/ and creation time 2024-05-01T10:34:56Z.
QString mp4WithLocation(const QString &dir, const QString &name = QStringLiteral("clip.mp4"));
// The same as a QuickTime movie with a text date "2023-07-14".
QString movWithLocation(const QString &dir);
// AAC audio with title, album and lyrics.
QString m4aWithLyrics(const QString &dir);
// MP3 whose ID3v2 tag TagLib writes: TIT2 "Song", TALB "Record", TCOP "2024 Ana",
// COMM "nice tune", USLT "la la la", TXXX "mood"="calm", TPE2 "The Band".
QString mp3WithId3(const QString &dir);
// 16-bit PCM WAV of exactly 1.25 s at 8 kHz with an ID3v2 chunk: TALB "Field Recordings".
QString wavWithId3(const QString &dir);
// FLAC with a title.
QString flacWithTitle(const QString &dir);

// An ICC profile whose description is the given text.
QByteArray iccProfile(const QString &description);

// The text stored under a key, "<absent>" or "<not text>".
QString stringOf(const ExtractedValues &values, const QString &key);
// The "key=text" pairs, separated by '|', that the values do not hold, each as
// "key: actual instead of expected" and joined by "; "; empty when all hold.
QString mismatches(const ExtractedValues &values, const char *expected);
// The date stored under a key, or an invalid date.
QDateTime dateOf(const ExtractedValues &values, const QString &key);

} // namespace ReaderFixtures
