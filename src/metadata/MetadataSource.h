#pragma once

#include <QList>
#include <QStringView>

// One origin of metadata values. 6 to 30 and 32 are ExifTool's groups.
enum class MetadataSource : int {
    Node = 0,
    Basic = 1,
    ExifToolGeneric = 2,
    ImageIO = 3,
    AVKit = 4,
    Computed = 5,
    Exif = 6,
    IPTC = 7,
    JFIF = 8,
    JPEG = 9,
    JPEG2000 = 10,
    PNG = 11,
    RAF = 12,
    PanasonicRaw = 13,
    DNG = 14,
    RIFF = 15,
    QuickTime = 16,
    H264 = 17,
    MPEG = 18,
    Matroska = 19,
    MakerNotes = 20,
    PDF = 21,
    ID3 = 22,
    AIFF = 23,
    Vorbis = 24,
    FLAC = 25,
    Ogg = 26,
    GIF = 27,
    Photoshop = 28,
    Composite = 29,
    Other = 30,
    Spotlight = 31,
    XMP = 32,
};

namespace MetadataSources {

constexpr int count = 33;

// Every source in order of value.
const QList<MetadataSource> &allCases();

// ExifTool's group name, compared lower-cased; any group not listed is Other.
MetadataSource fromExifToolGroupString(QStringView group);

} // namespace MetadataSources
