#include "ImageIOHelper.h"

#include "ExivImage.h"
#include "ValueText.h"

#include <QFileInfo>
#include <QLocale>

namespace {

using Transformation = ImageIOHelper::Transformation;
using ExtractionModel = ImageIOHelper::ExtractionModel;

ExtractionModel model(std::initializer_list<std::pair<const char *, const char *>> rows)
{
    static const QStringList integers = {u"PixelHeight"_qs, u"PixelWidth"_qs, u"DPIWidth"_qs,
                                         u"DPIHeight"_qs,   u"Depth"_qs,      u"HasAlpha"_qs};
    static const QStringList dates = {u"ExifDateTimeOriginal"_qs, u"ExifDateTimeDigitized"_qs};
    ExtractionModel result;
    for (const auto &[key, tag] : rows) {
        const QString name = QString::fromLatin1(key);
        const Transformation transformation = integers.contains(name) ? Transformation::integer
            : dates.contains(name)                                    ? Transformation::date
                                                                      : Transformation::string;
        result.append({name, {QString::fromLatin1(tag), transformation}});
    }
    return result;
}

// The Exif and GPS properties and the exiv2 keys they come from.
struct ExifSourceKey
{
    const char *property;
    const char *exivKey;
};

constexpr ExifSourceKey exifSourceKeys[] = {
    {"DateTimeOriginal", "Exif.Photo.DateTimeOriginal"},
    {"DateTimeDigitized", "Exif.Photo.DateTimeDigitized"},
    {"SubjectDistance", "Exif.Photo.SubjectDistance"},
    {"MeteringMode", "Exif.Photo.MeteringMode"},
    {"LightSource", "Exif.Photo.LightSource"},
    {"Flash", "Exif.Photo.Flash"},
    {"FocalLength", "Exif.Photo.FocalLength"},
    {"MakerNote", "Exif.Photo.MakerNote"},
    {"UserComment", "Exif.Photo.UserComment"},
    {"SubsecTime", "Exif.Photo.SubSecTime"},
    {"SubsecTimeOriginal", "Exif.Photo.SubSecTimeOriginal"},
    {"SubsecTimeDigitized", "Exif.Photo.SubSecTimeDigitized"},
    {"ColorSpace", "Exif.Photo.ColorSpace"},
    {"PixelXDimension", "Exif.Photo.PixelXDimension"},
    {"PixelYDimension", "Exif.Photo.PixelYDimension"},
    {"SubjectLocation", "Exif.Photo.SubjectLocation"},
    {"SceneType", "Exif.Photo.SceneType"},
    {"ExposureMode", "Exif.Photo.ExposureMode"},
    {"WhiteBalance", "Exif.Photo.WhiteBalance"},
    {"DigitalZoomRatio", "Exif.Photo.DigitalZoomRatio"},
    {"FocalLenIn35mmFilm", "Exif.Photo.FocalLengthIn35mmFilm"},
    {"SceneCaptureType", "Exif.Photo.SceneCaptureType"},
    {"Contrast", "Exif.Photo.Contrast"},
    {"Saturation", "Exif.Photo.Saturation"},
    {"Sharpness", "Exif.Photo.Sharpness"},
    {"DeviceSettingDescription", "Exif.Photo.DeviceSettingDescription"},
    {"SubjectDistRange", "Exif.Photo.SubjectDistanceRange"},
    {"ImageUniqueID", "Exif.Photo.ImageUniqueID"},
    {"CameraOwnerName", "Exif.Photo.CameraOwnerName"},
    {"BodySerialNumber", "Exif.Photo.BodySerialNumber"},
    {"LensSpecification", "Exif.Photo.LensSpecification"},
    {"LensMake", "Exif.Photo.LensMake"},
    {"LensModel", "Exif.Photo.LensModel"},
    {"LensSerialNumber", "Exif.Photo.LensSerialNumber"},
    {"Gamma", "Exif.Photo.Gamma"},
    {"ExposureTime", "Exif.Photo.ExposureTime"},
    {"FNumber", "Exif.Photo.FNumber"},
    {"ExposureProgram", "Exif.Photo.ExposureProgram"},
    {"ShutterSpeedValue", "Exif.Photo.ShutterSpeedValue"},
    {"ApertureValue", "Exif.Photo.ApertureValue"},
    {"BrightnessValue", "Exif.Photo.BrightnessValue"},
    {"ISOSpeedRatings", "Exif.Photo.ISOSpeedRatings"},
    {"ISOSpeed", "Exif.Photo.ISOSpeed"},
    {"ExifVersion", "Exif.Photo.ExifVersion"},
};

constexpr ExifSourceKey gpsSourceKeys[] = {
    {"Version", "Exif.GPSInfo.GPSVersionID"},
    {"LatitudeRef", "Exif.GPSInfo.GPSLatitudeRef"},
    {"Latitude", "Exif.GPSInfo.GPSLatitude"},
    {"LongitudeRef", "Exif.GPSInfo.GPSLongitudeRef"},
    {"Longitude", "Exif.GPSInfo.GPSLongitude"},
    {"AltitudeRef", "Exif.GPSInfo.GPSAltitudeRef"},
    {"Altitude", "Exif.GPSInfo.GPSAltitude"},
    {"TimeStamp", "Exif.GPSInfo.GPSTimeStamp"},
    {"Satellites", "Exif.GPSInfo.GPSSatellites"},
    {"Status", "Exif.GPSInfo.GPSStatus"},
    {"MeasureMode", "Exif.GPSInfo.GPSMeasureMode"},
    {"DOP", "Exif.GPSInfo.GPSDOP"},
    {"SpeedRef", "Exif.GPSInfo.GPSSpeedRef"},
    {"Speed", "Exif.GPSInfo.GPSSpeed"},
    {"TrackRef", "Exif.GPSInfo.GPSTrackRef"},
    {"Track", "Exif.GPSInfo.GPSTrack"},
    {"ImgDirectionRef", "Exif.GPSInfo.GPSImgDirectionRef"},
    {"ImgDirection", "Exif.GPSInfo.GPSImgDirection"},
    {"MapDatum", "Exif.GPSInfo.GPSMapDatum"},
    {"DestLatitudeRef", "Exif.GPSInfo.GPSDestLatitudeRef"},
    {"DestLatitude", "Exif.GPSInfo.GPSDestLatitude"},
    {"DestLongitudeRef", "Exif.GPSInfo.GPSDestLongitudeRef"},
    {"DestLongitude", "Exif.GPSInfo.GPSDestLongitude"},
    {"DestBearingRef", "Exif.GPSInfo.GPSDestBearingRef"},
    {"DestBearing", "Exif.GPSInfo.GPSDestBearing"},
    {"DestDistanceRef", "Exif.GPSInfo.GPSDestDistanceRef"},
    {"DestDistance", "Exif.GPSInfo.GPSDestDistance"},
    {"ProcessingMethod", "Exif.GPSInfo.GPSProcessingMethod"},
    {"AreaInformation", "Exif.GPSInfo.GPSAreaInformation"},
    {"DateStamp", "Exif.GPSInfo.GPSDateStamp"},
    {"Differental", "Exif.GPSInfo.GPSDifferential"},
    {"HPositioningError", "Exif.GPSInfo.GPSHPositioningError"},
};

// IPTC IIM datasets of record 2 by number.
struct IptcSourceKey
{
    quint16 dataset;
    const char *property;
};

constexpr IptcSourceKey iptcSourceKeys[] = {
    {3, "ObjectTypeReference"},
    {4, "ObjectAttributeReference"},
    {5, "ObjectName"},
    {7, "EditStatus"},
    {8, "EditorialUpdate"},
    {10, "Urgency"},
    {12, "SubjectReference"},
    {15, "Category"},
    {20, "SupplementalCategory"},
    {22, "FixtureIdentifier"},
    {25, "Keywords"},
    {26, "ContentLocationCode"},
    {27, "ContentLocationName"},
    {30, "ReleaseDate"},
    {35, "ReleaseTime"},
    {37, "ExpirationDate"},
    {38, "ExpirationTime"},
    {40, "SpecialInstructions"},
    {42, "ActionAdvised"},
    {45, "ReferenceService"},
    {47, "ReferenceDate"},
    {50, "ReferenceNumber"},
    {55, "DateCreated"},
    {60, "TimeCreated"},
    {62, "DigitalCreationDate"},
    {63, "DigitalCreationTime"},
    {65, "OriginatingProgram"},
    {70, "ProgramVersion"},
    {75, "ObjectCycle"},
    {80, "Byline"},
    {85, "BylineTitle"},
    {90, "City"},
    {92, "SubLocation"},
    {95, "ProvinceState"},
    {100, "CountryPrimaryLocationCode"},
    {101, "CountryPrimaryLocationName"},
    {103, "OriginalTransmissionReference"},
    {105, "Headline"},
    {110, "Credit"},
    {115, "Source"},
    {116, "CopyrightNotice"},
    {118, "Contact"},
    {120, "CaptionAbstract"},
    {122, "WriterEditor"},
    {130, "ImageType"},
    {131, "ImageOrientation"},
    {135, "LanguageIdentifier"},
};

QString trimmedText(const std::string &text)
{
    QString result = QString::fromStdString(text);
    const qsizetype nul = result.indexOf(QChar(0));
    if (nul >= 0)
        result.truncate(nul);
    return result.trimmed();
}

QVariant numberAt(const Exiv2::Value &value, long i)
{
    switch (value.typeId()) {
    case Exiv2::unsignedRational:
    case Exiv2::signedRational: {
        const Exiv2::Rational r = value.toRational(i);
        if (r.second == 0)
            return {};
        return double(r.first) / double(r.second);
    }
    case Exiv2::tiffFloat:
    case Exiv2::tiffDouble:
        return double(value.toFloat(i));
    default:
        return qint64(value.toLong(i));
    }
}

// One Exif value as the platform's dictionaries hold it: a single number as a number, several
// as a list of numbers, text as text, comments decoded, opaque bytes as data.
QVariant platformForm(const char *property, const Exiv2::Value &value)
{
    if (const auto *comment = dynamic_cast<const Exiv2::CommentValue *>(&value)) {
        const QString text = trimmedText(comment->comment());
        return text.isEmpty() ? QVariant() : QVariant(text);
    }
    const QByteArray name(property);
    switch (value.typeId()) {
    case Exiv2::asciiString:
    case Exiv2::string: {
        const QString text = trimmedText(value.toString());
        return text.isEmpty() ? QVariant() : QVariant(text);
    }
    case Exiv2::undefined:
        if (name == "SceneType" || name == "FileSource")
            return qint64(value.toLong(0));
        if (name == "ExifVersion" || name == "FlashPixVersion") {
            QVariantList digits;
            for (long i = 0; i < value.count(); ++i)
                digits << qint64(value.toLong(i) - '0');
            return digits;
        }
        {
            QByteArray data(int(value.size()), Qt::Uninitialized);
            value.copy(reinterpret_cast<Exiv2::byte *>(data.data()), Exiv2::bigEndian);
            return data;
        }
    default:
        break;
    }
    // The platform hands these out as lists even when they hold one number.
    const bool alwaysList = name == "ISOSpeedRatings" || name == "SubjectLocation"
        || name == "LensSpecification" || name == "Version";
    if (value.count() == 1 && !alwaysList)
        return numberAt(value, 0);
    QVariantList numbers;
    for (long i = 0; i < value.count(); ++i)
        numbers << numberAt(value, i);
    return numbers;
}

QString gpsTimeStamp(const ExivImage &image, const char *key)
{
    const auto h = image.exifNumber(key, 0);
    const auto m = image.exifNumber(key, 1);
    const auto s = image.exifNumber(key, 2);
    if (!h || !m || !s)
        return {};
    QString text = QString::asprintf("%02d:%02d:%02d", int(*h), int(*m), int(*s));
    const double fraction = *s - std::floor(*s);
    if (fraction > 0.005)
        text += QString::asprintf(".%02d", int(std::lround(fraction * 100)) % 100);
    return text;
}

QString iptcText(const Exiv2::Iptcdatum &datum)
{
    const Exiv2::Value &value = datum.value();
    if (const auto *date = dynamic_cast<const Exiv2::DateValue *>(&value)) {
        const auto d = date->getDate();
        return QString::asprintf("%04d%02d%02d", d.year, d.month, d.day);
    }
    if (const auto *time = dynamic_cast<const Exiv2::TimeValue *>(&value)) {
        const auto t = time->getTime();
        const bool west = t.tzHour < 0 || t.tzMinute < 0;
        return QString::asprintf("%02d%02d%02d%c%02d%02d", t.hour, t.minute, t.second,
                                 west ? '-' : '+', std::abs(t.tzHour), std::abs(t.tzMinute));
    }
    return QString::fromStdString(value.toString());
}

QVariant oneOrList(const QStringList &texts)
{
    if (texts.isEmpty())
        return {};
    if (texts.size() == 1)
        return texts.first();
    return texts;
}

} // namespace

