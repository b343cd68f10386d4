#include "commons/ApplicationStart.h"
#include "mainwindow/InfoPaneCellDelegate.h"
#include "mainwindow/InfoPaneController.h"
#include "mainwindow/InfoPaneDataSource.h"
#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "session/DataModel.h"

#include "Fixtures.h"
#include "TestSupport.h"

#include <QApplication>
#include <QSemaphore>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// The info pane over selections of real files read by the real ExifTool.
class tst_InfoPaneController : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void valuesCombineOverTheSelection();
    void xmpRowsFollowTheSelection();
    void fileReadLaterShowsItsXMPRows();
    void longValuesElideAsAWholeTextWould_data();
    void longValuesElideAsAWholeTextWould();
    void toolTipsStopAfterAFewLines_data();
    void toolTipsStopAfterAFewLines();
    void cleanupTestCase();

private:
    QString valueOf(const QString &key) const;
    QVariant roleOf(const QString &key, int role) const;
    const QStringList &rows() const { return m_dataSource->columnIDs(); }

    QTemporaryDir m_dir;
    NodePtr m_paris, m_lyon, m_divergent;
    std::unique_ptr<DataModel> m_model;
    std::unique_ptr<InfoPaneController> m_pane;
    InfoPaneDataSource *m_dataSource = nullptr;
};

void tst_InfoPaneController::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    ApplicationStart::installMetadataReaders();
    m_paris = Fixtures::readNode(
        Fixtures::makeJpeg(m_dir.path(), u"paris.jpg"_s,
                           {u"-IPTC:City=Paris"_s, u"-IPTC:Country-PrimaryLocationName=France"_s}));
    m_lyon = Fixtures::readNode(
        Fixtures::makeJpeg(m_dir.path(), u"lyon.jpg"_s,
                           {u"-IPTC:City=Lyon"_s, u"-IPTC:Country-PrimaryLocationName=France"_s}));
    m_divergent = Fixtures::readNode(
        Fixtures::makeJpeg(m_dir.path(), u"divergent.jpg"_s,
                           {u"-IPTC:City=Basel"_s, u"-XMP-photoshop:City=Bern"_s,
                            u"-IPTC:Country-PrimaryLocationName=Schweiz"_s}));
    QVERIFY(m_paris && m_lyon && m_divergent);

    m_model = std::make_unique<DataModel>();
    // The IPTC entry of the category menu.
    m_model->infoPaneCategory->setValue(6);
    m_pane = NiblessViewController::make<InfoPaneController>(*m_model);
    m_dataSource = qobject_cast<InfoPaneDataSource *>(m_pane->tableView->model());
    QVERIFY(m_dataSource);
    m_pane->view()->resize(520, 240);
    m_pane->view()->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_pane->view()));
}

void tst_InfoPaneController::cleanupTestCase()
{
    m_pane.reset();
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
}

QVariant tst_InfoPaneController::roleOf(const QString &key, int role) const
{
    return m_dataSource->index(int(rows().indexOf(key)), 1).data(role);
}

QString tst_InfoPaneController::valueOf(const QString &key) const
{
    return roleOf(key, Qt::DisplayRole).toString();
}

void tst_InfoPaneController::valuesCombineOverTheSelection()
{
    m_model->setSelectedNodes({m_paris});
    QCOMPARE(valueOf(u"City"_s), u"Paris"_s);
    QCOMPARE(valueOf(u"Country"_s), u"France"_s);
    QCOMPARE(valueOf(u"Sub-location"_s), u"no value"_s);
    QVERIFY(roleOf(u"Sub-location"_s, InfoPaneDataSource::IsPlaceholderRole).toBool());

    m_model->setSelectedNodes({m_paris, m_lyon});
    QCOMPARE(valueOf(u"City"_s), u"Multiple Values: ( Paris, Lyon )"_s);
    QCOMPARE(valueOf(u"Country"_s), u"France"_s);
    QCOMPARE(m_dataSource->index(0, 0).data().toString(), u"City"_s);
    QCOMPARE(m_dataSource->index(0, 0).data(InfoPaneDataSource::AbbreviationRole).toString(),
             u"IPTC"_s);
    m_pane->view()->grab().save(u"/tmp/info_pane_light.png"_s);
}

