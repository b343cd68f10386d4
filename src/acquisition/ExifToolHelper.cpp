#include "ExifToolHelper.h"

#include "acquisition/ModernExifExtraction.h"
#include "metadata/MetadataStorage.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

QStringList initialWhiteList()
{
    return {
        u"Composite:SubSecDateTimeOriginal"_s,
        u"Composite:SubSecCreateDate"_s,
        u"Composite:SubSecDigitalCreationDateTime"_s,
        u"DateTimeOriginal"_s,
        u"DateTimeDigitized"_s,
        u"ImageWidth"_s,
        u"ImageHeight"_s,
        u"ModifyDate"_s,
        u"Copyright"_s,
        u"ExposureTime"_s,
        u"FNumber"_s,
        u"ISOSpeed"_s,
        u"ExifVersion"_s,
        u"CreateDate"_s,
        u"OffsetTime"_s,
        u"OffsetTimeOriginal"_s,
        u"OffsetTimeDigitized"_s,
        u"ShutterSpeedValue"_s,
        u"ApertureValue"_s,
        u"SubSecTime"_s,
        u"SubSecTimeOriginal"_s,
        u"SubSecTimeDigitized"_s,
        u"ExifImageWidth"_s,
        u"ExifImageHeight"_s,
        u"SerialNumber"_s,
        u"LensMake"_s,
        u"LensModel"_s,
        u"LensSerialNumber"_s,
        u"ImageEditor"_s,
        u"Exposure"_s,
        u"GPSLatitude"_s,
        u"GPSLatitudeRef"_s,
        u"GPSLongitude"_s,
        u"GPSLongitudeRef"_s,
        u"GPSAltitude"_s,
        u"GPSAltitudeRef"_s,
        u"City"_s,
        u"Province-State"_s,
        u"Sub-location"_s,
        u"Country"_s,
    };
}

