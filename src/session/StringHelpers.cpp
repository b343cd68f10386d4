#include "StringHelpers.h"

#include <QTextBoundaryFinder>

#include <algorithm>

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

qsizetype characterCount(const QString &text)
{
    // Below U+0300 every code unit but a carriage return (CR LF is one character) stands alone,
    // which spares the boundary search for most paths.
    const bool simple = std::all_of(text.cbegin(), text.cend(), [](QChar c) {
        return c.unicode() < 0x300 && c != QLatin1Char('\r');
    });
    if (simple)
        return text.size();
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() >= 0)
        ++count;
    return count;
}

QString englishListJoined(const QStringList &items)
{
    switch (items.size()) {
    case 0:
        return QString();
    case 1:
        return items.first();
    case 2:
        return items.first() + QLatin1String(" and ") + items.last();
    default:
        return items.mid(0, items.size() - 1).join(QLatin1String(", ")) + QLatin1String(", and ")
            + items.last();
    }
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
