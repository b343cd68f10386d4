#include "commons/ApplicationStart.h"
#include "location/IPTCLocationComponent.h"
#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "session/DataModel.h"
#include "writing/ChangeManager.h"

#include "Fixtures.h"
#include "RecordingWriteSink.h"
#include "TestSupport.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

using MenuEntry = IPTCLocationComponent::MenuEntry;

class tst_IPTCLocationComponent : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void noSelection();
    void oneCityEditedAndApplied();
    void severalCitiesKeepThePreviousText();
    void pinnedCityShowsAtOnce();

private:
    NodePtr readNode(const QStringList &tags);
    bool select(const QList<NodePtr> &nodes);
    IPTCLocationComponent &city() { return *m_model->cityComponent; }

    QTemporaryDir m_dir;
    std::unique_ptr<DataModel> m_model;
    int m_fileCounter = 0;
};

void tst_IPTCLocationComponent::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    ApplicationStart::installMetadataReaders();
}

void tst_IPTCLocationComponent::init()
{
    m_model = std::make_unique<DataModel>();
    ChangeManager::setDataModel(m_model.get());
}

void tst_IPTCLocationComponent::cleanup()
{
    ChangeManager::setDataModel(nullptr);
    m_model.reset();
}

NodePtr tst_IPTCLocationComponent::readNode(const QStringList &tags)
{
    return Fixtures::readNode(
        Fixtures::makeJpeg(m_dir.path(), u"city%1.jpg"_s.arg(++m_fileCounter), tags));
}

bool tst_IPTCLocationComponent::select(const QList<NodePtr> &nodes)
{
    m_model->setSelectedNodes(nodes);
    // Nothing but the chain of requests changes the state after the selection itself.
    const int selected = city().stateRevision->value();
    return TestSupport::waitUntil([&] { return city().stateRevision->value() != selected; }, 10000);
}

void tst_IPTCLocationComponent::noSelection()
{
    QVERIFY(select({}));
    QVERIFY(!city().field().editable && !city().comboButtonEnabled());
    QVERIFY(!city().applyButtonEnabled());
    QCOMPARE(city().borderColor(), ColorRole::SystemGray);
    // Nothing has been read for an empty selection: the sample text goes.
    QCOMPARE(city().field().placeholder, u"<none>"_s);
    city().handleReturn();
}

void tst_IPTCLocationComponent::oneCityEditedAndApplied()
{
    const NodePtr node = readNode({u"-IPTC:City=Basel"_s});
    QVERIFY(node);
    QVERIFY(select({node}));
    IPTCLocationComponent &c = city();
    QCOMPARE(c.field().text, u"Basel"_s);
    QCOMPARE(c._currentValueOnDisk->value(), u"Basel"_s);
    QCOMPARE(c.borderColor(), ColorRole::BorderBlue);
    QCOMPARE(c.textColor(), ColorRole::LabelColor);
    QVERIFY(!c.applyButtonEnabled());
    // Without a position the computed city is the file's own: the proposal and placeholder.
    QCOMPARE(c.field().placeholder, u"Basel"_s);
    QCOMPARE(c.menu().mid(0, 2),
             (QList<MenuEntry> {{MenuEntry::Kind::SectionHeader, u"Proposed Values:"_s},
                                {MenuEntry::Kind::Item, u"Basel"_s}}));
    QCOMPARE(c.menu().count(MenuEntry {MenuEntry::Kind::Item, u"Basel"_s}), 1);

    c.typeText(u"Zürich"_s);
    QCOMPARE(c.textColor(), ColorRole::UncommittedTextColor);
    QVERIFY(c.applyButtonEnabled());
    c.executeResetButton();
    QCOMPARE(c.field().text, u"Basel"_s);
    QVERIFY(!c.applyButtonEnabled());

    c.typeText(u"Zürich"_s);
    c.handleReturn();
    // Written in the background; the file's re-read shows the new city as the one on disk.
    QVERIFY(TestSupport::waitUntil([&] { return c._currentValueOnDisk->value() == u"Zürich"_s; }));
    QCOMPARE(MetadataStorage::shared().getStringValue(node->absolutePath, u"City"_s,
                                                      MetadataSource::ExifToolGeneric),
             u"Zürich"_s);
    QVERIFY(!c.applyButtonEnabled());

    // An empty text is written too, and the file then has no city.
    c.typeText(QString());
    c.executeApplyButton();
    QVERIFY(TestSupport::waitUntil([&] { return c.field().placeholder == u"<none>"_s; }));
    QCOMPARE(c.field().text, QString());
}

void tst_IPTCLocationComponent::severalCitiesKeepThePreviousText()
{
    const NodePtr basel = readNode({u"-IPTC:City=Basel"_s});
    const NodePtr bern = readNode({u"-IPTC:City=Bern"_s});
    QVERIFY(basel && bern);
    QVERIFY(select({basel}));
    QVERIFY(select({basel, bern}));
    IPTCLocationComponent &c = city();
    // No file is blank, so the long text stands; the field keeps the text it had.
    QCOMPARE(c.field().placeholder, u"Multiple Values (including blank fields)"_s);
    QCOMPARE(c.field().text, u"Basel"_s);
    const qsizetype header
        = c.menu().indexOf(MenuEntry {MenuEntry::Kind::SectionHeader, u"From Other Items"_s});
    QVERIFY(header >= 0);
    const qsizetype bernItem = c.menu().lastIndexOf(MenuEntry {MenuEntry::Kind::Item, u"Bern"_s});
    QVERIFY(bernItem > header);

    c.chooseMenuItem(u"From Other Items"_s);
    QCOMPARE(c._currentValueInInterface->value(), u"Basel"_s);
    c.chooseMenuItem(u"Bern"_s);
    QCOMPARE(c.field().text, u"Bern"_s);
}

void tst_IPTCLocationComponent::pinnedCityShowsAtOnce()
{
    const NodePtr node = readNode({u"-IPTC:City=Basel"_s});
    QVERIFY(node);
    QVERIFY(select({node}));
    RecordingWriteSink sink;
    m_model->_pinnedLocationCity->setValue(u"Lyon"_s);
    ChangeManager::applyCurrentPinnedCityToCurrentSelection();
    QCOMPARE(city().field().text, u"Lyon"_s);
    QCOMPARE(sink.writes.size(), 1);
    QCOMPARE(sink.writes[0].tagValuePairs, (QStringList {u"City"_s, u"Lyon"_s}));
}

QTEST_GUILESS_MAIN(tst_IPTCLocationComponent)
#include "tst_IPTCLocationComponent.moc"
