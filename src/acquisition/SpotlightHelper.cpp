#include "SpotlightHelper.h"

#include "AVKitHelper.h"
#include "ExivImage.h"
#include "ValueText.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QRegularExpression>
#include <QTimeZone>

// The distribution's MediaInfo is built with wide strings.
#ifndef UNICODE
#define UNICODE
#endif
#include <MediaInfo/MediaInfo.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cmath>

namespace {

using Attributes = QVariantHash;

std::optional<QDateTime> fromTimestamp(const struct statx_timestamp &time)
{
    return QDateTime::fromMSecsSinceEpoch(qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000,
                                          QTimeZone::utc());
}

std::optional<QString> extendedAttribute(const QByteArray &path, const char *name)
{
    char buffer[8192];
    const ssize_t size = ::getxattr(path.constData(), name, buffer, sizeof buffer);
    if (size <= 0)
        return std::nullopt;
    const QString text = QString::fromUtf8(buffer, qsizetype(size)).trimmed();
    if (text.isEmpty())
        return std::nullopt;
    return text;
}

void insertText(Attributes &attributes, const QString &name, const QString &text)
{
    if (!text.isEmpty() && !attributes.contains(name))
        attributes.insert(name, text);
}

void insertList(Attributes &attributes, const QString &name, const QStringList &texts)
{
    QStringList cleaned;
    for (const QString &text : texts) {
        if (!text.trimmed().isEmpty() && !cleaned.contains(text.trimmed()))
            cleaned << text.trimmed();
    }
    if (!cleaned.isEmpty() && !attributes.contains(name))
        attributes.insert(name, cleaned);
}

// A number as the index keeps it: integers stay integers.
void insertNumber(Attributes &attributes, const QString &name, std::optional<double> number)
{
    if (!number || !std::isfinite(*number) || attributes.contains(name))
        return;
    if (*number == std::trunc(*number) && std::abs(*number) < 1e15)
        attributes.insert(name, qint64(*number));
    else
        attributes.insert(name, *number);
}

QString firstOf(const QStringList &texts)
{
    return texts.isEmpty() ? QString() : texts.first();
}

// "0232" gives "2.32", "0220" gives "2.2".
QString exifVersionText(const Exiv2::Value &value)
{
    QByteArray digits;
    for (long i = 0; i < value.count(); ++i)
        digits += char(value.toLong(i));
    if (digits.size() != 4)
        return {};
    QString minor = QString::fromLatin1(digits.mid(2));
    while (minor.size() > 1 && minor.endsWith(QLatin1Char('0')))
        minor.chop(1);
    return QString::number(digits.left(2).toInt()) + QLatin1Char('.') + minor;
}

std::optional<double> signedCoordinate(const ExivImage &image, const char *key, const char *refKey,
                                       QChar negative)
{
    auto degrees = image.exifDegrees(key);
    if (degrees && image.exifText(refKey).value_or(QString()).startsWith(negative))
        *degrees = -*degrees;
    return degrees;
}

void readImageAttributes(const ExivImage &image, Attributes &a)
{
    if (image.pixelWidth > 0 && image.pixelHeight > 0) {
        a.insert(u"PixelWidth"_qs, qint64(image.pixelWidth));
        a.insert(u"PixelHeight"_qs, qint64(image.pixelHeight));
        a.insert(u"PixelCount"_qs, qint64(image.pixelWidth) * image.pixelHeight);
    }
    if (image.dpiWidth && image.dpiHeight) {
        a.insert(u"ResolutionWidthDPI"_qs, *image.dpiWidth);
        a.insert(u"ResolutionHeightDPI"_qs, *image.dpiHeight);
    }
    if (image.depth)
        a.insert(u"BitsPerSample"_qs, qint64(*image.depth));
    insertText(a, u"ColorSpace"_qs, image.colorModel);
    insertText(a, u"ProfileName"_qs, image.profileName);

    insertText(a, u"AcquisitionMake"_qs, image.exifText("Exif.Image.Make").value_or(QString()));
    insertText(a, u"AcquisitionModel"_qs, image.exifText("Exif.Image.Model").value_or(QString()));
    insertText(a, u"LensModel"_qs, image.exifText("Exif.Photo.LensModel").value_or(QString()));
    insertNumber(a, u"FocalLength"_qs, image.exifNumber("Exif.Photo.FocalLength"));
    insertNumber(a, u"Aperture"_qs, image.exifNumber("Exif.Photo.ApertureValue"));
    insertNumber(a, u"FNumber"_qs, image.exifNumber("Exif.Photo.FNumber"));
    insertNumber(a, u"ExposureTimeSeconds"_qs, image.exifNumber("Exif.Photo.ExposureTime"));
    insertNumber(a, u"ExposureProgram"_qs, image.exifNumber("Exif.Photo.ExposureProgram"));
    insertNumber(a, u"ISOSpeed"_qs, image.exifNumber("Exif.Photo.ISOSpeedRatings"));
    if (const Exiv2::Value *version = image.exifValue("Exif.Photo.ExifVersion"))
        insertText(a, u"EXIFVersion"_qs, exifVersionText(*version));
    if (const Exiv2::Value *version = image.exifValue("Exif.GPSInfo.GPSVersionID")) {
        QStringList parts;
        for (long i = 0; i < version->count(); ++i)
            parts << QString::number(version->toLong(i));
        insertText(a, u"EXIFGPSVersion"_qs, parts.join(QLatin1Char('.')));
    }

    insertNumber(a, u"Latitude"_qs,
                 signedCoordinate(image, "Exif.GPSInfo.GPSLatitude", "Exif.GPSInfo.GPSLatitudeRef",
                                  QLatin1Char('S')));
    insertNumber(a, u"Longitude"_qs,
                 signedCoordinate(image, "Exif.GPSInfo.GPSLongitude",
                                  "Exif.GPSInfo.GPSLongitudeRef", QLatin1Char('W')));
    if (auto altitude = image.exifNumber("Exif.GPSInfo.GPSAltitude")) {
        if (image.exifNumber("Exif.GPSInfo.GPSAltitudeRef").value_or(0) == 1)
            *altitude = -*altitude;
        insertNumber(a, u"Altitude"_qs, altitude);
    }
    insertNumber(a, u"Speed"_qs, image.exifNumber("Exif.GPSInfo.GPSSpeed"));
    insertNumber(a, u"ImageDirection"_qs, image.exifNumber("Exif.GPSInfo.GPSImgDirection"));
    // Kept as text: the track is one of the index's text attributes.
    if (const auto track = image.exifNumber("Exif.GPSInfo.GPSTrack"))
        insertText(a, u"GPSTrack"_qs, ValueText::numberDescription(*track));
    const auto h = image.exifNumber("Exif.GPSInfo.GPSTimeStamp", 0);
    const auto m = image.exifNumber("Exif.GPSInfo.GPSTimeStamp", 1);
    const auto s = image.exifNumber("Exif.GPSInfo.GPSTimeStamp", 2);
    if (h && m && s) {
        const QString time = QString::asprintf("%02d:%02d:%02d", int(*h), int(*m), int(*s));
        const QString date = image.exifText("Exif.GPSInfo.GPSDateStamp").value_or(QString());
        insertText(a, u"Timestamp"_qs, date.isEmpty() ? time : date + QLatin1Char(' ') + time);
    }

    auto iptcOrXmp = [&](const char *iptcKey, const char *xmpKey) {
        const QStringList iptc = image.iptcTexts(iptcKey);
        return iptc.isEmpty() ? image.xmpTexts(xmpKey) : iptc;
    };
    insertText(a, u"City"_qs, firstOf(iptcOrXmp("Iptc.Application2.City", "Xmp.photoshop.City")));
    insertText(a, u"StateOrProvince"_qs,
               firstOf(iptcOrXmp("Iptc.Application2.ProvinceState", "Xmp.photoshop.State")));
    insertText(a, u"Country"_qs,
               firstOf(iptcOrXmp("Iptc.Application2.CountryName", "Xmp.photoshop.Country")));
    insertText(a, u"NamedLocation"_qs,
               firstOf(iptcOrXmp("Iptc.Application2.SubLocation", "Xmp.iptc.Location")));
    insertText(a, u"Headline"_qs,
               firstOf(iptcOrXmp("Iptc.Application2.Headline", "Xmp.photoshop.Headline")));
    insertText(
        a, u"Instructions"_qs,
        firstOf(iptcOrXmp("Iptc.Application2.SpecialInstructions", "Xmp.photoshop.Instructions")));
    insertText(a, u"Title"_qs, firstOf(iptcOrXmp("Iptc.Application2.ObjectName", "Xmp.dc.title")));
    insertList(a, u"Keywords"_qs, iptcOrXmp("Iptc.Application2.Keywords", "Xmp.dc.subject"));
    QStringList authors = iptcOrXmp("Iptc.Application2.Byline", "Xmp.dc.creator");
    if (authors.isEmpty())
        authors << image.exifText("Exif.Image.Artist").value_or(QString());
    insertList(a, u"Authors"_qs, authors);
    QString copyright = firstOf(image.iptcTexts("Iptc.Application2.Copyright"));
    if (copyright.isEmpty())
        copyright = image.exifText("Exif.Image.Copyright").value_or(QString());
    if (copyright.isEmpty())
        copyright = firstOf(image.xmpTexts("Xmp.dc.rights"));
    insertText(a, u"Copyright"_qs, copyright);

    for (const char *key : {"Exif.Photo.DateTimeOriginal", "Exif.Photo.DateTimeDigitized"}) {
        const QDateTime date = QDateTime::fromString(image.exifText(key).value_or(QString()),
                                                     u"yyyy:MM:dd HH:mm:ss"_qs);
        if (date.isValid()) {
            a.insert(u"ContentCreationDate"_qs, date);
            break;
        }
    }
}

QDateTime mediaDate(QString text)
{
    text = text.trimmed();
    const bool utc = text.contains(u"UTC"_qs);
    text.remove(u"UTC"_qs);
    text = text.trimmed();
    for (const QString &format :
         {u"yyyy-MM-dd HH:mm:ss"_qs, u"yyyy-MM-ddTHH:mm:ss"_qs, u"yyyy-MM-dd"_qs, u"yyyy"_qs}) {
        QDateTime date = QDateTime::fromString(text, format);
        if (date.isValid()) {
            if (utc)
                date.setTimeZone(QTimeZone::utc());
            return date;
        }
    }
    return QDateTime::fromString(text, Qt::ISODate);
}

// "+48.8584+002.2945+35.0/" and its degree-minute forms, as ISO 6709 writes a place.
bool parseIso6709(const QString &text, double &latitude, double &longitude,
                  std::optional<double> &altitude)
{
    static const QRegularExpression pattern(
        uR"(^([+-])(\d+(?:\.\d+)?)([+-])(\d+(?:\.\d+)?)(?:([+-]\d+(?:\.\d+)?))?(?:CRS.*)?/?$)"_qs);
    const auto match = pattern.match(text.trimmed());
    if (!match.hasMatch())
        return false;
    auto degrees = [](const QString &number, int degreeDigits) {
        const qsizetype point = number.indexOf(QLatin1Char('.'));
        const qsizetype whole = point < 0 ? number.size() : point;
        const double value = number.toDouble();
        if (whole <= degreeDigits)
            return value;
        if (whole <= degreeDigits + 2) {
            const double d = std::trunc(value / 100);
            return d + (value - d * 100) / 60;
        }
        const double d = std::trunc(value / 10000);
        const double m = std::trunc((value - d * 10000) / 100);
        return d + m / 60 + (value - d * 10000 - m * 100) / 3600;
    };
    latitude = degrees(match.captured(2), 2) * (match.captured(1) == u"-"_qs ? -1 : 1);
    longitude = degrees(match.captured(4), 3) * (match.captured(3) == u"-"_qs ? -1 : 1);
    if (!match.captured(5).isEmpty())
        altitude = match.captured(5).toDouble();
    return std::abs(latitude) <= 90 && std::abs(longitude) <= 180;
}

std::optional<double> numberOf(const QString &text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok ? std::optional(value) : std::nullopt;
}

void readMediaAttributes(const QString &path, Attributes &a)
{
    MediaInfoLib::MediaInfo info;
    info.Option(__T("ParseSpeed"), __T("0"));
    // Without this, "clip001.mp4" would make MediaInfo look for a numbered sequence.
    info.Option(__T("File_TestContinuousFileNames"), __T("0"));
    if (info.Open(path.toStdWString()) == 0)
        return;
    auto get = [&](MediaInfoLib::stream_t stream, size_t index, const wchar_t *parameter) {
        return QString::fromStdWString(info.Get(stream, index, parameter)).trimmed();
    };
    const size_t videoCount = info.Count_Get(MediaInfoLib::Stream_Video);
    const size_t audioCount = info.Count_Get(MediaInfoLib::Stream_Audio);
    const size_t textCount = info.Count_Get(MediaInfoLib::Stream_Text);
    if (videoCount + audioCount == 0)
        return;

    if (const auto ms = numberOf(get(MediaInfoLib::Stream_General, 0, __T("Duration"))))
        a.insert(u"DurationSeconds"_qs, *ms / 1000.0);
    insertNumber(a, u"TotalBitRate"_qs,
                 numberOf(get(MediaInfoLib::Stream_General, 0, __T("OverallBitRate"))));
    QStringList codecs;
    QStringList mediaTypes;
    for (size_t i = 0; i < videoCount; ++i) {
        codecs << get(MediaInfoLib::Stream_Video, i, __T("Format"));
        if (i == 0) {
            mediaTypes << u"Video"_qs;
            insertNumber(a, u"VideoBitRate"_qs,
                         numberOf(get(MediaInfoLib::Stream_Video, 0, __T("BitRate"))));
            const auto width = numberOf(get(MediaInfoLib::Stream_Video, 0, __T("Width")));
            const auto height = numberOf(get(MediaInfoLib::Stream_Video, 0, __T("Height")));
            if (width && height) {
                insertNumber(a, u"PixelWidth"_qs, width);
                insertNumber(a, u"PixelHeight"_qs, height);
                insertNumber(a, u"PixelCount"_qs, *width * *height);
            }
        }
    }
    for (size_t i = 0; i < audioCount; ++i) {
        codecs << get(MediaInfoLib::Stream_Audio, i, __T("Format"));
        if (i == 0) {
            mediaTypes << u"Sound"_qs;
            insertNumber(a, u"AudioBitRate"_qs,
                         numberOf(get(MediaInfoLib::Stream_Audio, 0, __T("BitRate"))));
            insertNumber(a, u"BitsPerSample"_qs,
                         numberOf(get(MediaInfoLib::Stream_Audio, 0, __T("BitDepth"))));
        }
    }
    if (textCount > 0)
        mediaTypes << u"Text"_qs;
    insertList(a, u"Codecs"_qs, codecs);
    insertList(a, u"MediaTypes"_qs, mediaTypes);

    QString title = get(MediaInfoLib::Stream_General, 0, __T("Title"));
    if (title.isEmpty())
        title = get(MediaInfoLib::Stream_General, 0, __T("Track"));
    insertText(a, u"Title"_qs, title);
    insertText(a, u"Album"_qs, get(MediaInfoLib::Stream_General, 0, __T("Album")));
    insertText(a, u"Copyright"_qs, get(MediaInfoLib::Stream_General, 0, __T("Copyright")));
    insertText(a, u"Comment"_qs, get(MediaInfoLib::Stream_General, 0, __T("Comment")));
    insertList(a, u"Authors"_qs,
               get(MediaInfoLib::Stream_General, 0, __T("Performer")).split(u" / "_qs));
    insertList(a, u"Keywords"_qs,
               get(MediaInfoLib::Stream_General, 0, __T("Keywords")).split(QLatin1Char(',')));

    for (const wchar_t *parameter :
         {__T("Recorded_Date"), __T("Encoded_Date"), __T("Tagged_Date")}) {
        const QDateTime date = mediaDate(get(MediaInfoLib::Stream_General, 0, parameter));
        if (date.isValid()) {
            a.insert(u"ContentCreationDate"_qs, date);
            break;
        }
    }

    QString location = get(MediaInfoLib::Stream_General, 0, __T("xyz"));
    if (location.isEmpty())
        location = get(MediaInfoLib::Stream_General, 0, __T("Recorded_Location"));
    if (location.isEmpty()) {
        // MediaInfo leaves out the 3GPP location box that MP4 files often use.
        for (const auto &item : AVKitHelper::assetWithPath(path).commonMetadata) {
            if (item.commonKey == u"location"_qs && item.stringValue)
                location = *item.stringValue;
        }
    }
    double latitude = 0;
    double longitude = 0;
    std::optional<double> altitude;
    if (parseIso6709(location, latitude, longitude, altitude)) {
        insertNumber(a, u"Latitude"_qs, latitude);
        insertNumber(a, u"Longitude"_qs, longitude);
        insertNumber(a, u"Altitude"_qs, altitude);
    }
}

} // namespace