const ImageIOHelper &ImageIOHelper::shared()
{
    static const ImageIOHelper instance;
    return instance;
}

ImageIOHelper::ImageIOHelper()
    : imageMetadataExtractionModel(model({
        {"PixelHeight", "image_pixel_height"},
        {"PixelWidth", "image_pixel_width"},
        {"DPIWidth", "image_dpi_width"},
        {"DPIHeight", "image_dpi_height"},
        {"Depth", "image_depth"},
        {"HasAlpha", "image_has_alpha"},
        {"ProfileName", "image_profile_name"},
    }))
    , gpsMetadataExtractionModel(model({
          {"GPSVersion", "gps_version"},
          {"GPSLatitudeRef", "gps_latitude_ref"},
          {"GPSLatitude", "gps_latitude"},
          {"GPSLongitudeRef", "gps_longitude_ref"},
          {"GPSLongitude", "gps_longitude"},
          {"GPSAltitudeRef", "gps_altitude_ref"},
          {"GPSAltitude", "gps_altitude"},
          {"GPSTimeStamp", "gps_time_stamp"},
          {"GPSSatellites", "gps_satellites"},
          {"GPSStatus", "gps_status"},
          {"GPSMeasureMode", "gps_measure_mode"},
          {"GPSDOP", "gps_dop"},
          {"GPSSpeedRef", "gps_speed_ref"},
          {"GPSSpeed", "gps_speed"},
          {"GPSTrackRef", "gps_track_ref"},
          {"GPSTrack", "gps_track"},
          {"GPSImgDirectionRef", "gps_image_direction_ref"},
          {"GPSImgDirection", "gps_image_direction"},
          {"GPSMapDatum", "gps_map_datum"},
          {"GPSDestLatitudeRef", "gps_destination_latitude_ref"},
          {"GPSDestLatitude", "gps_destination_latitude"},
          {"GPSDestLongitudeRef", "gps_destination_longitude_ref"},
          {"GPSDestLongitude", "gps_destination_longitude"},
          {"GPSDestBearingRef", "gps_destination_bearing_ref"},
          {"GPSDestBearing", "gps_destination_bearing"},
          {"GPSDestDistanceRef", "gps_distance_ref"},
          {"GPSDestDistance", "gps_distance"},
          {"GPSProcessingMethod", "gps_processing_method"},
          {"GPSAreaInformation", "gps_area_information"},
          {"GPSDateStamp", "gps_date_stamp"},
          {"GPSDifferental", "gps_differential"},
          {"GPSHPositioningError", "gps_positioning_error"},
      }))
    , iptcMetadataExtractionModel(model({
          {"IPTCObjectTypeReference", "iptc_object_type_reference"},
          {"IPTCObjectAttributeReference", "iptc_attribute_reference"},
          {"IPTCObjectName", "iptc_object_name"},
          {"IPTCEditStatus", "iptc_edit_status"},
          {"IPTCEditorialUpdate", "iptc_editorial_update"},
          {"IPTCUrgency", "iptc_urgency"},
          {"IPTCSubjectReference", "iptc_subject_reference"},
          {"IPTCCategory", "iptc_category"},
          {"IPTCSupplementalCategory", "iptc_supplemental_category"},
          {"IPTCFixtureIdentifier", "iptc_fixture_identifier"},
          {"IPTCKeywords", "iptc_keywords"},
          {"IPTCContentLocationCode", "iptc_content_location_code"},
          {"IPTCContentLocationName", "iptc_content_location_name"},
          {"IPTCReleaseDate", "iptc_release_date"},
          {"IPTCReleaseTime", "iptc_release_time"},
          {"IPTCExpirationDate", "iptc_expiration_date"},
          {"IPTCExpirationTime", "iptc_expiration_time"},
          {"IPTCSpecialInstructions", "iptc_special_instructions"},
          {"IPTCActionAdvised", "iptc_action_advised"},
          {"IPTCReferenceService", "iptc_reference_service"},
          {"IPTCReferenceDate", "iptc_reference_date"},
          {"IPTCReferenceNumber", "iptc_reference_number"},
          {"IPTCDateCreated", "iptc_date_created"},
          {"IPTCTimeCreated", "iptc_time_created"},
          {"IPTCDigitalCreationDate", "iptc_digital_creation_date"},
          {"IPTCDigitalCreationTime", "iptc_digital_creation_time"},
          {"IPTCOriginatingProgram", "iptc_originating_program"},
          {"IPTCProgramVersion", "iptc_program_version"},
          {"IPTCObjectCycle", "iptc_object_cycle"},
          {"IPTCByline", "iptc_creator"},
          {"IPTCBylineTitle", "iptc_creator_job_title"},
          {"IPTCCity", "iptc_city"},
          {"IPTCSubLocation", "iptc_sub_location"},
          {"IPTCProvinceState", "iptc_province_state"},
          {"IPTCCountryPrimaryLocationCode", "iptc_country_primary_location_code"},
          {"IPTCCountryPrimaryLocationName", "iptc_primary_location_name"},
          {"IPTCOriginalTransmissionReference", "iptc_original_transmission_reference"},
          {"IPTCHeadline", "iptc_headline"},
          {"IPTCCredit", "iptc_credit"},
          {"IPTCSource", "iptc_source"},
          {"IPTCCopyrightNotice", "iptc_copyright_notice"},
          {"IPTCContact", "iptc_contact"},
          {"IPTCCaptionAbstract", "iptc_caption_abstract"},
          {"IPTCWriterEditor", "iptc_writer_editor"},
          {"IPTCImageType", "iptc_image_type"},
          {"IPTCImageOrientation", "iptc_image_orientation"},
          {"IPTCLanguageIdentifier", "iptc_language_identifier"},
          {"IPTCStarRating", "iptc_star_rating"},
          {"IPTCCreatorContactInfo", "iptc_creator_contact_info"},
          {"IPTCRightsUsageTerms", "iptc_rights_usage_terms"},
          {"IPTCScene", "iptc_scene"},
          {"IPTCContactInfoCity", "iptc_contact_info_city"},
          {"IPTCContactInfoCountry", "iptc_contact_info_country"},
          {"IPTCContactInfoAddress", "iptc_contact_info_address"},
          {"IPTCContactInfoPostalCode", "iptc_contact_info_postal_code"},
          {"IPTCContactInfoStateProvince", "iptc_contact_info_state_province"},
          {"IPTCContactInfoEmails", "iptc_contact_info_emails"},
          {"IPTCContactInfoPhones", "iptc_contact_info_phones"},
          {"IPTCContactInfoWebURLs", "iptc_contact_info_web_urls"},
      }))
    , tiffMetadataExtractionModel(model({
          {"TIFFMake", "tiff_make"},
          {"TIFFModel", "tiff_model"},
      }))
    , exifMetadataExtractionModel(model({
          {"ExifDateTimeOriginal", "exif_date_time_original"},
          {"ExifDateTimeDigitized", "exif_date_time_digitized"},
          {"ExifSubjectDistance", "exif_subject_distance"},
          {"ExifMeteringMode", "exif_metering_mode"},
          {"ExifLightSource", "exif_light_source"},
          {"ExifFlash", "exif_flash"},
          {"ExifFocalLength", "exif_focal_length"},
          {"ExifMakerNote", "exif_maker_note"},
          {"ExifUserComment", "exif_user_comment"},
          {"ExifSubsecTime", "exif_subsec_time"},
          {"ExifSubsecTimeOriginal", "exif_subsec_time_original"},
          {"ExifSubsecTimeDigitized", "exif_subsec_time_digitized"},
          {"ExifColorSpace", "exif_color_space"},
          {"ExifPixelXDimension", "exif_pixel_x_dimension"},
          {"ExifPixelYDimension", "exif_pixel_y_dimension"},
          {"ExifSubjectLocation", "exif_subject_location"},
          {"ExifSceneType", "exif_scene_type"},
          {"ExifExposureMode", "exif_exposure_mode"},
          {"ExifWhiteBalance", "exif_white_balance"},
          {"ExifDigitalZoomRatio", "exif_digital_zoom_ratio"},
          {"ExifFocalLenIn35mmFilm", "exif_focal_length_in_35mm_film"},
          {"ExifSceneCaptureType", "exif_scene_capture_type"},
          {"ExifContrast", "exif_contrast"},
          {"ExifSaturation", "exif_saturation"},
          {"ExifSharpness", "exif_sharpness"},
          {"ExifDeviceSettingDescription", "exif_device_setting_description"},
          {"ExifSubjectDistRange", "exif_subject_distance_range"},
          {"ExifImageUniqueID", "exif_image_unique_id"},
          {"ExifCameraOwnerName", "exif_camera_owner_type"},
          {"ExifBodySerialNumber", "exif_body_serial_number"},
          {"ExifLensSpecification", "exif_lens_specification"},
          {"ExifLensMake", "exif_lens_make"},
          {"ExifLensModel", "exif_lens_model"},
          {"ExifLensSerialNumber", "exif_lens_serial_number"},
          {"ExifGamma", "exif_gamma"},
          {"ExifExposureTime", "exif_exposure_time"},
          {"ExifFNumber", "exif_f_number"},
          {"ExifExposureProgram", "exif_exposure_program"},
          {"ExifShutterSpeedValue", "exif_shutter_speed"},
          {"ExifApertureValue", "exif_aperature"},
          {"ExifBrightnessValue", "exif_brightness"},
          {"ExifISOSpeedRatings", "exif_iso_speed_ratings"},
          {"ExifISOSpeed", "exif_iso_speed"},
          {"ExifVersion", "exif_version"},
      }))
    , supportedFileTypes({u"jpg"_qs,  u"jpeg"_qs, u"jpe"_qs,  u"jfif"_qs, u"tif"_qs, u"tiff"_qs,
                          u"png"_qs,  u"webp"_qs, u"gif"_qs,  u"bmp"_qs,  u"psd"_qs, u"jp2"_qs,
                          u"heic"_qs, u"heif"_qs, u"avif"_qs, u"dng"_qs,  u"cr2"_qs, u"cr3"_qs,
                          u"crw"_qs,  u"nef"_qs,  u"nrw"_qs,  u"orf"_qs,  u"pef"_qs, u"arw"_qs,
                          u"sr2"_qs,  u"srw"_qs,  u"rw2"_qs,  u"raf"_qs,  u"mrw"_qs, u"tga"_qs,
                          u"pgf"_qs,  u"exv"_qs,  u"m4b"_qs})
{ }

