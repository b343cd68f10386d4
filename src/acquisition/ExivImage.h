#pragma once

#include <QString>
#include <QStringList>

#include <exiv2/exiv2.hpp>

#include <memory>
#include <optional>

// One image file as exiv2 reads it, with the pixel properties that exiv2 leaves out (bit depth,
// alpha, colour model, resolution, the ICC profile's name). Opening never throws and prints
// nothing: an unreadable file gives no image.
class ExivImage
{
public:
    static std::unique_ptr<ExivImage> open(const QString &path);

    const Exiv2::ExifData &exif() const { return m_image->exifData(); }
    const Exiv2::IptcData &iptc() const { return m_image->iptcData(); }
    const Exiv2::XmpData &xmp() const { return m_image->xmpData(); }
    // For what the accessors above don't cover, such as the previews inside a RAW file.
    const Exiv2::Image &image() const { return *m_image; }

    int pixelWidth = 0;
    int pixelHeight = 0;
    std::optional<double> dpiWidth;
    std::optional<double> dpiHeight;
    std::optional<int> depth; // bits per component
    std::optional<bool> hasAlpha;
    QString colorModel; // "RGB", "Gray", "CMYK" or empty
    QString profileName; // the embedded ICC profile's description

    // The Exif value of a key, if present.
    const Exiv2::Value *exifValue(const char *key) const;
    std::optional<QString> exifText(const char *key) const;
    std::optional<double> exifNumber(const char *key, long component = 0) const;
    // A GPS coordinate as unsigned decimal degrees from its three rationals.
    std::optional<double> exifDegrees(const char *key) const;

    // All texts of an IPTC dataset, in file order.
    QStringList iptcTexts(const char *key) const;
    // An XMP property as text (the default language of an alternative) or as a list of texts.
    QStringList xmpTexts(const char *key) const;

    // The description held in an ICC profile, or empty.
    static QString iccProfileDescription(const Exiv2::DataBuf &profile);

private:
    explicit ExivImage(std::unique_ptr<Exiv2::Image> image);
    void readPixelProperties(const QString &path);

    std::unique_ptr<Exiv2::Image> m_image;
};