const SpotlightHelper &SpotlightHelper::shared()
{
    static const SpotlightHelper instance;
    return instance;
}

SpotlightHelper::SpotlightHelper()
    : allStringValues({
        {u"copyright"_qs, u"Copyright"_qs},
        {u"title"_qs, u"Title"_qs},
        {u"comment"_qs, u"Comment"_qs},
        {u"version"_qs, u"Version"_qs},
        {u"colorspace"_qs, u"ColorSpace"_qs},
        {u"make"_qs, u"AcquisitionMake"_qs},
        {u"model"_qs, u"AcquisitionModel"_qs},
        {u"colorprofilename"_qs, u"ProfileName"_qs},
        {u"lensmodel"_qs, u"LensModel"_qs},
        {u"headline"_qs, u"Headline"_qs},
        {u"album"_qs, u"Album"_qs},
        {u"editorialInstructions"_qs, u"Instructions"_qs},
        {u"city"_qs, u"City"_qs},
        {u"stateorprovince"_qs, u"StateOrProvince"_qs},
        {u"country"_qs, u"Country"_qs},
        {u"namedlocation"_qs, u"NamedLocation"_qs},
        {u"gpstrack"_qs, u"GPSTrack"_qs},
        {u"exifgpsversion"_qs, u"EXIFGPSVersion"_qs},
        {u"exifversion"_qs, u"EXIFVersion"_qs},
        {u"contenttype"_qs, u"ContentType"_qs},
        {u"timestamp"_qs, u"Timestamp"_qs},
    })
    , allStringArrayValues({
          {u"keywords"_qs, u"Keywords"_qs},
          {u"authors"_qs, u"Authors"_qs},
          {u"participants"_qs, u"Participants"_qs},
          {u"editors"_qs, u"Editors"_qs},
          {u"codecs"_qs, u"Codecs"_qs},
          {u"wherefroms"_qs, u"WhereFroms"_qs},
          {u"mediatypes"_qs, u"MediaTypes"_qs},
          {u"layernames"_qs, u"LayerNames"_qs},
      })
    , allNumericValues({
          {u"pixelheight"_qs, u"PixelHeight"_qs, RoundingPolicy::dontRound},
          {u"pixelwidth"_qs, u"PixelWidth"_qs, RoundingPolicy::dontRound},
          {u"pixelcount"_qs, u"PixelCount"_qs, RoundingPolicy::dontRound},
          {u"imagedirection"_qs, u"ImageDirection"_qs, RoundingPolicy::dontRound},
          {u"longitude"_qs, u"Longitude"_qs, RoundingPolicy::dontRound},
          {u"latitude"_qs, u"Latitude"_qs, RoundingPolicy::dontRound},
          {u"altitude"_qs, u"Altitude"_qs, RoundingPolicy::dontRound},
          {u"speed"_qs, u"Speed"_qs, RoundingPolicy::dontRound},
          {u"exposureprogram"_qs, u"ExposureProgram"_qs, RoundingPolicy::dontRound},
          {u"fnumber"_qs, u"FNumber"_qs, RoundingPolicy::dontRound},
          {u"duration"_qs, u"DurationSeconds"_qs, RoundingPolicy::roundToOneDecimal},
          {u"isospeed"_qs, u"ISOSpeed"_qs, RoundingPolicy::dontRound},
          {u"focallength"_qs, u"FocalLength"_qs, RoundingPolicy::dontRound},
          {u"aperature"_qs, u"Aperture"_qs, RoundingPolicy::dontRound},
          {u"bitspersample"_qs, u"BitsPerSample"_qs, RoundingPolicy::dontRound},
          {u"exposuretimeseconds"_qs, u"ExposureTimeSeconds"_qs, RoundingPolicy::dontRound},
          {u"resolutionwidthdpi"_qs, u"ResolutionWidthDPI"_qs, RoundingPolicy::dontRound},
          {u"resolutionheightdpi"_qs, u"ResolutionHeightDPI"_qs, RoundingPolicy::dontRound},
          {u"totalbitrate"_qs, u"TotalBitRate"_qs, RoundingPolicy::dontRound},
          {u"videobitrate"_qs, u"VideoBitRate"_qs, RoundingPolicy::dontRound},
          {u"audiobitrate"_qs, u"AudioBitRate"_qs, RoundingPolicy::dontRound},
      })
    , allDateValues({
          {u"contentmodificationdate"_qs, u"ContentModificationDate"_qs},
          {u"contentcreationdate"_qs, u"ContentCreationDate"_qs},
          {u"dateadded"_qs, u"DateAdded"_qs},
          {u"downloadDate"_qs, u"DownloadedDate"_qs},
      })
{ }