#if __has_include("metadata/MetadataStorage.h")
void ImageIOHelper::retrieveAndStoreAllTagsFor(const QString &path) const
{
    storeExtractedValues(path, MetadataSource::ImageIO, extract(path));
}
#endif

ExtractedValues ImageIOHelper::extract(const QString &path) const
{
    ExtractedValues values;
    if (!supportedFileTypes.contains(QFileInfo(path).suffix().toLower()))
        return values;
    const auto properties = copyProperties(path);
    if (!properties)
        return values;
    extract(properties->properties, imageMetadataExtractionModel, values);
    if (properties->exif)
        extract(*properties->exif, exifMetadataExtractionModel, values);
    if (properties->iptc)
        extract(*properties->iptc, iptcMetadataExtractionModel, values);
    if (properties->gps)
        extract(*properties->gps, gpsMetadataExtractionModel, values);
    if (properties->tiff)
        extract(*properties->tiff, tiffMetadataExtractionModel, values);
    return values;
}

void ImageIOHelper::extract(const QVariantMap &dic, const ExtractionModel &instructions,
                            ExtractedValues &values) const
{
    for (const auto &[key, instruction] : instructions) {
        const auto it = dic.constFind(key);
        if (it == dic.cend())
            continue;
        const QVariant &value = *it;
        const int type = value.typeId();
        if (instruction.transformation == Transformation::date) {
            if (type != QMetaType::QString)
                continue;
            const QDateTime date = QLocale(QLocale::English, QLocale::UnitedStates)
                                       .toDateTime(value.toString(), u"yyyy:MM:dd HH:mm:ss"_qs);
            if (date.isValid())
                values.append({instruction.tag, WrappedMetaDataValue::date(date)});
            continue;
        }
        QString text;
        switch (type) {
        case QMetaType::Bool:
            text = value.toBool() ? u"1"_qs : u"0"_qs;
            break;
        case QMetaType::Int:
        case QMetaType::LongLong:
        case QMetaType::UInt:
        case QMetaType::ULongLong:
            text = ValueText::numberDescription(value.toLongLong());
            break;
        case QMetaType::Double:
            text = ValueText::numberDescription(value.toDouble());
            break;
        case QMetaType::QString:
            text = value.toString();
            break;
        case QMetaType::QStringList:
            text = ValueText::asCommaSeparatedString(value.toStringList());
            break;
        default:
            continue;
        }
        values.append({instruction.tag, WrappedMetaDataValue::string(text)});
    }
}

