#include "ExivImage.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <cmath>
#include <mutex>

namespace {

void initialiseExiv2Once()
{
    static std::once_flag once;
    std::call_once(once, [] {
        // exiv2 reports every oddity of a damaged file on stderr; a reader stays quiet.
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        // The XMP toolkit must be set up before threads read XMP at the same time.
        Exiv2::XmpParser::initialize();
#ifdef EXV_ENABLE_BMFF
        Exiv2::enableBMFF(true);
#endif
    });
}

QString fromStd(const std::string &text)
{
    return QString::fromStdString(text);
}

quint16 bigEndian16(const QByteArray &bytes, qsizetype at)
{
    return qFromBigEndian<quint16>(bytes.constData() + at);
}

quint32 bigEndian32(const QByteArray &bytes, qsizetype at)
{
    return qFromBigEndian<quint32>(bytes.constData() + at);
}

struct HeaderFacts
{
    std::optional<int> depth;
    std::optional<bool> hasAlpha;
    std::optional<double> dpiWidth;
    std::optional<double> dpiHeight;
    QString colorModel;
};

// Walks the JPEG markers up to the first scan: the frame header gives the precision and the
// number of components, a JFIF segment the density.
HeaderFacts readJpegHeader(QFile &file)
{
    HeaderFacts facts;
    if (!file.seek(2))
        return facts;
    for (int segments = 0; segments < 4096; ++segments) {
        const QByteArray marker = file.read(4);
        if (marker.size() < 4 || quint8(marker[0]) != 0xFF)
            break;
        const quint8 code = quint8(marker[1]);
        if (code == 0xD8 || (code >= 0xD0 && code <= 0xD7) || code == 0x01) {
            if (!file.seek(file.pos() - 2))
                break;
            continue;
        }
        if (code == 0xDA || code == 0xD9)
            break;
        const int length = bigEndian16(marker, 2);
        if (length < 2)
            break;
        const qint64 next = file.pos() + length - 2;
        const bool isFrame
            = code >= 0xC0 && code <= 0xCF && code != 0xC4 && code != 0xC8 && code != 0xCC;
        if (isFrame && length >= 8) {
            const QByteArray frame = file.read(6);
            if (frame.size() == 6) {
                facts.depth = quint8(frame[0]);
                const int components = quint8(frame[5]);
                facts.hasAlpha = false;
                facts.colorModel = components == 1 ? QStringLiteral("Gray")
                    : components == 4              ? QStringLiteral("CMYK")
                                                   : QStringLiteral("RGB");
            }
            break;
        }
        if (code == 0xE0 && length >= 16) {
            const QByteArray app0 = file.read(12);
            if (app0.size() == 12 && app0.startsWith(QByteArrayLiteral("JFIF\0"))) {
                const int units = quint8(app0[7]);
                const double x = bigEndian16(app0, 8);
                const double y = bigEndian16(app0, 10);
                const double perInch = units == 1 ? 1.0 : units == 2 ? 2.54 : 0.0;
                if (perInch > 0 && x > 0 && y > 0) {
                    facts.dpiWidth = x * perInch;
                    facts.dpiHeight = y * perInch;
                }
            }
        }
        if (!file.seek(next))
            break;
    }
    return facts;
}

// The PNG header and the chunks before the image data: bit depth, colour type, transparency
// and physical pixel size.
HeaderFacts readPngHeader(QFile &file)
{
    HeaderFacts facts;
    if (!file.seek(8))
        return facts;
    for (int chunks = 0; chunks < 4096; ++chunks) {
        const QByteArray head = file.read(8);
        if (head.size() < 8)
            break;
        const quint32 length = bigEndian32(head, 0);
        const QByteArray type = head.mid(4, 4);
        const qint64 next = file.pos() + qint64(length) + 4;
        if (type == "IDAT" || type == "IEND")
            break;
        if (type == "IHDR" && length >= 13) {
            const QByteArray ihdr = file.read(13);
            if (ihdr.size() < 13)
                break;
            facts.depth = quint8(ihdr[8]);
            const int colorType = quint8(ihdr[9]);
            facts.hasAlpha = colorType == 4 || colorType == 6;
            facts.colorModel
                = colorType == 0 || colorType == 4 ? QStringLiteral("Gray") : QStringLiteral("RGB");
        } else if (type == "tRNS") {
            facts.hasAlpha = true;
        } else if (type == "pHYs" && length >= 9) {
            const QByteArray phys = file.read(9);
            if (phys.size() == 9 && quint8(phys[8]) == 1) {
                facts.dpiWidth = std::round(bigEndian32(phys, 0) * 0.0254);
                facts.dpiHeight = std::round(bigEndian32(phys, 4) * 0.0254);
            }
        }
        if (!file.seek(next))
            break;
    }
    return facts;
}

} // namespace

