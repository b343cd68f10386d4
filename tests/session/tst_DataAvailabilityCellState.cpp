#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "session/DataAvailabilityCellState.h"
#include "session/Node.h"

#include <QTest>

using namespace Qt::StringLiterals;
using State = DataAvailabilityCellState;

// The status cells' words, symbols and tints for each stored status and set of flags.
class tst_DataAvailabilityCellState : public QObject
{
    Q_OBJECT

private slots:
    void statusOfStoredValues_data();
    void statusOfStoredValues();
    void cleanupTestCase()
    {
        DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    }
};

Q_DECLARE_METATYPE(State::Symbol)
Q_DECLARE_METATYPE(State::Tint)

void tst_DataAvailabilityCellState::statusOfStoredValues_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("read");
    QTest::addColumn<int>("status"); // -1: none stored
    QTest::addColumn<QStringList>("flags");
    QTest::addColumn<bool>("shown");
    QTest::addColumn<State::Symbol>("symbol");
    QTest::addColumn<State::Tint>("tint");
    QTest::addColumn<QString>("tooltip");

    const QString gps = u"GPSDataAvailable"_s, iptc = u"IPTCDataComplete"_s;
    const QString xmp
        = u" — file also contains an XMP packet; changes will be mirrored into XMP."_s;
    using S = State::Symbol;
    using T = State::Tint;
    QTest::newRow("not read, with XMP")
        << gps << false << -1 << QStringList {u"XMPPresent"_s} << true << S::Waiting
        << T::ControlText << u"Loading GPS location data…"_s + xmp;
    QTest::newRow("read, no value") << iptc << true << -1 << QStringList() << true << S::NotPresent
                                    << T::DisabledControlText << u"No IPTC location data present"_s;
    QTest::newRow("none") << gps << true << 0 << QStringList() << true << S::None
                          << T::DisabledControlText << u"No GPS location data present"_s;
    QTest::newRow("complete, with XMP")
        << gps << true << 1 << QStringList {u"XMPPresent"_s} << true << S::Complete << T::Green
        << u"Complete GPS location data present"_s + xmp;
    QTest::newRow("incomplete IPTC")
        << iptc << true << 2 << QStringList() << true << S::Incomplete << T::Yellow
        << u"Incomplete IPTC location data — one or more fields are missing"_s;
    QTest::newRow("divergent GPS")
        << gps << true << 3 << QStringList() << true << S::Divergent << T::SystemOrange
        << u"GPS coordinates differ between the legacy packet (EXIF/QuickTime) and the embedded "
           "XMP. Saving will sync both."_s;
    QTest::newRow("divergent IPTC, no flag")
        << iptc << true << 3 << QStringList() << true << S::Divergent << T::SystemOrange
        << u"IPTC and XMP location fields disagree. Saving will sync them via MWG."_s;
    QTest::newRow("divergent city")
        << iptc << true << 3 << QStringList {u"CityDivergent"_s} << true << S::Divergent
        << T::SystemOrange << u"IPTC and XMP disagree on: City. Saving will sync them via MWG."_s;
    QTest::newRow("divergent, four fields")
        << iptc << true << 3
        << QStringList {u"SublocationDivergent"_s, u"StateDivergent"_s, u"CountryDivergent"_s,
                        u"CityDivergent"_s}
        << true << S::Divergent << T::SystemOrange
        << u"IPTC and XMP disagree on: City, Country, State/Province, and Sub-location. Saving "
           "will sync them via MWG."_s;
    // A raw value that names no status reads as an ordinary integer: the cell keeps its state.
    QTest::newRow("unknown status")
        << iptc << true << 4 << QStringList() << false << S::Waiting << T::ControlText << QString();
}

void tst_DataAvailabilityCellState::statusOfStoredValues()
{
    QFETCH(QString, key);
    QFETCH(bool, read);
    QFETCH(int, status);
    QFETCH(QStringList, flags);
    const QString path = u"/nowhere/"_s + QString::fromLatin1(QTest::currentDataTag()) + u".jpg"_s;
    MetadataStorage &storage = MetadataStorage::shared();
    const MetadataSource source = MetadataSource::ExifToolGeneric;
    if (status >= 0)
        storage.store(path, source, key, status);
    for (const QString &flag : std::as_const(flags))
        storage.store(path, source, flag, u"1"_s);
    if (read)
        storage.store(path, source, u"retrieved"_s, true);
    const auto node = FileNode::createWithoutRead(u"x.jpg"_s, path, QString(), {});

    const std::optional<State> state = State::configure(*node, key);
    QFETCH(bool, shown);
    QCOMPARE(state.has_value(), shown);
    if (!state)
        return;
    QTEST(state->symbol, "symbol");
    QTEST(state->tint, "tint");
    QTEST(state->tooltip, "tooltip");
    QCOMPARE(state->observe, !read);
}

QTEST_GUILESS_MAIN(tst_DataAvailabilityCellState)
#include "tst_DataAvailabilityCellState.moc"
