#include "RecordingDoubles.h"
#include "commons/ApplicationStart.h"
#include "location/GPSCoordinateComponent.h"
#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "platform/Beeper.h"
#include "platform/ClipboardWriter.h"
#include "session/DataModel.h"
#include "writing/ChangeManager.h"

#include "Fixtures.h"
#include "RecordingWriteSink.h"
#include "TestSupport.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

class CountingBeeper : public Beeper
{
public:
    void makeBeep() override { ++beeps; }
    int beeps = 0;
};

QStringList position(const QString &latitude, const QString &longitude)
{
    return {u"-GPSLatitude="_s + latitude, u"-GPSLatitudeRef=N"_s, u"-GPSLongitude="_s + longitude,
            u"-GPSLongitudeRef=E"_s};
}

} // namespace

class tst_GPSCoordinateComponent : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void normalizeCoordinateValue_data();
    void normalizeCoordinateValue();
    void showsTheSelection_data();
    void showsTheSelection();
    void typingStates();
    void applyButtonWritesThroughChangeManager();
    void emptySelectionIsNotEditable();
    void copyAndAddPin();
    void returnInLatitudeGoesThroughChangeManager();

private:
    NodePtr readNode(const QString &name, const QStringList &tags);
    // Selects the nodes and waits until the editor has taken their values.
    bool select(const QList<NodePtr> &nodes);
    GPSCoordinateComponent &component() { return *m_model->gpsCoordinateComponent; }

    QTemporaryDir m_dir;
    std::unique_ptr<DataModel> m_model;
    CountingBeeper m_beeper;
    RecordingClipboard m_clipboard;
    int m_fileCounter = 0;
};

void tst_GPSCoordinateComponent::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    ApplicationStart::installMetadataReaders();
    Beeper::install(&m_beeper);
    ClipboardWriter::install(&m_clipboard);
}

void tst_GPSCoordinateComponent::init()
{
    m_model = std::make_unique<DataModel>();
    ChangeManager::setDataModel(m_model.get());
    m_beeper.beeps = 0;
    m_clipboard.texts.clear();
}

void tst_GPSCoordinateComponent::cleanup()
{
    ChangeManager::setDataModel(nullptr);
    m_model.reset();
}

NodePtr tst_GPSCoordinateComponent::readNode(const QString &name, const QStringList &tags)
{
    return Fixtures::readNode(
        Fixtures::makeJpeg(m_dir.path(), u"%1-%2"_s.arg(++m_fileCounter).arg(name), tags));
}

bool tst_GPSCoordinateComponent::select(const QList<NodePtr> &nodes)
{
    m_model->setSelectedNodes(nodes);
    // The values arrive later, through a short chain of requests on the main queue.
    return TestSupport::waitUntil([&] { return component().showsCurrentSelection(); }, 10000);
}

void tst_GPSCoordinateComponent::normalizeCoordinateValue_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isLatitude");
    QTest::addColumn<QString>("normalized");
    QTest::newRow("empty") << QString() << true << QString();
    QTest::newRow("plain latitude") << u"48.8584"_s << true << u"+48.858400"_s;
    QTest::newRow("negative longitude") << u"-0.5"_s << false << u"-0.500000"_s;
    QTest::newRow("latitude out of range kept") << u"91"_s << true << u"91"_s;
    QTest::newRow("91 is a longitude") << u"91"_s << false << u"+91.000000"_s;
    QTest::newRow("longitude out of range kept") << u"180.5"_s << false << u"180.5"_s;
    QTest::newRow("edge of range") << u"-90"_s << true << u"-90.000000"_s;
    QTest::newRow("unreadable kept") << u"abc"_s << true << u"abc"_s;
    QTest::newRow("rounded to six places") << u"1.23456789"_s << false << u"+1.234568"_s;
}

void tst_GPSCoordinateComponent::normalizeCoordinateValue()
{
    QFETCH(QString, text);
    QFETCH(bool, isLatitude);
    QTEST(GPSCoordinateComponent::normalizeCoordinateValue(text, isLatitude), "normalized");
}

void tst_GPSCoordinateComponent::showsTheSelection_data()
{
    QTest::addColumn<QList<QStringList>>("files");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QStringList>("placeholders");
    QTest::addColumn<QStringList>("onDisk");
    QTest::addColumn<int>("border");

    const int blue = int(ColorRole::BorderBlue);
    QTest::newRow("one file") << QList<QStringList> {position(u"48.8584"_s, u"2.2945"_s)}
                              << QStringList {u"+48.858400"_s, u"+2.294500"_s}
                              << QStringList {QString(), QString()}
                              << QStringList {u"+48.858400"_s, u"+2.294500"_s} << blue;
    QTest::newRow("different latitudes")
        << QList<QStringList> {position(u"48.8584"_s, u"2.2945"_s), position(u"40"_s, u"2.2945"_s)}
        << QStringList {QString(), u"+2.294500"_s} << QStringList {u"Multiple Values"_s, QString()}
        << QStringList {QString(), u"+2.294500"_s} << blue;
    QTest::newRow("with and without")
        << QList<QStringList> {position(u"48.8584"_s, u"2.2945"_s), QStringList()}
        << QStringList {QString(), QString()} << QStringList {QString(), QString()}
        << QStringList {QString(), QString()} << blue;
    QTest::newRow("none has one") << QList<QStringList> {QStringList(), QStringList()}
                                  << QStringList {QString(), QString()}
                                  << QStringList {u"<none>"_s, u"<none>"_s}
                                  << QStringList {QString(), QString()} << blue;
}