std::optional<ImageIOHelper::ImageProperties> ImageIOHelper::copyProperties(const QString &path)
{
    const auto image = ExivImage::open(path);
    if (!image)
        return std::nullopt;
    return propertiesOf(*image);
}

ImageIOHelper::ImageProperties ImageIOHelper::propertiesOf(const ExivImage &image)
{
    ImageProperties result;
    QVariantMap &top = result.properties;
    if (image.pixelWidth > 0 && image.pixelHeight > 0) {
        top.insert(u"PixelWidth"_qs, qint64(image.pixelWidth));
        top.insert(u"PixelHeight"_qs, qint64(image.pixelHeight));
    }
    if (image.dpiWidth && image.dpiHeight) {
        top.insert(u"DPIWidth"_qs, *image.dpiWidth);
        top.insert(u"DPIHeight"_qs, *image.dpiHeight);
    }
    if (image.depth)
        top.insert(u"Depth"_qs, qint64(*image.depth));
    if (image.hasAlpha)
        top.insert(u"HasAlpha"_qs, *image.hasAlpha);
    if (!image.profileName.isEmpty())
        top.insert(u"ProfileName"_qs, image.profileName);

    QVariantMap exif;
    for (const auto &[property, exivKey] : exifSourceKeys) {
        if (const Exiv2::Value *value = image.exifValue(exivKey)) {
            const QVariant converted = platformForm(property, *value);
            if (converted.isValid())
                exif.insert(u"Exif"_qs + QLatin1String(property), converted);
        }
    }
    if (!exif.isEmpty())
        result.exif = exif;

    QVariantMap gps;
    for (const auto &[property, exivKey] : gpsSourceKeys) {
        const QByteArray name(property);
        QVariant converted;
        if (name == "Latitude" || name == "Longitude" || name == "DestLatitude"
            || name == "DestLongitude") {
            if (const auto degrees = image.exifDegrees(exivKey))
                converted = *degrees;
        } else if (name == "TimeStamp") {
            const QString time = gpsTimeStamp(image, exivKey);
            if (!time.isEmpty())
                converted = time;
        } else if (const Exiv2::Value *value = image.exifValue(exivKey)) {
            converted = platformForm(property, *value);
        }
        if (converted.isValid())
            gps.insert(u"GPS"_qs + QLatin1String(property), converted);
    }
    if (!gps.isEmpty())
        result.gps = gps;

    QVariantMap iptc;
    QHash<quint16, QStringList> datasets;
    for (const auto &datum : image.iptc()) {
        if (datum.record() == 2)
            datasets[datum.tag()] << iptcText(datum);
    }
    for (const auto &[dataset, property] : iptcSourceKeys) {
        const auto texts = datasets.constFind(dataset);
        if (texts != datasets.cend())
            iptc.insert(u"IPTC"_qs + QLatin1String(property), oneOrList(*texts));
    }
    // The IPTC Core fields that only XMP holds.
    const QStringList rating = image.xmpTexts("Xmp.xmp.Rating");
    if (!rating.isEmpty()) {
        bool isNumber = false;
        const qint64 stars = rating.first().toLongLong(&isNumber);
        iptc.insert(u"IPTCStarRating"_qs, isNumber ? QVariant(stars) : QVariant(rating.first()));
    }
    if (const QVariant terms = oneOrList(image.xmpTexts("Xmp.xmpRights.UsageTerms"));
        terms.isValid())
        iptc.insert(u"IPTCRightsUsageTerms"_qs, terms);
    if (const QStringList scene = image.xmpTexts("Xmp.iptc.Scene"); !scene.isEmpty())
        iptc.insert(u"IPTCScene"_qs, scene);
    QVariantMap contactInfo;
    const std::pair<const char *, const char *> contactFields[] = {
        {"IPTCContactInfoCity", "Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiAdrCity"},
        {"IPTCContactInfoCountry", "Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiAdrCtry"},
        {"IPTCContactInfoAddress", "Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiAdrExtadr"},
        {"IPTCContactInfoPostalCode", "Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiAdrPcode"},
        {"IPTCContactInfoStateProvince", "Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiAdrRegion"},
        {"IPTCContactInfoEmails", "Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiEmailWork"},
        {"IPTCContactInfoPhones", "Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiTelWork"},
        {"IPTCContactInfoWebURLs", "Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiUrlWork"},
    };
    for (const auto &[property, xmpKey] : contactFields) {
        if (const QVariant field = oneOrList(image.xmpTexts(xmpKey)); field.isValid())
            contactInfo.insert(QLatin1String(property), field);
    }
    // Like the platform, the contact fields sit inside their own dictionary.
    if (!contactInfo.isEmpty())
        iptc.insert(u"IPTCCreatorContactInfo"_qs, contactInfo);
    if (!iptc.isEmpty())
        result.iptc = iptc;

    QVariantMap tiff;
    if (const auto make = image.exifText("Exif.Image.Make"))
        tiff.insert(u"TIFFMake"_qs, *make);
    if (const auto model = image.exifText("Exif.Image.Model"))
        tiff.insert(u"TIFFModel"_qs, *model);
    if (!tiff.isEmpty())
        result.tiff = tiff;
    return result;
}
