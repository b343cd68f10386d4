#include "EditorTestBench.h"
#include "TestSupport.h"
#include "bricks/controls/SingleLineLabel.h"
#include "bricks/controls/SmartTextField.h"
#include "location/GPSCoordinateComponent.h"
#include "mainwindow/editors/CoordinateFieldWall.h"
#include "mainwindow/editors/EditorStyle.h"
#include "mainwindow/editors/GPSLocationFragment.h"
#include "session/DataModel.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList position(const QString &latitude, const QString &longitude)
{
    return {u"-GPSLatitude="_s + latitude, u"-GPSLatitudeRef=N"_s, u"-GPSLongitude="_s + longitude,
            u"-GPSLongitudeRef=E"_s};
}

} // namespace

class tst_GPSLocationFragment : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { EditorTestBench::setUpOnce(); }
    void init();
    void cleanup() { m_bench.reset(); }
    void pastedPairFillsBothFieldsAndApplyWritesIt();
    void typingColoursReturnAndEscape();
    void emptySelectionCannotBeEdited();

private:
    // Selects the nodes and waits until the fields show the first latitude, or nothing.
    bool select(const QList<NodePtr> &nodes, const QString &latitude);
    SmartTextField *field(const char *name) const
    {
        return m_bench->view<SmartTextField>(QString::fromLatin1(name));
    }
    QColor frame() const
    {
        return m_bench->view<CoordinateFieldWall>(u"latitudeField"_s)->frameColor();
    }
    QColor role(ColorRole role) const { return EditorStyle::color(role, QApplication::palette()); }

    std::unique_ptr<EditorTestBench> m_bench;
};

void tst_GPSLocationFragment::init()
{
    m_bench = std::make_unique<EditorTestBench>();
    QVERIFY(
        m_bench->show(GPSLocationFragment::directive(*m_bench->model().gpsCoordinateComponent)));
}

bool tst_GPSLocationFragment::select(const QList<NodePtr> &nodes, const QString &latitude)
{
    m_bench->model().setSelectedNodes(nodes);
    return TestSupport::waitUntil([&] {
        return field("latitudeFieldInner")->text() == latitude
            && field("latitudeFieldInner")->isEnabled() == !nodes.isEmpty()
            && m_bench->model().gpsCoordinateComponent->latitudeField().placeholder
            != u"waiting..."_s;
    });
}

