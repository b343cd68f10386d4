#include "ReaderFixtures.h"

#include "Fixtures.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

#include <taglib/commentsframe.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/textidentificationframe.h>
#include <taglib/unsynchronizedlyricsframe.h>
#include <taglib/wavfile.h>

namespace ReaderFixtures {

using Fixtures::run;

static bool ffmpeg(const QStringList &arguments)
{
    return run(QStringLiteral("ffmpeg"),
               QStringList {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y")}
                   + arguments);
}

static QString madeOrEmpty(bool ok, const QString &path)
{
    return ok && QFile::exists(path) ? path : QString();
}

// Tool arguments written as one text, separated by '|', since some hold blanks.
static QStringList words(const char *text)
{
    return QString::fromUtf8(text).split(QLatin1Char('|'));
}

QString jpegWithMetadata(const QString &dir, const QString &name)
{
    const QString path = QDir(dir).filePath(name);
    const bool ok
        = run(QStringLiteral("convert"), words("-size|64x48|xc:skyblue|-strip") << path)
        && Fixtures::writeTags(
              path,
              words("-Make=Canon|-Model=EOS R5|-LensModel=RF24-105mm F4 L IS USM|"
                    "-DateTimeOriginal=2024:05:01 12:34:56|-ExposureTime=1/125|-FNumber=2.8|"
                    "-ISO=200|-FocalLength=50|-ExposureProgram#=3|-ExifVersion=0232|"
                    "-XResolution=300|-YResolution=300|-ResolutionUnit=inches|"
                    "-UserComment=Taken from the tower|-GPSVersionID=2.3.0.0|"
                    "-GPSLatitude=48.8584|-GPSLatitudeRef=N|-GPSLongitude=2.2945|"
                    "-GPSLongitudeRef=W|-GPSAltitude=35|-GPSAltitudeRef=0|"
                    "-GPSTimeStamp=10:34:56|-GPSDateStamp=2024:05:01|-GPSTrack=123.5|"
                    "-Keywords=alpha|-Keywords=beta|-Keywords=gamma|-City=Paris|"
                    "-Province-State=Ile-de-France|-Country-PrimaryLocationName=France|"
                    "-Sub-location=Champ de Mars|-Headline=Tower at noon|-By-line=Ana|"
                    "-CopyrightNotice=(c) Ana|-DateCreated=2024:05:01|"
                    "-TimeCreated=12:34:56+02:00"));
    return madeOrEmpty(ok, path);
}

QString pngWithAlpha(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("alpha.png"));
    const bool ok = run(QStringLiteral("convert"),
                        words("-size|32x16|xc:rgba(255,0,0,0.5)|-units|PixelsPerInch|-density|150")
                            << QStringLiteral("PNG32:") + path);
    return madeOrEmpty(ok, path);
}

QString tiffWithCamera(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("scan.tif"));
    const bool ok
        = run(QStringLiteral("convert"), words("-size|40x30|gradient:red-blue|-depth|16") << path)
        && Fixtures::writeTags(path, words("-Make=Nikon|-Model=Coolscan"));
    return madeOrEmpty(ok, path);
}

static QStringList clipArguments()
{
    return words("-f|lavfi|-i|testsrc=size=160x120:rate=10|-f|lavfi|"
                 "-i|sine=frequency=440:sample_rate=44100|-t|1.5|-c:v|libx264|-pix_fmt|yuv420p|"
                 "-c:a|aac|-metadata|title=Eiffel clip|-metadata|artist=Ana|"
                 "-metadata|copyright=(c) Ana|-metadata|comment=a comment|"
                 "-metadata|location=+48.8584+002.2945/|"
                 "-metadata|creation_time=2024-05-01T10:34:56Z");
}

QString mp4WithLocation(const QString &dir, const QString &name)
{
    const QString path = QDir(dir).filePath(name);
    return madeOrEmpty(ffmpeg(clipArguments() << path), path);
}

QString movWithLocation(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("clip.mov"));
    return madeOrEmpty(ffmpeg(clipArguments() + words("-metadata|date=2023-07-14") << path), path);
}

QString m4aWithLyrics(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("song.m4a"));
    return madeOrEmpty(ffmpeg(words("-f|lavfi|-i|sine=frequency=330:sample_rate=44100|-t|2|-c:a|"
                                    "aac|-metadata|title=Evening|-metadata|album=Seasons|"
                                    "-metadata|lyrics=sun goes down")
                              << path),
                       path);
}

static TagLib::String text(const char *utf8)
{
    return TagLib::String(utf8, TagLib::String::UTF8);
}

