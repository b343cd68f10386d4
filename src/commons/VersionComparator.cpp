#include "VersionComparator.h"

#include <QList>

namespace {

struct Part
{
    QStringView text;
    bool isNumber;
};

QList<Part> partsOf(QStringView version)
{
    QList<Part> parts;
    qsizetype i = 0;
    while (i < version.size()) {
        const QChar c = version.at(i);
        const bool digit = c.isDigit();
        if (!digit && !c.isLetter()) {
            ++i;
            continue;
        }
        qsizetype end = i + 1;
        while (end < version.size()
               && (digit ? version.at(end).isDigit() : version.at(end).isLetter()))
            ++end;
        parts.append(Part {version.sliced(i, end - i), digit});
        i = end;
    }
    return parts;
}

// Numbers of any length: without leading zeros, the longer is larger, else the text decides.
int compareNumbers(QStringView a, QStringView b)
{
    while (a.size() > 1 && a.front() == u'0')
        a = a.sliced(1);
    while (b.size() > 1 && b.front() == u'0')
        b = b.sliced(1);
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    return a.compare(b);
}

bool isZero(const Part &part)
{
    for (const QChar c : part.text) {
        if (c != u'0')
            return false;
    }
    return true;
}

int sign(int value)
{
    return (value > 0) - (value < 0);
}

} // namespace

int VersionComparator::compareVersions(QStringView a, QStringView b)
{
    const QList<Part> left = partsOf(a);
    const QList<Part> right = partsOf(b);
    const qsizetype common = std::min(left.size(), right.size());
    for (qsizetype i = 0; i < common; ++i) {
        const Part &l = left.at(i);
        const Part &r = right.at(i);
        if (l.isNumber != r.isNumber)
            return l.isNumber ? 1 : -1; // "1.0.1" is newer than "1.0b1"
        const int order = l.isNumber ? compareNumbers(l.text, r.text)
                                     : l.text.compare(r.text, Qt::CaseInsensitive);
        if (order != 0)
            return sign(order);
    }
    // What is left of the longer one decides: a pre-release word makes it older, a number other
    // than zero newer, and trailing zeros change nothing.
    const QList<Part> &longer = left.size() > right.size() ? left : right;
    const int longerSide = left.size() > right.size() ? 1 : -1;
    for (qsizetype i = common; i < longer.size(); ++i) {
        if (!longer.at(i).isNumber)
            return -longerSide;
        if (!isZero(longer.at(i)))
            return longerSide;
    }
    return 0;
}
