#include "PlacemarkOutputOperation.h"

#include "ItemOutputFormatter.h"
#include "location/CaptureTime.h"

#include <QDateTime>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

using CaptureTime::textValue;

// A coordinate as the reader stores it: unsigned with its reference word, or signed where the
// file keeps no reference (movies).
std::optional<double> signedCoordinate(const Node &node, const QString &key, const QString &refKey,
                                       double limit)
{
    bool ok = false;
    double value = textValue(node, key).toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    const QString reference = textValue(node, refKey);
    if (reference.startsWith(u'S', Qt::CaseInsensitive)
        || reference.startsWith(u'W', Qt::CaseInsensitive))
        value = -std::fabs(value);
    if (std::fabs(value) > limit)
        return std::nullopt;
    return value;
}

} // namespace

PlacemarkOutputOperation::PlacemarkOutputOperation(const DataModelSnapshot &dataModelSnapshot,
                                                   std::shared_ptr<OutputEngine> outputEngine,
                                                   FlatFileListPtr flatFileList)
    : OutputFormatOperation(dataModelSnapshot, std::move(outputEngine), std::move(flatFileList),
                            std::make_unique<ItemOutputFormatter>(dataModelSnapshot))
{ }

std::optional<PlacemarkOutputOperation::Placemark> PlacemarkOutputOperation::placemarkOf(
    const Node &node, const QTimeZone &zone)
{
    const auto latitude = signedCoordinate(node, u"GPSLatitude#"_s, u"GPSLatitudeRef"_s, 90.0);
    const auto longitude = signedCoordinate(node, u"GPSLongitude#"_s, u"GPSLongitudeRef"_s, 180.0);
    if (!latitude || !longitude)
        return std::nullopt;
    Placemark placemark;
    placemark.name = node.name;
    placemark.latitude = *latitude;
    placemark.longitude = *longitude;
    placemark.altitude = signedCoordinate(node, u"GPSAltitude#"_s, u"GPSAltitudeRef"_s, 1.0e6);
    if (placemark.altitude && textValue(node, u"GPSAltitudeRef"_s).startsWith(u"Below"_s))
        placemark.altitude = -std::fabs(*placemark.altitude);
    static const std::pair<const char16_t *, const char16_t *> fields[] = {
        {u"Sub-location", u"Sub-location"},
        {u"City", u"City"},
        {u"Province-State", u"Province/State"},
        {u"Country", u"Country"},
    };
    QStringList lines;
    for (const auto &[key, title] : fields) {
        const QString value = textValue(node, QString::fromUtf16(key));
        if (!value.isEmpty())
            lines << QString::fromUtf16(title) + u": "_s + value;
    }
    placemark.description = lines.join(u'\n');
    placemark.taken = CaptureTime::of(node, zone);
    return placemark;
}

QString PlacemarkOutputOperation::xmlEscaped(const QString &text)
{
    QString escaped;
    escaped.reserve(text.size() + 16);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        switch (c.unicode()) {
        case u'&':
            escaped += u"&amp;"_s;
            continue;
        case u'<':
            escaped += u"&lt;"_s;
            continue;
        case u'>':
            escaped += u"&gt;"_s;
            continue;
        case u'"':
            escaped += u"&quot;"_s;
            continue;
        case u'\'':
            escaped += u"&apos;"_s;
            continue;
        default:
            break;
        }
        const char16_t code = c.unicode();
        if (code < 0x20 && code != u'\t' && code != u'\n' && code != u'\r')
            continue; // not allowed in XML 1.0, not even as a reference
        if (code == 0xFFFE || code == 0xFFFF)
            continue;
        if (c.isSurrogate()) {
            // Only whole pairs pass.
            if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
                escaped += c;
                escaped += text[++i];
            }
            continue;
        }
        escaped += c;
    }
    return escaped;
}

QString PlacemarkOutputOperation::isoTime(double utcTime)
{
    const qint64 milliseconds = std::llround(utcTime * 1000.0);
    const QDateTime instant = QDateTime::fromMSecsSinceEpoch(milliseconds, QTimeZone::utc());
    return instant.toString(milliseconds % 1000 ? u"yyyy-MM-ddTHH:mm:ss.zzzZ"_s
                                                : u"yyyy-MM-ddTHH:mm:ssZ"_s);
}

bool PlacemarkOutputOperation::collectPlacemarks(QList<Placemark> *placemarks)
{
    const QTimeZone zone = QTimeZone::systemTimeZone();
    for (const NodePtr &node : flatFileList->files) {
        if (isCancelled())
            return false;
        if (auto placemark = placemarkOf(*node, zone))
            placemarks->append(std::move(*placemark));
        fileDone();
    }
    return true;
}