QString mp3WithId3(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("song.mp3"));
    if (!ffmpeg(words("-f|lavfi|-i|sine=frequency=440:sample_rate=44100|-t|1|-c:a|libmp3lame|"
                      "-write_id3v2|0")
                << path))
        return {};
    TagLib::MPEG::File file(QFile::encodeName(path).constData());
    TagLib::ID3v2::Tag *tag = file.ID3v2Tag(true);
    auto addText = [&](const char *id, const char *value) {
        auto *frame = new TagLib::ID3v2::TextIdentificationFrame(TagLib::ByteVector(id),
                                                                 TagLib::String::UTF8);
        frame->setText(text(value));
        tag->addFrame(frame);
    };
    addText("TIT2", "Song");
    addText("TALB", "Record");
    addText("TCOP", "2024 Ana");
    addText("TPE2", "The Band");
    auto *comment = new TagLib::ID3v2::CommentsFrame(TagLib::String::UTF8);
    comment->setLanguage("eng");
    comment->setText(text("nice tune"));
    tag->addFrame(comment);
    auto *lyrics = new TagLib::ID3v2::UnsynchronizedLyricsFrame(TagLib::String::UTF8);
    lyrics->setLanguage("eng");
    lyrics->setText(text("la la la"));
    tag->addFrame(lyrics);
    auto *user = new TagLib::ID3v2::UserTextIdentificationFrame(TagLib::String::UTF8);
    user->setDescription(text("mood"));
    user->setText(text("calm"));
    tag->addFrame(user);
    return file.save(TagLib::MPEG::File::ID3v2, TagLib::File::StripOthers) ? path : QString();
}

QString wavWithId3(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("tone.wav"));
    if (!ffmpeg(words("-f|lavfi|-i|sine=frequency=440:sample_rate=8000|-t|1.25|-c:a|pcm_s16le")
                << path))
        return {};
    TagLib::RIFF::WAV::File file(QFile::encodeName(path).constData());
    file.ID3v2Tag()->setAlbum(text("Field Recordings"));
    return file.save(TagLib::RIFF::WAV::File::ID3v2) ? path : QString();
}

QString flacWithTitle(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("tone.flac"));
    return madeOrEmpty(ffmpeg(words("-f|lavfi|-i|sine=frequency=440:sample_rate=44100|-t|1|-c:a|"
                                    "flac|-metadata|title=Flac tone")
                              << path),
                       path);
}

QByteArray iccProfile(const QString &description)
{
    const QByteArray ascii = description.toLatin1() + '\0';
    QByteArray desc("desc", 4);
    desc += QByteArray(4, '\0');
    char count[4];
    qToBigEndian<quint32>(quint32(ascii.size()), count);
    desc += QByteArray(count, 4) + ascii;
    desc += QByteArray(4 + 4 + 2 + 1 + 67, '\0'); // empty Unicode and ScriptCode parts
    while (desc.size() % 4)
        desc += '\0';

    QByteArray profile(128, '\0');
    const quint32 tagOffset = 128 + 4 + 12;
    const quint32 size = tagOffset + quint32(desc.size());
    qToBigEndian<quint32>(size, profile.data());
    profile.replace(8, 4, QByteArray("\x02\x10\x00\x00", 4));
    profile.replace(12, 4, "mntr");
    profile.replace(16, 4, "RGB ");
    profile.replace(20, 4, "XYZ ");
    profile.replace(36, 4, "acsp");
    QByteArray table(4 + 12, '\0');
    qToBigEndian<quint32>(1, table.data());
    table.replace(4, 4, "desc");
    qToBigEndian<quint32>(tagOffset, table.data() + 8);
    qToBigEndian<quint32>(quint32(desc.size()), table.data() + 12);
    return profile + table + desc;
}

QString stringOf(const ExtractedValues &values, const QString &key)
{
    for (const auto &value : values) {
        if (value.key == key)
            return value.value.kind() == WrappedMetaDataValue::Kind::StringValue
                ? value.value.stringValue()
                : QStringLiteral("<not text>");
    }
    return QStringLiteral("<absent>");
}

QString mismatches(const ExtractedValues &values, const char *expected)
{
    QStringList found;
    for (const QString &pair : words(expected)) {
        const QString key = pair.section(QLatin1Char('='), 0, 0);
        const QString text = pair.section(QLatin1Char('='), 1);
        const QString actual = stringOf(values, key);
        if (actual != text)
            found << QStringLiteral("%1: %2 instead of %3").arg(key, actual, text);
    }
    return found.join(QStringLiteral("; "));
}

QDateTime dateOf(const ExtractedValues &values, const QString &key)
{
    for (const auto &value : values) {
        if (value.key == key && value.value.kind() == WrappedMetaDataValue::Kind::DateValue)
            return value.value.dateValue();
    }
    return {};
}

} // namespace ReaderFixtures
