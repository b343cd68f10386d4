#include "CaptureTime.h"

#include "acquisition/ExifToolHelper.h"

#include <QFileInfo>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

// "2024:05:01 10:00:00", with fraction and offset where present ("...00.25+02:00", "...Z").
std::optional<double> parseExifTime(const QString &text, const QString &offsetText,
                                    const QTimeZone &zone)
{
    static const QRegularExpression pattern(
        uR"(^(\d{4}):(\d\d):(\d\d)[ T](\d\d):(\d\d):(\d\d)(\.\d+)?\s*(Z|[+-]\d\d:?\d\d)?)"_s);
    const QRegularExpressionMatch match = pattern.match(text.trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    const QDate date(match.captured(1).toInt(), match.captured(2).toInt(),
                     match.captured(3).toInt());
    const QTime time(match.captured(4).toInt(), match.captured(5).toInt(),
                     match.captured(6).toInt());
    if (!date.isValid() || !time.isValid())
        return std::nullopt; // "0000:00:00 00:00:00" is what cameras write for no date
    const double fraction = match.captured(7).isEmpty() ? 0.0 : match.captured(7).toDouble();

    QString offset = match.captured(8);
    if (offset.isEmpty())
        offset = offsetText.trimmed();
    QDateTime instant;
    static const QRegularExpression offsetPattern(uR"(^([+-])(\d\d):?(\d\d)$)"_s);
    const QRegularExpressionMatch offsetMatch = offsetPattern.match(offset);
    if (offset == u"Z"_s) {
        instant = QDateTime(date, time, QTimeZone::utc());
    } else if (offsetMatch.hasMatch()) {
        const int seconds = (offsetMatch.captured(2).toInt() * 60 + offsetMatch.captured(3).toInt())
            * 60 * (offsetMatch.captured(1) == u"-"_s ? -1 : 1);
        instant = QDateTime(date, time, QTimeZone(seconds));
    } else {
        instant = QDateTime(date, time, zone);
    }
    if (!instant.isValid())
        return std::nullopt;
    return double(instant.toMSecsSinceEpoch()) / 1000.0 + fraction;
}

} // namespace

std::optional<double> CaptureTime::of(const Node &node, const QTimeZone &zone)
{
    const QString original = textValue(node, u"DateTimeOriginal"_s);
    if (auto time = parseExifTime(original, textValue(node, u"OffsetTimeOriginal"_s), zone))
        return time;
    // Movies keep their creation date in UTC; other files' creation date is the camera's.
    const QString created = textValue(node, u"CreateDate"_s);
    const bool quickTime = ExifToolHelper::isQuickTimeFamily(QFileInfo(node.absolutePath).suffix());
    return parseExifTime(created, quickTime ? u"Z"_s : textValue(node, u"OffsetTimeDigitized"_s),
                         zone);
}

QString CaptureTime::textValue(const Node &node, const QString &key)
{
    const WrappedMetaDataValue value = node.getWrappedValueSync(key);
    return value.kind() == WrappedMetaDataValue::Kind::StringValue ? value.stringValue().trimmed()
                                                                   : QString();
}
