#include "ByteCountFormatter.h"

#include <QCoreApplication>
#include <QLocale>

#include <cmath>

namespace ByteCountFormatter {

QString stringFromByteCount(qint64 byteCount)
{
    const QLocale locale(QLocale::English);
    if (byteCount == 0)
        return QCoreApplication::translate("ByteCountFormatter", "Zero KB");
    const qint64 magnitude = byteCount < 0 ? -byteCount : byteCount;
    if (magnitude < 1000) {
        return magnitude == 1
            ? QCoreApplication::translate("ByteCountFormatter", "%1 byte").arg(byteCount)
            : QCoreApplication::translate("ByteCountFormatter", "%1 bytes")
                  .arg(locale.toString(byteCount));
    }
    struct Unit
    {
        const char *name;
        double size;
        int decimals;
    };
    static const Unit units[] = {{"KB", 1e3, 0},  {"MB", 1e6, 1},  {"GB", 1e9, 2},
                                 {"TB", 1e12, 2}, {"PB", 1e15, 2}, {"EB", 1e18, 2}};
    const double bytes = double(byteCount);
    for (size_t i = 0; i < std::size(units); ++i) {
        const Unit &unit = units[i];
        const double scale = std::pow(10.0, unit.decimals);
        const double rounded = std::round(bytes / unit.size * scale) / scale;
        // A value that rounds up to a thousand is shown in the next unit.
        if (std::abs(rounded) < 1000.0 || i + 1 == std::size(units)) {
            QString number = locale.toString(rounded, 'f', unit.decimals);
            if (unit.decimals > 0) {
                while (number.endsWith(QLatin1Char('0')))
                    number.chop(1);
                if (number.endsWith(QLatin1Char('.')))
                    number.chop(1);
            }
            return number + QLatin1Char(' ') + QLatin1String(unit.name);
        }
    }
    return QString();
}

} // namespace ByteCountFormatter