QStringList allSupportedFileFormats()
{
    return {
        u"3FR"_s,      u"3G2"_s,      u"3GP"_s,     u"3GP2"_s,  u"3GPP"_s,  u"A"_s,
        u"AA"_s,       u"AAE"_s,      u"AAX"_s,     u"ACFM"_s,  u"ACR"_s,   u"AFM"_s,
        u"AI"_s,       u"AIF"_s,      u"AIFC"_s,    u"AIFF"_s,  u"AIT"_s,   u"AMFM"_s,
        u"APE"_s,      u"APNG"_s,     u"ARQ"_s,     u"ARW"_s,   u"ASF"_s,   u"AVI"_s,
        u"AZW"_s,      u"AZW3"_s,     u"BMP"_s,     u"BPG"_s,   u"BTF"_s,   u"CHM"_s,
        u"CIFF"_s,     u"COS"_s,      u"CR2"_s,     u"CR3"_s,   u"CRM"_s,   u"CRW"_s,
        u"CS1"_s,      u"DC3"_s,      u"DCM"_s,     u"DCP"_s,   u"DCR"_s,   u"DFONT"_s,
        u"DIB"_s,      u"DIC"_s,      u"DICM"_s,    u"DIVX"_s,  u"DJV"_s,   u"DJVU"_s,
        u"DLL"_s,      u"DNG"_s,      u"DOC"_s,     u"DOCM"_s,  u"DOCX"_s,  u"DOT"_s,
        u"DOTM"_s,     u"DOTX"_s,     u"DPX"_s,     u"DR4"_s,   u"DS2"_s,   u"DSS"_s,
        u"DV"_s,       u"DVB"_s,      u"DVR-MS"_s,  u"DYLIB"_s, u"EIP"_s,   u"EPS"_s,
        u"EPS2"_s,     u"EPS3"_s,     u"EPSF"_s,    u"EPUB"_s,  u"ERF"_s,   u"EXE"_s,
        u"EXIF"_s,     u"EXR"_s,      u"EXV"_s,     u"F4A"_s,   u"F4B"_s,   u"F4P"_s,
        u"F4V"_s,      u"FFF"_s,      u"FIT"_s,     u"FITS"_s,  u"FLA"_s,   u"FLAC"_s,
        u"FLIF"_s,     u"FLIR"_s,     u"FLV"_s,     u"FPF"_s,   u"FPX"_s,   u"GIF"_s,
        u"GPR"_s,      u"HDP"_s,      u"HDR"_s,     u"HIF"_s,   u"HIFF"_s,  u"HEIC"_s,
        u"HEIF"_s,     u"HTM"_s,      u"HTML"_s,    u"ICAL"_s,  u"ICC"_s,   u"ICM"_s,
        u"ICS"_s,      u"IDML"_s,     u"IIQ"_s,     u"IND"_s,   u"INDD"_s,  u"INDT"_s,
        u"INSV"_s,     u"INX"_s,      u"ISO"_s,     u"ITC"_s,   u"J2C"_s,   u"J2K"_s,
        u"JNG"_s,      u"JP2"_s,      u"JPC"_s,     u"JPE"_s,   u"JPEG"_s,  u"JPF"_s,
        u"JPG"_s,      u"JPM"_s,      u"JPX"_s,     u"JSON"_s,  u"JXR"_s,   u"K25"_s,
        u"KDC"_s,      u"KEY"_s,      u"KTH"_s,     u"LA"_s,    u"LFP"_s,   u"LFR"_s,
        u"LNK"_s,      u"LRV"_s,      u"M2T"_s,     u"M2TS"_s,  u"M2V"_s,   u"M4A"_s,
        u"M4B"_s,      u"M4P"_s,      u"M4V"_s,     u"MAX"_s,   u"MEF"_s,   u"MIE"_s,
        u"MIF"_s,      u"MIFF"_s,     u"MKA"_s,     u"MKS"_s,   u"MKV"_s,   u"MNG"_s,
        u"MOBI"_s,     u"MODD"_s,     u"MOI"_s,     u"MOS"_s,   u"MOV"_s,   u"MP3"_s,
        u"MP4"_s,      u"MPC"_s,      u"MPEG"_s,    u"MPG"_s,   u"MPO"_s,   u"MQV"_s,
        u"MRW"_s,      u"MTS"_s,      u"MXF"_s,     u"NEF"_s,   u"NEWER"_s, u"NMBTEMPLATE"_s,
        u"NRW"_s,      u"NUMBERS"_s,  u"O"_s,       u"ODB"_s,   u"ODC"_s,   u"ODF"_s,
        u"ODG"_s,      u"ODI"_s,      u"ODP"_s,     u"ODS"_s,   u"ODT"_s,   u"OFR"_s,
        u"OGG"_s,      u"OGV"_s,      u"OPUS"_s,    u"ORF"_s,   u"OTF"_s,   u"PAC"_s,
        u"PAGES"_s,    u"PBM"_s,      u"PCD"_s,     u"PCT"_s,   u"PCX"_s,   u"PDB"_s,
        u"PDF"_s,      u"PEF"_s,      u"PFA"_s,     u"PFB"_s,   u"PFM"_s,   u"PGF"_s,
        u"PGM"_s,      u"PICT"_s,     u"PLIST"_s,   u"PMP"_s,   u"PNG"_s,   u"POT"_s,
        u"POTM"_s,     u"POTX"_s,     u"PPM"_s,     u"PPS"_s,   u"PPSM"_s,  u"PPSX"_s,
        u"PPT"_s,      u"PPTM"_s,     u"PPTX"_s,    u"PRC"_s,   u"PS"_s,    u"PS2"_s,
        u"PS3"_s,      u"PSB"_s,      u"PSD"_s,     u"PSDT"_s,  u"PSP"_s,   u"PSPFRAME"_s,
        u"PSPIMAGE"_s, u"PSPSHAPE"_s, u"PSPTUBE"_s, u"QIF"_s,   u"QT"_s,    u"QTI"_s,
        u"QTIF"_s,     u"R3D"_s,      u"RA"_s,      u"RAF"_s,   u"RAM"_s,   u"RAR"_s,
        u"RAW"_s,      u"RIF"_s,      u"RIFF"_s,    u"RM"_s,    u"RMVB"_s,  u"RPM"_s,
        u"RSRC"_s,     u"RTF"_s,      u"RV"_s,      u"RW2"_s,   u"RWL"_s,   u"RWZ"_s,
        u"SEQ"_s,      u"SKETCH"_s,   u"SO"_s,      u"SR2"_s,   u"SRF"_s,   u"SRW"_s,
        u"SVG"_s,      u"SWF"_s,      u"THM"_s,     u"THMX"_s,  u"TIF"_s,   u"TIFF"_s,
        u"TORRENT"_s,  u"TS"_s,       u"TTC"_s,     u"TTF"_s,   u"TUB"_s,   u"VCARD"_s,
        u"VCF"_s,      u"VOB"_s,      u"VRD"_s,     u"VSD"_s,   u"WAV"_s,   u"WDP"_s,
        u"WEBM"_s,     u"WEBP"_s,     u"WMA"_s,     u"WMV"_s,   u"WTV"_s,   u"WV"_s,
        u"X3F"_s,      u"XCF"_s,      u"XHTML"_s,   u"XLA"_s,   u"XLAM"_s,  u"XLS"_s,
        u"XLSB"_s,     u"XLSM"_s,     u"XLSX"_s,    u"XLT"_s,   u"XLTM"_s,  u"XLTX"_s,
        u"XMP"_s,
    };
}

} // namespace

ExifToolHelper &ExifToolHelper::sharedInstance()
{
    static ExifToolHelper &instance = *new ExifToolHelper;
    return instance;
}

ExifToolHelper::ExifToolHelper()
    : m_rawWhiteList({u"GPSLatitude#"_s, u"GPSLongitude#"_s, u"GPSAltitude#"_s})
    , m_whiteList(initialWhiteList())
    , m_supportedFileFormats(allSupportedFileFormats())
{ }