std::optional<QVariantHash> SpotlightHelper::itemAttributes(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    struct statx status = {};
    if (path.isEmpty()
        || ::statx(AT_FDCWD, name.constData(), 0, STATX_BASIC_STATS | STATX_BTIME, &status) != 0)
        return std::nullopt;
    Attributes a;

    static const QMimeDatabase mimeDatabase;
    const bool isFile = S_ISREG(status.stx_mode);
    const QMimeType type = mimeDatabase.mimeTypeForFile(path);
    a.insert(u"ContentType"_qs, type.name());

    if (isFile && status.stx_size > 0) {
        const QString mime = type.name();
        if (mime.startsWith(u"image/"_qs)) {
            if (const auto image = ExivImage::open(path))
                readImageAttributes(*image, a);
        } else if (mime.startsWith(u"audio/"_qs) || mime.startsWith(u"video/"_qs)) {
            readMediaAttributes(path, a);
        }
    }

    if (const auto comment = extendedAttribute(name, "user.xdg.comment"))
        a.insert(u"Comment"_qs, *comment);
    QStringList whereFroms;
    if (const auto origin = extendedAttribute(name, "user.xdg.origin.url"))
        whereFroms << *origin;
    if (const auto referrer = extendedAttribute(name, "user.xdg.referrer.url"))
        whereFroms << *referrer;
    insertList(a, u"WhereFroms"_qs, whereFroms);

    // The file's own times stand in where the content holds no date.
    const auto modified = fromTimestamp(status.stx_mtime);
    const std::optional<QDateTime> born
        = (status.stx_mask & STATX_BTIME) ? fromTimestamp(status.stx_btime) : std::nullopt;
    a.insert(u"ContentModificationDate"_qs, *modified);
    if (!a.contains(u"ContentCreationDate"_qs))
        a.insert(u"ContentCreationDate"_qs, born.value_or(*modified));
    if (born)
        a.insert(u"DateAdded"_qs, *born);
    if (!whereFroms.isEmpty())
        a.insert(u"DownloadedDate"_qs,
                 QVariant::fromValue(QList<QDateTime> {born.value_or(*modified)}));
    return a;
}