void tst_GPSCoordinateComponent::showsTheSelection()
{
    QFETCH(QList<QStringList>, files);
    QList<NodePtr> nodes;
    for (const QStringList &tags : files) {
        nodes << readNode(u"shown.jpg"_s, tags);
        QVERIFY(nodes.last());
    }
    QVERIFY(select(nodes));

    const GPSCoordinateComponent &c = component();
    QTEST((QStringList {c.latitudeField().text, c.longitudeField().text}), "texts");
    QTEST((QStringList {c.latitudeField().placeholder, c.longitudeField().placeholder}),
          "placeholders");
    QTEST((QStringList {c._currentLatitudeOnDisk->value(), c._currentLongitudeOnDisk->value()}),
          "onDisk");
    QTEST(int(c.borderColor()), "border");
    QCOMPARE(c.textColor(), ColorRole::LabelColor);
    QVERIFY(!c.applyButtonEnabled());
    QVERIFY(c.latitudeField().editable && c.longitudeField().selectable);
}

void tst_GPSCoordinateComponent::typingStates()
{
    const NodePtr node = readNode(u"typing.jpg"_s, position(u"48.8584"_s, u"2.2945"_s));
    QVERIFY(node);
    QVERIFY(select({node}));
    GPSCoordinateComponent &c = component();
    QCOMPARE(c._coordinateDMS->value().isEmpty(), false);
    QVERIFY(c.copyButtonsVisible());
    QCOMPARE(c._latitudeRef->value(), u"N"_s);

    // A pair in either field is split across both at once.
    c.typeInLongitudeField(u"-33.9, -151.2"_s);
    QCOMPARE(c.latitudeField().text, u"-33.900000"_s);
    QCOMPARE(c.longitudeField().text, u"-151.200000"_s);
    QCOMPARE(c._latitudeSign->value(), u"-"_s);
    QCOMPARE(c._longitudeRef->value(), u"W"_s);
    QCOMPARE(c.borderColor(), ColorRole::UncommittedTextColor);
    QCOMPARE(c.textColor(), ColorRole::UncommittedTextColor);
    QCOMPARE(c.indicatorBackgroundColor(), ColorRole::IndicatorGray);
    QVERIFY(c.applyButtonEnabled());

    c.executeResetButton();
    QCOMPARE(c.borderColor(), ColorRole::BorderBlue);
    QVERIFY(!c.applyButtonEnabled());

    const auto expectRed = [&](const char *row) {
        QVERIFY2(c.borderColor() == ColorRole::SystemRed, row);
        QVERIFY2(c.indicatorBackgroundColor() == ColorRole::SystemRed, row);
        QVERIFY2(c.textColor() == ColorRole::SystemRed, row);
        QVERIFY2(c._coordinateDMS->value() == u"<Invalid>"_s, row);
        QVERIFY2(c._coordinateDMM->value() == u"<Invalid>"_s, row);
        QVERIFY2(c._latitudeSign->value().isEmpty(), row);
        QVERIFY2(!c.copyButtonsVisible(), row);
        QVERIFY2(!c.applyButtonEnabled() && !c.addFlagButtonEnabled(), row);
    };
    c.typeInLatitudeField(u"abc"_s);
    expectRed("abc");
    c.typeInLatitudeField(u"91"_s);
    expectRed("91");

    // The typed text counts as different until Return normalises it.
    c.typeInLatitudeField(u"48.8584"_s);
    QCOMPARE(c.borderColor(), ColorRole::UncommittedTextColor);
    QVERIFY(c.applyButtonEnabled());
    c.typeInLatitudeField(u"+48.858400"_s);
    QCOMPARE(c.borderColor(), ColorRole::BorderBlue);
    QVERIFY(!c.applyButtonEnabled());
    QVERIFY(c.addFlagButtonEnabled());
    QVERIFY(c.resetButtonEnabled());

    // Both fields emptied: valid, and Apply is on since the disk pair is not empty.
    c.typeInLatitudeField(QString());
    c.typeInLongitudeField(QString());
    QVERIFY(c.isInputValid());
    QVERIFY(c.applyButtonEnabled());
    QVERIFY(c._coordinateDMS->value().isEmpty());
    QVERIFY(!c.copyButtonsVisible());
}