std::unique_ptr<ExivImage> ExivImage::open(const QString &path)
{
    initialiseExiv2Once();
    if (!QFileInfo(path).isFile())
        return nullptr;
    try {
        // A FileIo of our own: exiv2 would otherwise read "-" as standard input and fetch URLs.
        Exiv2::BasicIo::AutoPtr io(new Exiv2::FileIo(QFile::encodeName(path).toStdString()));
        std::unique_ptr<Exiv2::Image> image(Exiv2::ImageFactory::open(io).release());
        if (!image)
            return nullptr;
        image->readMetadata();
        std::unique_ptr<ExivImage> result(new ExivImage(std::move(image)));
        result->readPixelProperties(path);
        return result;
    } catch (...) {
        return nullptr;
    }
}

ExivImage::ExivImage(std::unique_ptr<Exiv2::Image> image)
    : m_image(std::move(image))
{ }

void ExivImage::readPixelProperties(const QString &path)
{
    pixelWidth = m_image->pixelWidth();
    pixelHeight = m_image->pixelHeight();

    HeaderFacts facts;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        if (m_image->imageType() == Exiv2::ImageType::jpeg)
            facts = readJpegHeader(file);
        else if (m_image->imageType() == Exiv2::ImageType::png)
            facts = readPngHeader(file);
    }

    // TIFF-like files carry all of it in their first directory.
    if (!facts.depth) {
        if (auto bits = exifNumber("Exif.Image.BitsPerSample"))
            facts.depth = int(*bits);
    }
    if (!facts.hasAlpha && exifValue("Exif.Image.BitsPerSample"))
        facts.hasAlpha = exifValue("Exif.Image.ExtraSamples") != nullptr;
    if (facts.colorModel.isEmpty()) {
        if (auto photometric = exifNumber("Exif.Image.PhotometricInterpretation")) {
            const int p = int(*photometric);
            facts.colorModel = p <= 1 ? QStringLiteral("Gray")
                : p == 5              ? QStringLiteral("CMYK")
                                      : QStringLiteral("RGB");
        }
    }
    if (!facts.dpiWidth) {
        const auto x = exifNumber("Exif.Image.XResolution");
        const auto y = exifNumber("Exif.Image.YResolution");
        const double unit = exifNumber("Exif.Image.ResolutionUnit").value_or(2);
        const double perInch = unit == 3 ? 2.54 : unit == 2 ? 1.0 : 0.0;
        if (x && y && perInch > 0) {
            facts.dpiWidth = *x * perInch;
            facts.dpiHeight = *y * perInch;
        }
    }

    depth = facts.depth;
    hasAlpha = facts.hasAlpha;
    dpiWidth = facts.dpiWidth;
    dpiHeight = facts.dpiHeight;
    colorModel = facts.colorModel;
    if (m_image->iccProfileDefined())
        profileName = iccProfileDescription(*m_image->iccProfile());
}

const Exiv2::Value *ExivImage::exifValue(const char *key) const
{
    try {
        const auto &data = m_image->exifData();
        const auto it = data.findKey(Exiv2::ExifKey(key));
        if (it == data.end() || it->count() == 0)
            return nullptr;
        return &it->value();
    } catch (...) {
        return nullptr;
    }
}

std::optional<QString> ExivImage::exifText(const char *key) const
{
    const Exiv2::Value *value = exifValue(key);
    if (!value)
        return std::nullopt;
    QString text = fromStd(value->toString());
    while (text.endsWith(QChar(0)))
        text.chop(1);
    text = text.trimmed();
    if (text.isEmpty())
        return std::nullopt;
    return text;
}