#if __has_include("metadata/MetadataStorage.h")
void SpotlightHelper::retrieveAndStoreAllTagsFor(const QString &path) const
{
    storeExtractedValues(path, MetadataSource::Spotlight, extract(path));
}
#endif

ExtractedValues SpotlightHelper::extract(const QString &path) const
{
    const auto attributes = itemAttributes(path);
    if (!attributes)
        return {};
    return valuesFromAttributes(*attributes);
}

ExtractedValues SpotlightHelper::valuesFromAttributes(const QVariantHash &attributes) const
{
    ExtractedValues values;
    auto valueOf = [&](const QString &attribute) {
        return attributes.value(attribute);
    };

    for (const Attribute &row : allStringValues) {
        const QVariant value = valueOf(row.attribute);
        if (value.typeId() == QMetaType::QString)
            values.append({row.key, WrappedMetaDataValue::string(value.toString())});
    }
    for (const Attribute &row : allStringArrayValues) {
        const QVariant value = valueOf(row.attribute);
        if (value.typeId() == QMetaType::QStringList) {
            values.append({row.key,
                           WrappedMetaDataValue::string(
                               ValueText::asCommaSeparatedString(value.toStringList()))});
        }
    }
    for (const NumericAttribute &row : allNumericValues) {
        const QVariant value = valueOf(row.attribute);
        switch (value.typeId()) {
        case QMetaType::Int:
        case QMetaType::LongLong:
            values.append(
                {row.key,
                 WrappedMetaDataValue::string(ValueText::numberDescription(value.toLongLong()))});
            break;
        case QMetaType::Double: {
            const double number = value.toDouble();
            const QString text = row.roundingPolicy == RoundingPolicy::roundToOneDecimal
                ? ValueText::singleDigitNumber(number)
                : ValueText::numberDescription(number);
            values.append({row.key, WrappedMetaDataValue::string(text)});
            if (row.key == u"duration"_qs) {
                values.append({u"human_readable_duration"_qs,
                               WrappedMetaDataValue::string(
                                   ValueText::formatAsDaysAndHoursAndMinutes(number))});
            }
            break;
        }
        default:
            break;
        }
    }
    for (const Attribute &row : allDateValues) {
        const QVariant value = valueOf(row.attribute);
        if (value.typeId() == QMetaType::QDateTime) {
            values.append({row.key, WrappedMetaDataValue::date(value.toDateTime())});
        } else if (value.typeId() == qMetaTypeId<QList<QDateTime>>()) {
            const auto dates = value.value<QList<QDateTime>>();
            if (!dates.isEmpty())
                values.append({row.key, WrappedMetaDataValue::date(dates.first())});
        }
    }
    return values;
}

QDateTime SpotlightHelper::getContentCreateDate(const QString &path) const
{
    const auto attributes = itemAttributes(path);
    if (!attributes)
        return ValueText::distantPast();
    const QVariant date = attributes->value(u"ContentCreationDate"_qs);
    return date.typeId() == QMetaType::QDateTime ? date.toDateTime() : ValueText::distantPast();
}

std::optional<QString> SpotlightHelper::getItemCopyright(const QString &path) const
{
    const auto attributes = itemAttributes(path);
    if (!attributes)
        return std::nullopt;
    const QVariant copyright = attributes->value(u"Copyright"_qs);
    if (copyright.typeId() != QMetaType::QString)
        return std::nullopt;
    return copyright.toString();
}
