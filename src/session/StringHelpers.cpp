#include "StringHelpers.h"

namespace StringHelpers {

namespace {
constexpr qsizetype paddedNumberWidth = 32;

bool isNumeric(QChar c)
{
    if (c.unicode() < 0x80)
        return c.unicode() >= '0' && c.unicode() <= '9';
    // The Unicode numeric property: decimal digits, letter numbers and other numbers.
    switch (c.category()) {
    case QChar::Number_DecimalDigit:
    case QChar::Number_Letter:
    case QChar::Number_Other:
        return true;
    default:
        return false;
    }
}
} // namespace

QString stringByExpandingAllNumberGroups(const QString &text)
{
    const qsizetype length = text.size();
    QString result;
    result.reserve(length + 2 * paddedNumberWidth);
    qsizetype i = 0;
    while (i < length) {
        qsizetype end = i;
        const bool numeric = isNumeric(text.at(i));
        while (end < length && isNumeric(text.at(end)) == numeric)
            ++end;
        const qsizetype runLength = end - i;
        if (numeric && runLength < paddedNumberWidth)
            result.resize(result.size() + paddedNumberWidth - runLength, QLatin1Char('0'));
        result.append(QStringView(text).mid(i, runLength));
        i = end;
    }
    return result;
}

QString withEncodedLineBreaksAndTabs(const QString &text)
{
    const auto needsEncoding = [](QChar c) {
        return c == QLatin1Char('\n') || c == QLatin1Char('\r') || c == QLatin1Char('\t');
    };
    if (std::none_of(text.begin(), text.end(), needsEncoding))
        return text;
    QString result;
    result.reserve(text.size() + 8);
    for (QChar c : text) {
        if (c == QLatin1Char('\n'))
            result += QLatin1String("\\n");
        else if (c == QLatin1Char('\r'))
            result += QLatin1String("\\r");
        else if (c == QLatin1Char('\t'))
            result += QLatin1String("\\t");
        else
            result += c;
    }
    return result;
}

QString asCommaSeparatedString(const QStringList &list)
{
    return list.join(QLatin1String(", "));
}

QString lastPathComponent(const QString &path)
{
    QString trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith(QLatin1Char('/')))
        trimmed.chop(1);
    const qsizetype slash = trimmed.lastIndexOf(QLatin1Char('/'));
    if (slash < 0 || trimmed == QLatin1String("/"))
        return trimmed;
    return trimmed.mid(slash + 1);
}

QString deletingLastPathComponent(const QString &path)
{
    QString trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith(QLatin1Char('/')))
        trimmed.chop(1);
    const qsizetype slash = trimmed.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return QString();
    if (slash == 0)
        return trimmed.size() > 1 ? QStringLiteral("/") : QString();
    return trimmed.left(slash);
}

} // namespace StringHelpers