std::optional<double> ExivImage::exifNumber(const char *key, long component) const
{
    const Exiv2::Value *value = exifValue(key);
    if (!value || component >= value->count())
        return std::nullopt;
    switch (value->typeId()) {
    case Exiv2::unsignedRational:
    case Exiv2::signedRational: {
        const Exiv2::Rational r = value->toRational(component);
        if (r.second == 0)
            return std::nullopt;
        return double(r.first) / double(r.second);
    }
    case Exiv2::unsignedByte:
    case Exiv2::unsignedShort:
    case Exiv2::unsignedLong:
    case Exiv2::signedByte:
    case Exiv2::signedShort:
    case Exiv2::signedLong:
    case Exiv2::undefined:
        return double(value->toLong(component));
    case Exiv2::tiffFloat:
    case Exiv2::tiffDouble:
        return double(value->toFloat(component));
    default:
        return std::nullopt;
    }
}

std::optional<double> ExivImage::exifDegrees(const char *key) const
{
    const Exiv2::Value *value = exifValue(key);
    if (!value || value->count() < 1)
        return std::nullopt;
    double degrees = 0;
    double scale = 1;
    for (long i = 0; i < std::min(value->count(), 3L); ++i) {
        const auto part = exifNumber(key, i);
        if (!part)
            return std::nullopt;
        degrees += *part / scale;
        scale *= 60;
    }
    return degrees;
}

QStringList ExivImage::iptcTexts(const char *key) const
{
    QStringList texts;
    try {
        const Exiv2::IptcKey wanted(key);
        for (const auto &datum : m_image->iptcData()) {
            if (datum.record() == wanted.record() && datum.tag() == wanted.tag())
                texts << fromStd(datum.toString());
        }
    } catch (...) { }
    return texts;
}

QStringList ExivImage::xmpTexts(const char *key) const
{
    QStringList texts;
    try {
        const auto &data = m_image->xmpData();
        const auto it = data.findKey(Exiv2::XmpKey(key));
        if (it == data.end())
            return texts;
        const Exiv2::Value &value = it->value();
        if (value.typeId() == Exiv2::langAlt) {
            const auto &langAlt = static_cast<const Exiv2::LangAltValue &>(value);
            const auto preferred = langAlt.value_.find("x-default");
            if (preferred != langAlt.value_.end())
                texts << fromStd(preferred->second);
            else if (!langAlt.value_.empty())
                texts << fromStd(langAlt.value_.begin()->second);
        } else {
            for (long i = 0; i < value.count(); ++i)
                texts << fromStd(value.toString(i));
        }
    } catch (...) { }
    return texts;
}

QString ExivImage::iccProfileDescription(const Exiv2::DataBuf &profile)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(profile.pData_),
                                                     qsizetype(profile.size_));
    if (bytes.size() < 132)
        return {};
    const quint32 tagCount = bigEndian32(bytes, 128);
    for (quint32 i = 0; i < tagCount && 132 + qsizetype(i + 1) * 12 <= bytes.size(); ++i) {
        const qsizetype entry = 132 + qsizetype(i) * 12;
        if (bytes.mid(entry, 4) != "desc")
            continue;
        const qsizetype offset = bigEndian32(bytes, entry + 4);
        const qsizetype size = bigEndian32(bytes, entry + 8);
        if (offset < 0 || size < 12 || offset + size > bytes.size())
            return {};
        const QByteArray type = bytes.mid(offset, 4);
        if (type == "desc") {
            const qsizetype length = bigEndian32(bytes, offset + 8);
            if (length <= 0 || 12 + length > size)
                return {};
            QByteArray ascii = bytes.mid(offset + 12, length);
            const qsizetype nul = ascii.indexOf('\0');
            if (nul >= 0)
                ascii.truncate(nul);
            return QString::fromLatin1(ascii).trimmed();
        }
        if (type == "mluc" && size >= 28) {
            const qsizetype recordOffset = bigEndian32(bytes, offset + 20);
            const qsizetype recordLength = bigEndian32(bytes, offset + 24);
            if (recordLength <= 0 || recordOffset + recordLength > size)
                return {};
            QString text;
            for (qsizetype at = 0; at + 1 < recordLength; at += 2)
                text += QChar(bigEndian16(bytes, offset + recordOffset + at));
            return text.trimmed();
        }
        return {};
    }
    return {};
}