void tst_GPSCoordinateComponent::emptySelectionIsNotEditable()
{
    const GPSCoordinateComponent &c = component();
    QVERIFY(select({}));
    QVERIFY(!c.latitudeField().editable && !c.latitudeField().selectable);
    QVERIFY(!c.longitudeField().editable && !c.longitudeField().selectable);
    QCOMPARE(c.borderColor(), ColorRole::SystemGray);
    QCOMPARE(c.latitudeField().placeholder, u"<none>"_s);
}

void tst_GPSCoordinateComponent::copyAndAddPin()
{
    GPSCoordinateComponent &c = component();
    c.typeInLatitudeField(u"10.5, 20.25"_s);
    c.copyDMS();
    c.copyDMM();
    QCOMPARE(m_clipboard.texts,
             (QStringList {c._coordinateDMS->value(), c._coordinateDMM->value()}));
    QVERIFY(!m_clipboard.texts.first().isEmpty());

    c.executeAddFlagButton();
    QCOMPARE(m_beeper.beeps, 1);
    RecordingPinWorkflow workflow;
    c.setPinWorkflow(&workflow);
    c.executeAddFlagButton();
    QCOMPARE(workflow.coordinates, (QList<Coordinate2D> {{10.5, 20.25}}));
    QVERIFY(workflow.switched);
    c.typeInLongitudeField(u"east"_s);
    c.executeAddFlagButton();
    QCOMPARE(m_beeper.beeps, 2);
    c.setPinWorkflow(nullptr);
}

void tst_GPSCoordinateComponent::returnInLatitudeGoesThroughChangeManager()
{
    const NodePtr node = readNode(u"return.jpg"_s, position(u"48.8584"_s, u"2.2945"_s));
    QVERIFY(node);
    QVERIFY(select({node}));
    GPSCoordinateComponent &c = component();
    RecordingWriteSink sink;

    c.typeInLatitudeField(u"+48.858400"_s);
    c.handleLatitudeReturn();
    QVERIFY(sink.writes.isEmpty());

    c.typeInLatitudeField(u"12.5"_s);
    c.handleLatitudeReturn();
    QCOMPARE(c.latitudeField().text, u"+12.500000"_s);
    QCOMPARE(sink.writes.size(), 1);
    QCOMPARE(
        sink.writes[0].tagValuePairs.mid(0, 4),
        (QStringList {u"GPSLatitude#"_s, u"+12.500000"_s, u"GPSLongitude#"_s, u"+2.294500"_s}));
}

void tst_GPSCoordinateComponent::applyButtonWritesThroughChangeManager()
{
    const NodePtr node = readNode(u"apply.jpg"_s, position(u"48.8584"_s, u"2.2945"_s));
    QVERIFY(node);
    QVERIFY(select({node}));
    GPSCoordinateComponent &c = component();
    MetadataStorage &store = MetadataStorage::shared();
    // The write runs in the background; the file's re-read then brings the values back.
    const auto stored = [&](const QString &key, const QVariant &expected) {
        return TestSupport::waitUntil([&] {
            const QString value
                = store.getStringValue(node->absolutePath, key, MetadataSource::ExifToolGeneric)
                      .value_or(QString());
            return expected.typeId() == QMetaType::Double ? value.toDouble() == expected.toDouble()
                                                          : value == expected.toString();
        });
    };

    c.typeInLatitudeField(u"abc"_s);
    c.executeApplyButton();
    QCOMPARE(m_beeper.beeps, 1);

    c.typeInLatitudeField(u"12.5, 151.2"_s);
    c.executeApplyButton();
    QVERIFY(stored(u"GPSLatitude#"_s, 12.5));
    QVERIFY(stored(u"GPSLongitude#"_s, 151.2));
    // The re-read for the same selection moves the disk pair under the fields.
    QVERIFY(TestSupport::waitUntil(
        [&] { return c._currentLongitudeOnDisk->value() == u"+151.200000"_s; }));
    QVERIFY(!c.applyButtonEnabled());
    QCOMPARE(c.borderColor(), ColorRole::BorderBlue);

    c.typeInLatitudeField(u"-33.9, -151.2"_s);
    c.executeApplyButton();
    QVERIFY(stored(u"GPSLatitudeRef"_s, u"South"_s));
    QVERIFY(stored(u"GPSLongitudeRef"_s, u"West"_s));

    // Emptied fields write 0, 0 rather than removing the position.
    c.typeInLatitudeField(QString());
    c.typeInLongitudeField(QString());
    c.executeApplyButton();
    QVERIFY(stored(u"GPSLatitude#"_s, 0.0));
    QVERIFY(stored(u"GPSLatitudeRef"_s, u"North"_s));
}

QTEST_GUILESS_MAIN(tst_GPSCoordinateComponent)
#include "tst_GPSCoordinateComponent.moc"