void tst_InfoPaneController::xmpRowsFollowTheSelection()
{
    const QStringList withoutXMP {u"City"_s, u"Country"_s, u"Province-State"_s, u"Sub-location"_s};
    m_model->setSelectedNodes({m_paris});
    QCOMPARE(rows(), withoutXMP);

    m_model->setSelectedNodes({m_paris, m_divergent});
    QCOMPARE(
        rows(),
        (QStringList {u"City"_s, u"XMPCity"_s, u"Country"_s, u"XMPCountry"_s, u"Province-State"_s,
                      u"XMPState"_s, u"Sub-location"_s, u"XMPLocation"_s}));
    QCOMPARE(valueOf(u"XMPCity"_s), u"Bern"_s);
    QVERIFY(roleOf(u"XMPCity"_s, InfoPaneDataSource::IsDivergentRole).toBool());
    QVERIFY(!roleOf(u"City"_s, InfoPaneDataSource::IsDivergentRole).toBool());
    QVERIFY(!roleOf(u"XMPCountry"_s, InfoPaneDataSource::IsDivergentRole).toBool());
    m_pane->tableView->selectRow(0);
    const QPalette light = QApplication::palette();
    QPalette dark = light;
    dark.setColor(QPalette::Window, QColor(40, 40, 42));
    dark.setColor(QPalette::Text, QColor(235, 235, 235));
    QApplication::setPalette(dark);
    QApplication::processEvents();
    m_pane->view()->grab().save(u"/tmp/info_pane_dark.png"_s);
    QApplication::setPalette(light);

    m_model->setSelectedNodes({m_lyon});
    QCOMPARE(rows(), withoutXMP);
}

void tst_InfoPaneController::fileReadLaterShowsItsXMPRows()
{
    const QString path
        = Fixtures::makeJpeg(m_dir.path(), u"later.jpg"_s, {u"-XMP-photoshop:City=Genève"_s});
    QSemaphore gate;
    DataCoordinator::shared().queue().addOperation([&gate] { gate.acquire(); });
    const NodePtr later = FileNode::create(u"later.jpg"_s, path, QString());
    const NodePtr forgotten = FileNode::create(
        u"forgotten.jpg"_s, Fixtures::makeJpeg(m_dir.path(), u"forgotten.jpg"_s), QString());
    // Chosen and left again while still being read: its value, when it comes, changes nothing.
    m_model->setSelectedNodes({forgotten});
    QCOMPARE(valueOf(u"City"_s), u"waiting…"_s);
    m_model->setSelectedNodes({later, m_paris});
    QVERIFY(!rows().contains(u"XMPCity"_s));
    QCOMPARE(valueOf(u"City"_s), u"waiting…"_s);
    QVERIFY(roleOf(u"City"_s, InfoPaneDataSource::IsPlaceholderRole).toBool());
    gate.release();
    QVERIFY(TestSupport::waitUntil([&] { return rows().contains(u"XMPCity"_s); }, 20000));
    QVERIFY(TestSupport::waitUntil([&] { return valueOf(u"XMPCity"_s) == u"Genève"_s; }));
    // With no IPTC City of its own, the file answers City with its XMP copy.
    QCOMPARE(valueOf(u"City"_s), u"Multiple Values: ( Genève, Paris )"_s);
    QVERIFY(TestSupport::waitUntil(
        [&] { return forgotten->hasBeenRead(MetadataSource::ExifToolGeneric); }));
    QCOMPARE(m_model->selectedNodes(), (QList<NodePtr> {later, m_paris}));
}

void tst_InfoPaneController::longValuesElideAsAWholeTextWould_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("width");
    QStringList names;
    for (int i = 0; i < 5000; ++i)
        names << u"IMG_%1.jpg"_s.arg(i);
    const QString many = u"Multiple Values: ( "_s + names.join(u", "_s) + u" )"_s;
    QTest::newRow("short, fits") << u"Paris"_s << 300;
    QTest::newRow("many names") << many << 300;
    QTest::newRow("many names, narrow") << many << 12;
    // The cut must not split a character outside the basic plane.
    QTest::newRow("astral characters") << QString(u"\U0001F30D"_s).repeated(4000) << 200;
}

void tst_InfoPaneController::longValuesElideAsAWholeTextWould()
{
    QFETCH(QString, text);
    QFETCH(int, width);
    const QFontMetrics metrics(m_pane->tableView->font());
    QCOMPARE(InfoPaneCellDelegate::elidedToWidth(metrics, text, width),
             metrics.elidedText(text, Qt::ElideRight, width));
}

void tst_InfoPaneController::toolTipsStopAfterAFewLines_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");
    QStringList names;
    for (int i = 0; i < 5000; ++i)
        names << u"IMG_%1.jpg"_s.arg(i, 4, 10, QChar(u'0'));
    const QString many = u"Multiple Values: ( "_s + names.join(u", "_s) + u" )"_s;
    // "Multiple Values: ( " is 19 characters, each name and its comma 14: 70 names fit in 1,000.
    QTest::newRow("short stays whole") << u"Paris"_s << u"Paris"_s;
    QTest::newRow("many values, cut after one")
        << many << u"Multiple Values: ( "_s + names.mid(0, 70).join(u", "_s) + u", …"_s;
    QTest::newRow("one long value, no pair split")
        << u"a"_s + QString(u"\U0001F30D"_s).repeated(600)
        << u"a"_s + QString(u"\U0001F30D"_s).repeated(499) + u"…"_s;
}

void tst_InfoPaneController::toolTipsStopAfterAFewLines()
{
    QFETCH(QString, value);
    QFETCH(QString, expected);
    QCOMPARE(InfoPaneDataSource::toolTipText(value), expected);
}

QTEST_MAIN(tst_InfoPaneController)
#include "tst_InfoPaneController.moc"
