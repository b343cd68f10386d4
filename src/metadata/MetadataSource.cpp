#include "MetadataSource.h"

#include <QHash>
#include <QString>

namespace MetadataSources {

const QList<MetadataSource> &allCases()
{
    static const QList<MetadataSource> all = [] {
        QList<MetadataSource> list;
        for (int i = 0; i < count; ++i)
            list.append(MetadataSource(i));
        return list;
    }();
    return all;
}

MetadataSource fromExifToolGroupString(QStringView group)
{
    static const QHash<QString, MetadataSource> groups = {
        {QStringLiteral("exiftoolgeneric"), MetadataSource::ExifToolGeneric},
        {QStringLiteral("exif"), MetadataSource::Exif},
        {QStringLiteral("iptc"), MetadataSource::IPTC},
        {QStringLiteral("jfif"), MetadataSource::JFIF},
        {QStringLiteral("jpeg"), MetadataSource::JPEG},
        {QStringLiteral("jpeg2000"), MetadataSource::JPEG2000},
        {QStringLiteral("png"), MetadataSource::PNG},
        {QStringLiteral("raf"), MetadataSource::RAF},
        {QStringLiteral("panasonicraw"), MetadataSource::PanasonicRaw},
        {QStringLiteral("dng"), MetadataSource::DNG},
        {QStringLiteral("riff"), MetadataSource::RIFF},
        {QStringLiteral("quicktime"), MetadataSource::QuickTime},
        {QStringLiteral("h264"), MetadataSource::H264},
        {QStringLiteral("mpeg"), MetadataSource::MPEG},
        {QStringLiteral("matroska"), MetadataSource::Matroska},
        {QStringLiteral("makernotes"), MetadataSource::MakerNotes},
        {QStringLiteral("pdf"), MetadataSource::PDF},
        {QStringLiteral("id3"), MetadataSource::ID3},
        {QStringLiteral("aiff"), MetadataSource::AIFF},
        {QStringLiteral("vorbis"), MetadataSource::Vorbis},
        {QStringLiteral("flac"), MetadataSource::FLAC},
        {QStringLiteral("ogg"), MetadataSource::Ogg},
        {QStringLiteral("gif"), MetadataSource::GIF},
        {QStringLiteral("photoshop"), MetadataSource::Photoshop},
        {QStringLiteral("composite"), MetadataSource::Composite},
        {QStringLiteral("xmp"), MetadataSource::XMP},
    };
    return groups.value(group.toString().toLower(), MetadataSource::Other);
}

} // namespace MetadataSources
