#include "ReaderFixtures.h"

#include "platform/Resources.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryFile>
#include <QtEndian>

#include <taglib/commentsframe.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/textidentificationframe.h>
#include <taglib/unsynchronizedlyricsframe.h>
#include <taglib/wavfile.h>

#include <cstdio>
#include <unistd.h>

namespace ReaderFixtures {

bool run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0) {
        std::fprintf(stderr, "fixture tool failed: %s %s\n%s\n", qPrintable(program),
                     qPrintable(arguments.join(QLatin1Char(' '))), process.readAll().constData());
        return false;
    }
    return true;
}

bool exiftool(const QStringList &arguments)
{
    return run(QStringLiteral("perl"),
               QStringList {Resources::path(QStringLiteral("exiftool/exiftool")),
                            QStringLiteral("-q"), QStringLiteral("-overwrite_original")}
                   + arguments);
}

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

QString jpegWithMetadata(const QString &dir, const QString &name)
{
    const QString path = QDir(dir).filePath(name);
    const bool ok = run(QStringLiteral("convert"),
                        {QStringLiteral("-size"), QStringLiteral("64x48"),
                         QStringLiteral("xc:skyblue"), QStringLiteral("-strip"), path})
        && exiftool({QStringLiteral("-Make=Canon"),
                     QStringLiteral("-Model=EOS R5"),
                     QStringLiteral("-LensModel=RF24-105mm F4 L IS USM"),
                     QStringLiteral("-DateTimeOriginal=2024:05:01 12:34:56"),
                     QStringLiteral("-ExposureTime=1/125"),
                     QStringLiteral("-FNumber=2.8"),
                     QStringLiteral("-ISO=200"),
                     QStringLiteral("-FocalLength=50"),
                     QStringLiteral("-ExposureProgram#=3"),
                     QStringLiteral("-ExifVersion=0232"),
                     QStringLiteral("-XResolution=300"),
                     QStringLiteral("-YResolution=300"),
                     QStringLiteral("-ResolutionUnit=inches"),
                     QStringLiteral("-UserComment=Taken from the tower"),
                     QStringLiteral("-GPSVersionID=2.3.0.0"),
                     QStringLiteral("-GPSLatitude=48.8584"),
                     QStringLiteral("-GPSLatitudeRef=N"),
                     QStringLiteral("-GPSLongitude=2.2945"),
                     QStringLiteral("-GPSLongitudeRef=W"),
                     QStringLiteral("-GPSAltitude=35"),
                     QStringLiteral("-GPSAltitudeRef=0"),
                     QStringLiteral("-GPSTimeStamp=10:34:56"),
                     QStringLiteral("-GPSDateStamp=2024:05:01"),
                     QStringLiteral("-GPSTrack=123.5"),
                     QStringLiteral("-Keywords=alpha"),
                     QStringLiteral("-Keywords=beta"),
                     QStringLiteral("-Keywords=gamma"),
                     QStringLiteral("-City=Paris"),
                     QStringLiteral("-Province-State=Ile-de-France"),
                     QStringLiteral("-Country-PrimaryLocationName=France"),
                     QStringLiteral("-Sub-location=Champ de Mars"),
                     QStringLiteral("-Headline=Tower at noon"),
                     QStringLiteral("-By-line=Ana"),
                     QStringLiteral("-CopyrightNotice=(c) Ana"),
                     QStringLiteral("-DateCreated=2024:05:01"),
                     QStringLiteral("-TimeCreated=12:34:56+02:00"),
                     path});
    return madeOrEmpty(ok, path);
}

QString pngWithAlpha(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("alpha.png"));
    const bool ok = run(QStringLiteral("convert"),
                        {QStringLiteral("-size"), QStringLiteral("32x16"),
                         QStringLiteral("xc:rgba(255,0,0,0.5)"), QStringLiteral("-units"),
                         QStringLiteral("PixelsPerInch"), QStringLiteral("-density"),
                         QStringLiteral("150"), QStringLiteral("PNG32:") + path});
    return madeOrEmpty(ok, path);
}

QString tiffWithCamera(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("scan.tif"));
    const bool ok = run(QStringLiteral("convert"),
                        {QStringLiteral("-size"), QStringLiteral("40x30"),
                         QStringLiteral("gradient:red-blue"), QStringLiteral("-depth"),
                         QStringLiteral("16"), path})
        && exiftool({QStringLiteral("-Make=Nikon"), QStringLiteral("-Model=Coolscan"), path});
    return madeOrEmpty(ok, path);
}

