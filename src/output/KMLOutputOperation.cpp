#include "KMLOutputOperation.h"

using namespace Qt::StringLiterals;

void KMLOutputOperation::main()
{
    if (isCancelled())
        return;
    QList<Placemark> placemarks;
    if (!collectPlacemarks(&placemarks))
        return;
    const QString unit = indentationUnit(1);
    QString &out = m_outputString;
    out = u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
          "<kml xmlns=\"http://www.opengis.net/kml/2.2\">\n"_s
        + unit + u"<Document>\n"_s + unit.repeated(2) + u"<name>Palomet</name>\n"_s;
    const QString in3 = unit.repeated(3);
    const QString in4 = unit.repeated(4);
    for (const Placemark &placemark : placemarks) {
        out += unit.repeated(2) + u"<Placemark>\n"_s;
        out += in3 + u"<name>"_s + xmlEscaped(placemark.name) + u"</name>\n"_s;
        if (!placemark.description.isEmpty())
            out += in3 + u"<description>"_s + xmlEscaped(placemark.description)
                + u"</description>\n"_s;
        if (placemark.taken)
            out += in3 + u"<TimeStamp><when>"_s + isoTime(*placemark.taken)
                + u"</when></TimeStamp>\n"_s;
        // KML puts the longitude first.
        QString coordinates = QString::number(placemark.longitude, 'f', 6) + u','
            + QString::number(placemark.latitude, 'f', 6);
        if (placemark.altitude)
            coordinates += u',' + QString::number(*placemark.altitude, 'f', 1);
        out += in3 + u"<Point>\n"_s;
        if (placemark.altitude)
            out += in4 + u"<altitudeMode>absolute</altitudeMode>\n"_s;
        out += in4 + u"<coordinates>"_s + coordinates + u"</coordinates>\n"_s;
        out += in3 + u"</Point>\n"_s + unit.repeated(2) + u"</Placemark>\n"_s;
    }
    out += unit + u"</Document>\n</kml>\n"_s;
    finish();
}
