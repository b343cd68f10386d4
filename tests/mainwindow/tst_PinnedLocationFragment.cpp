#include "EditorTestBench.h"
#include "TestSupport.h"
#include "bricks/controls/SingleLineLabel.h"
#include "location/GPSCoordinateComponent.h"
#include "location/Geocoder.h"
#include "location/PinAndStepperController.h"
#include "mainwindow/editors/GPSLocationFragment.h"
#include "mainwindow/editors/PinnedLocationFragment.h"
#include "session/DataModel.h"

#include <QAbstractButton>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_PinnedLocationFragment : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { EditorTestBench::setUpOnce(); }
    void addPinAndApplyItsCityToTwoFiles();

private:
    QString shown(EditorTestBench &bench, const QString &label)
    {
        return bench.view<SingleLineLabel>(label)->stringValue();
    }
};

void tst_PinnedLocationFragment::addPinAndApplyItsCityToTwoFiles()
{
    EditorTestBench bench;
    DataModel &model = bench.model();
    const auto controller = PinAndStepperController::create(model, nullptr, nullptr);
    QVERIFY(bench.show({GPSLocationFragment::directive(*model.gpsCoordinateComponent),
                        PinnedLocationFragment::directive(model, *controller)}));
    const QStringList zurich = {u"-GPSLatitude=47.3769"_s, u"-GPSLatitudeRef=N"_s,
                                u"-GPSLongitude=8.5417"_s, u"-GPSLongitudeRef=E"_s};
    const NodePtr first = bench.readJpeg(u"first.jpg"_s, zurich);
    const NodePtr second = bench.readJpeg(u"second.jpg"_s, zurich);
    QVERIFY(first && second);

    QCOMPARE(shown(bench, u"pinLabel"_s), u"No Pin"_s);
    for (const char *name : {"previousPinButton", "nextPinButton", "centerPinButton",
                             "deletePinButton", "applyCityButton"})
        QVERIFY2(!bench.view<QWidget>(QString::fromLatin1(name))->isEnabled(), name);

    model.setSelectedNodes({first, second});
    auto *addPin = bench.view<QAbstractButton>(u"addFlagButton"_s);
    QVERIFY(TestSupport::waitUntil([&] {
        return addPin->isEnabled() && !model.gpsCoordinateComponent->latitudeField().text.isEmpty();
    }));
    QTest::mouseClick(addPin, Qt::LeftButton);
    QCOMPARE(bench.beeper.beeps, 0);
    // The position shows at once; the pin and its place names follow the offline geocoder.
    QCOMPARE(shown(bench, u"pinnedLatitudeLabel"_s), u"+47.376900"_s);
    QVERIFY(TestSupport::waitUntil([&] { return model.hasPins(); }, 60000));
    QCOMPARE(shown(bench, u"pinLabel"_s), u"Pin 1"_s);
    // The new pin's coordinate asks the geocoder once more, a moment later.
    QTest::qWait(2 * int(PinAndStepperController::pinnedLocationDelay * 1000));
    bool idle = false;
    Geocoder::shared().notifyWhenIdle([&] { idle = true; });
    QVERIFY(TestSupport::waitUntil([&] { return idle; }, 60000));
    QVERIFY(!model._pinnedLocationCity->value().isEmpty());
    const QString city = model._pinnedLocationCity->value();
    QCOMPARE(shown(bench, u"applyCityButtonLabel"_s), city);
    QVERIFY(bench.view<QWidget>(u"centerPinButton"_s)->isEnabled());
    QVERIFY(!bench.view<QWidget>(u"nextPinButton"_s)->isEnabled());

    auto *applyCity = bench.view<QAbstractButton>(u"applyCityButton"_s);
    QVERIFY(applyCity->isEnabled());
    QTest::mouseClick(applyCity, Qt::LeftButton);
    QVERIFY(EditorTestBench::waitForWrites());
    for (const NodePtr &node : {first, second})
        QCOMPARE(EditorTestBench::tagInFile(node->absolutePath, u"IPTC:City"_s), city);

    QTest::mouseClick(bench.view<QWidget>(u"copyPinnedDMSButton"_s), Qt::LeftButton);
    QCOMPARE(bench.clipboard.texts, QStringList {model._pinnedCoordinateDMS->value()});

    QTest::mouseClick(bench.view<QWidget>(u"deletePinButton"_s), Qt::LeftButton);
    QCOMPARE(shown(bench, u"pinLabel"_s), u"No Pin"_s);
    QVERIFY(!bench.view<QWidget>(u"deletePinButton"_s)->isEnabled());
    QVERIFY(bench.alerts.alerts.isEmpty());
}

QTEST_MAIN(tst_PinnedLocationFragment)
#include "tst_PinnedLocationFragment.moc"