static QStringList clipArguments()
{
    return {QStringLiteral("-f"),        QStringLiteral("lavfi"),
            QStringLiteral("-i"),        QStringLiteral("testsrc=size=160x120:rate=10"),
            QStringLiteral("-f"),        QStringLiteral("lavfi"),
            QStringLiteral("-i"),        QStringLiteral("sine=frequency=440:sample_rate=44100"),
            QStringLiteral("-t"),        QStringLiteral("1.5"),
            QStringLiteral("-c:v"),      QStringLiteral("libx264"),
            QStringLiteral("-pix_fmt"),  QStringLiteral("yuv420p"),
            QStringLiteral("-c:a"),      QStringLiteral("aac"),
            QStringLiteral("-metadata"), QStringLiteral("title=Eiffel clip"),
            QStringLiteral("-metadata"), QStringLiteral("artist=Ana"),
            QStringLiteral("-metadata"), QStringLiteral("copyright=(c) Ana"),
            QStringLiteral("-metadata"), QStringLiteral("comment=a comment"),
            QStringLiteral("-metadata"), QStringLiteral("location=+48.8584+002.2945/"),
            QStringLiteral("-metadata"), QStringLiteral("creation_time=2024-05-01T10:34:56Z")};
}

QString mp4WithLocation(const QString &dir, const QString &name)
{
    const QString path = QDir(dir).filePath(name);
    return madeOrEmpty(ffmpeg(clipArguments() << path), path);
}

QString movWithLocation(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("clip.mov"));
    return madeOrEmpty(ffmpeg(clipArguments() << QStringLiteral("-metadata")
                                              << QStringLiteral("date=2023-07-14") << path),
                       path);
}

QString m4aWithLyrics(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("song.m4a"));
    return madeOrEmpty(
        ffmpeg({QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                QStringLiteral("sine=frequency=330:sample_rate=44100"), QStringLiteral("-t"),
                QStringLiteral("2"), QStringLiteral("-c:a"), QStringLiteral("aac"),
                QStringLiteral("-metadata"), QStringLiteral("title=Evening"),
                QStringLiteral("-metadata"), QStringLiteral("album=Seasons"),
                QStringLiteral("-metadata"), QStringLiteral("lyrics=sun goes down"), path}),
        path);
}

static TagLib::String text(const char *utf8)
{
    return TagLib::String(utf8, TagLib::String::UTF8);
}

QString mp3WithId3(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("song.mp3"));
    if (!ffmpeg({QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                 QStringLiteral("sine=frequency=440:sample_rate=44100"), QStringLiteral("-t"),
                 QStringLiteral("1"), QStringLiteral("-c:a"), QStringLiteral("libmp3lame"),
                 QStringLiteral("-write_id3v2"), QStringLiteral("0"), path}))
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
    if (!ffmpeg({QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                 QStringLiteral("sine=frequency=440:sample_rate=8000"), QStringLiteral("-t"),
                 QStringLiteral("1.25"), QStringLiteral("-c:a"), QStringLiteral("pcm_s16le"),
                 path}))
        return {};
    TagLib::RIFF::WAV::File file(QFile::encodeName(path).constData());
    file.ID3v2Tag()->setAlbum(text("Field Recordings"));
    return file.save(TagLib::RIFF::WAV::File::ID3v2) ? path : QString();
}

QString flacWithTitle(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("tone.flac"));
    return madeOrEmpty(
        ffmpeg({QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                QStringLiteral("sine=frequency=440:sample_rate=44100"), QStringLiteral("-t"),
                QStringLiteral("1"), QStringLiteral("-c:a"), QStringLiteral("flac"),
                QStringLiteral("-metadata"), QStringLiteral("title=Flac tone"), path}),
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

QDateTime dateOf(const ExtractedValues &values, const QString &key)
{
    for (const auto &value : values) {
        if (value.key == key && value.value.kind() == WrappedMetaDataValue::Kind::DateValue)
            return value.value.dateValue();
    }
    return {};
}

QString captureStandardError(const std::function<void()> &function)
{
    std::fflush(stderr);
    QTemporaryFile capture;
    if (!capture.open())
        return QStringLiteral("(could not capture standard error)");
    const int saved = ::dup(STDERR_FILENO);
    ::dup2(capture.handle(), STDERR_FILENO);
    function();
    std::fflush(stderr);
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);
    capture.seek(0);
    return QString::fromUtf8(capture.readAll());
}

} // namespace ReaderFixtures