void tst_GPSLocationFragment::pastedPairFillsBothFieldsAndApplyWritesIt()
{
    const NodePtr node = m_bench->readJpeg(u"paste.jpg"_s, position(u"40"_s, u"3"_s));
    QVERIFY(node);
    QVERIFY(select({node}, u"+40.000000"_s));
    auto *apply = m_bench->view<QAbstractButton>(u"applyButton"_s);
    QVERIFY(!apply->isEnabled());
    QCOMPARE(frame(), role(ColorRole::BorderBlue));

    // A pair pasted into the latitude field is split across both fields at once.
    SmartTextField *latitude = field("latitudeFieldInner");
    latitude->setFocus();
    QApplication::clipboard()->setText(u"48°51'30\"N, 2°17'40\"E"_s);
    QTest::keyClick(latitude, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(latitude, Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(latitude->text(), u"+48.858333"_s);
    QCOMPARE(field("longitudeFieldInner")->text(), u"+2.294444"_s);
    QCOMPARE(m_bench->view<SingleLineLabel>(u"coordinateDMSLabel"_s)->stringValue(),
             u"48°51'30.00\"N, 2°17'40.00\"E"_s);
    QCOMPARE(m_bench->view<SingleLineLabel>(u"coordinateDMMLabel"_s)->stringValue(),
             u"48°51.500'N, 2°17.667'E"_s);
    QCOMPARE(m_bench->view<QLabel>(u"latitudeRef"_s)->text(), u"N"_s);
    QVERIFY(m_bench->view<QWidget>(u"copyDMSButton"_s)->isVisible());
    QCOMPARE(frame(), role(ColorRole::UncommittedTextColor));
    QVERIFY(apply->isEnabled());

    QTest::mouseClick(m_bench->view<QWidget>(u"copyDMMButton"_s), Qt::LeftButton);
    QCOMPARE(m_bench->clipboard.texts, QStringList {u"48°51.500'N, 2°17.667'E"_s});

    QTest::mouseClick(apply, Qt::LeftButton);
    QVERIFY(EditorTestBench::waitForWrites());
    QCOMPARE(EditorTestBench::tagInFile(node->absolutePath, u"GPSLatitude"_s).toDouble(),
             48.858333);
    QCOMPARE(EditorTestBench::tagInFile(node->absolutePath, u"GPSLongitude"_s).toDouble(),
             2.294444);
    // Read again, the files agree with the fields: blue, and nothing to apply.
    QVERIFY(TestSupport::waitUntil([&] { return !apply->isEnabled(); }));
    QCOMPARE(frame(), role(ColorRole::BorderBlue));
    QVERIFY(m_bench->alerts.alerts.isEmpty());
}

void tst_GPSLocationFragment::typingColoursReturnAndEscape()
{
    const NodePtr node = m_bench->readJpeg(u"typing.jpg"_s, position(u"48.8584"_s, u"2.2945"_s));
    QVERIFY(node);
    QVERIFY(select({node}, u"+48.858400"_s));
    SmartTextField *latitude = field("latitudeFieldInner");
    latitude->setFocus();
    latitude->selectAll();

    QTest::keyClicks(latitude, u"abc"_s);
    QCOMPARE(frame(), role(ColorRole::SystemRed));
    QCOMPARE(m_bench->view<SingleLineLabel>(u"coordinateDMSLabel"_s)->stringValue(),
             u"<Invalid>"_s);
    QVERIFY(!m_bench->view<QWidget>(u"applyButton"_s)->isEnabled());
    QVERIFY(!m_bench->view<QWidget>(u"addFlagButton"_s)->isEnabled());
    QTest::mouseClick(m_bench->view<QWidget>(u"addFlagButton"_s), Qt::LeftButton);
    QCOMPARE(m_bench->beeper.beeps, 0);

    // Escape gives the edit up: the fields and the lines show the files' position again.
    QTest::keyClick(latitude, Qt::Key_Escape);
    QCOMPARE(latitude->text(), u"+48.858400"_s);
    QCOMPARE(frame(), role(ColorRole::BorderBlue));
    QVERIFY(m_bench->view<SingleLineLabel>(u"coordinateDMSLabel"_s)
                ->stringValue()
                .startsWith(u"48°51'30.24\"N"_s));

    // Return normalises what was typed and writes it.
    latitude->selectAll();
    QTest::keyClicks(latitude, u"-12.5"_s);
    QCOMPARE(m_bench->view<QLabel>(u"latitudeSign"_s)->text(), u"-"_s);
    QTest::keyClick(latitude, Qt::Key_Return);
    QCOMPARE(latitude->text(), u"-12.500000"_s);
    QVERIFY(EditorTestBench::waitForWrites());
    QCOMPARE(EditorTestBench::tagInFile(node->absolutePath, u"GPSLatitude"_s).toDouble(), -12.5);
    QCOMPARE(EditorTestBench::tagInFile(node->absolutePath, u"GPSLongitude"_s).toDouble(), 2.2945);
}

void tst_GPSLocationFragment::emptySelectionCannotBeEdited()
{
    QVERIFY(select({}, QString()));
    QVERIFY(!field("latitudeFieldInner")->isEnabled());
    QVERIFY(!field("longitudeFieldInner")->isEnabled());
    QCOMPARE(frame(), role(ColorRole::SystemGray));
    QVERIFY(!m_bench->view<QWidget>(u"copyDMSButton"_s)->isVisible());
}

QTEST_MAIN(tst_GPSLocationFragment)
#include "tst_GPSLocationFragment.moc"