QStringList ExifToolHelper::rawWhiteList() const
{
    std::lock_guard lock(m_mutex);
    return m_rawWhiteList;
}

QStringList ExifToolHelper::whiteList() const
{
    std::lock_guard lock(m_mutex);
    return m_whiteList;
}

void ExifToolHelper::appendToWhiteList(const QStringList &additional)
{
    std::lock_guard lock(m_mutex);
    if (m_appended)
        return;
    m_appended = true;
    m_whiteList.append(additional);
}

void ExifToolHelper::obtainMetaDataFor(const QString &path, bool geolocation)
{
    MetadataStorage &storage = MetadataStorage::shared();
    const QString retrieved = u"retrieved"_s;
    if (storage.boolValueExistsAndIsTrue(path, retrieved, MetadataSource::Computed))
        return;
    const QString extension = QFileInfo(path).suffix();
    // Marked before the format test, so an unsupported file counts as read too.
    storage.store(path, MetadataSource::Computed, retrieved, true);
    if (!fileFormatSupported(extension))
        return;

    ModernExifExtraction &extraction = ModernExifExtraction::shared();
    if (extraction.whiteList.isEmpty()) {
        extraction.whiteList = whiteList();
        extraction.rawWhiteList = rawWhiteList();
    }
    extraction.serializedAccessDispatchQueue().sync(
        [&] { extraction.internalStoreTags(path, geolocation); });
}

bool ExifToolHelper::fileFormatSupported(QStringView fileExtension) const
{
    return m_supportedFileFormats.contains(fileExtension.toString().toUpper());
}

const QStringList &ExifToolHelper::quickTimeFamily()
{
    static const QStringList family = {
        u"MOV"_s,  u"MP4"_s, u"M4V"_s, u"M4A"_s,  u"M4B"_s, u"M4P"_s, u"3GP"_s, u"3G2"_s,
        u"3GPP"_s, u"MQV"_s, u"QT"_s,  u"QTIF"_s, u"F4V"_s, u"F4A"_s, u"F4B"_s, u"F4P"_s,
    };
    return family;
}

bool ExifToolHelper::isQuickTimeFamily(QStringView fileExtension)
{
    return quickTimeFamily().contains(fileExtension.toString().toUpper());
}

namespace {

// Divergence flags count only as the text "1".
bool flagIsSet(const ExifToolHelper::KeyLookup &valueOf, const QString &key)
{
    return valueOf(key) == u"1"_s;
}

} // namespace

ExifToolHelper::GPSStatusDecision ExifToolHelper::decideGPSStatus(QStringView fileExtension,
                                                                  const KeyLookup &valueOf)
{
    // Only presence counts, not the values.
    const bool longitude = valueOf(u"GPSLongitude#"_s).has_value();
    const bool latitude = valueOf(u"GPSLatitude#"_s).has_value();
    const bool longitudeRef = valueOf(u"GPSLongitudeRef"_s).has_value();
    const bool latitudeRef = valueOf(u"GPSLatitudeRef"_s).has_value();

    GPSStatusDecision decision {None, false};
    if (isQuickTimeFamily(fileExtension)) {
        if (longitude && latitude)
            decision = {Complete, true};
        else if (longitude || latitude)
            decision = {Incomplete, false};
    } else {
        const int present = int(longitude) + int(latitude) + int(longitudeRef) + int(latitudeRef);
        if (present == 4)
            decision = {Complete, true};
        else if (present > 0)
            decision = {Incomplete, false};
    }
    // The XMP copy or the sidecar disagrees with the file's position.
    if (flagIsSet(valueOf, u"GPSDivergent"_s) || flagIsSet(valueOf, u"SidecarGPSDivergent"_s))
        decision.status = Divergent;
    return decision;
}

ExifToolHelper::LocationStatus ExifToolHelper::decideIPTCStatus(const KeyLookup &valueOf)
{
    const bool city = valueOf(u"City"_s).has_value();
    const bool country = valueOf(u"Country"_s).has_value();
    const bool state = valueOf(u"Province-State"_s).has_value();
    const bool sublocation = valueOf(u"Sub-location"_s).has_value();

    // The sub-location isn't needed for a complete location.
    LocationStatus status = None;
    if (city && country && state)
        status = Complete;
    else if (city || country || state || sublocation)
        status = Incomplete;
    for (const QString &flag :
         {u"CityDivergent"_s, u"CountryDivergent"_s, u"StateDivergent"_s, u"SublocationDivergent"_s,
          u"SidecarCityDivergent"_s, u"SidecarCountryDivergent"_s, u"SidecarStateDivergent"_s,
          u"SidecarSublocationDivergent"_s}) {
        if (flagIsSet(valueOf, flag))
            return Divergent;
    }
    return status;
}
