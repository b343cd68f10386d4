#include "acquisition/ExifToolHelper.h"

#include <QApplication>
#include <QLabel>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    // The application's additions to the ExifTool white list, appended before the first read:
    // the geolocation tags behind the proposed city and sublocation.
    ExifToolHelper::sharedInstance().appendToWhiteList(
        {u"GeolocationCity"_s, u"GeolocationCountry"_s, u"GeolocationRegion"_s,
         u"GeolocationSubregion"_s, u"GeolocationFeatureCode"_s});
    QLabel label(QStringLiteral("Palomet"));
    label.show();
    return app.exec();
}
