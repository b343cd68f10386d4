#include "GPXOutputOperation.h"

#include <algorithm>

using namespace Qt::StringLiterals;

void GPXOutputOperation::main()
{
    if (isCancelled())
        return;
    QList<Placemark> placemarks;
    if (!collectPlacemarks(&placemarks))
        return;
    std::stable_sort(placemarks.begin(), placemarks.end(),
                     [](const Placemark &a, const Placemark &b) {
                         if (a.taken && b.taken)
                             return *a.taken < *b.taken;
                         return a.taken.has_value() && !b.taken.has_value();
                     });
    const QString unit = indentationUnit(1);
    const QString in2 = unit.repeated(2);
    QString &out = m_outputString;
    out = u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
          "<gpx version=\"1.1\" creator=\"Palomet\" xmlns=\"http://www.topografix.com/GPX/1/1\">\n"_s;
    for (const Placemark &placemark : placemarks) {
        out += unit + u"<wpt lat=\""_s + QString::number(placemark.latitude, 'f', 6)
            + u"\" lon=\""_s + QString::number(placemark.longitude, 'f', 6) + u"\">\n"_s;
        // The schema fixes the order: ele, time, name, desc.
        if (placemark.altitude)
            out += in2 + u"<ele>"_s + QString::number(*placemark.altitude, 'f', 1) + u"</ele>\n"_s;
        if (placemark.taken)
            out += in2 + u"<time>"_s + isoTime(*placemark.taken) + u"</time>\n"_s;
        out += in2 + u"<name>"_s + xmlEscaped(placemark.name) + u"</name>\n"_s;
        if (!placemark.description.isEmpty())
            out += in2 + u"<desc>"_s + xmlEscaped(placemark.description) + u"</desc>\n"_s;
        out += unit + u"</wpt>\n"_s;
    }
    out += u"</gpx>\n"_s;
    finish();
}
