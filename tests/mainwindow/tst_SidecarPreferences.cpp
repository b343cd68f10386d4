#include "TestSupport.h"
#include "WriteFixtures.h"

#include "mainwindow/SidecarPreferences.h"
#include "metadata/DataCoordinator.h"
#include "metadata/SidecarFiles.h"
#include "session/Node.h"
#include "writing/WriteEngine.h"

#include <QComboBox>
#include <QFile>
#include <QFormLayout>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_SidecarPreferences : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void choicesDecideWhereTheNextWriteGoes();

private:
    QTemporaryDir m_directory;
};

void tst_SidecarPreferences::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    QVERIFY(m_directory.isValid());
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_directory.filePath(u"data"_s)));
}

void tst_SidecarPreferences::choicesDecideWhereTheNextWriteGoes()
{
    QWidget dialog;
    auto *form = new QFormLayout(&dialog);
    const SidecarPreferences rows = SidecarPreferences::addRows(form);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    dialog.grab().save(u"/tmp/undoui_shots/sidecar_preferences.png"_s);
    QCOMPARE(rows.writeLocationsToPopup->currentText(), u"the file"_s);
    QVERIFY(!rows.writeLocationsToPopup->toolTip().isEmpty());
    QVERIFY(!rows.sidecarNamingPopup->itemData(1, Qt::ToolTipRole).toString().isEmpty());

    // A RAW stand-in: a TIFF under a RAW name.
    const QString tiff = m_directory.filePath(u"raw.tif"_s);
    QVERIFY(WriteFixtures::makeFixture(tiff).isEmpty());
    const QString raw = m_directory.filePath(u"raw.nef"_s);
    QVERIFY(QFile::rename(tiff, raw));
    const QByteArray rawBytes = WriteFixtures::fileHash(raw);
    QCOMPARE(SidecarFiles::writeTargets(raw), QStringList {raw});

    // "an XMP sidecar", then the Lightroom form, chosen with the keyboard.
    rows.writeLocationsToPopup->setFocus();
    QTest::keyClick(rows.writeLocationsToPopup, Qt::Key_Down);
    QCOMPARE(rows.writeLocationsToPopup->currentText(), u"an XMP sidecar"_s);
    rows.sidecarNamingPopup->setFocus();
    QTest::keyClick(rows.sidecarNamingPopup, Qt::Key_Down);
    const QString sidecar = m_directory.filePath(u"raw.xmp"_s);
    const QStringList targets = SidecarFiles::writeTargets(raw);
    QCOMPARE(targets, QStringList {sidecar});

    WriteEngine::shared().enqueueWrite({targets.first(),
                                        {u"City"_s, u"Oslo"_s},
                                        FileNode::create(u"raw.nef"_s, raw, u"raw.nef"_s),
                                        {}});
    WriteEngine::shared().flushImmediately();
    QVERIFY(
        TestSupport::waitUntil([] { return !WriteEngine::shared().hasPendingWrites(); }, 60000));
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    QCOMPARE(WriteFixtures::fileHash(raw), rawBytes);
    QCOMPARE(WriteFixtures::numericValues(sidecar).value(u"XMP-photoshop:City"_s).toString(),
             u"Oslo"_s);
}

QTEST_MAIN(tst_SidecarPreferences)
#include "tst_SidecarPreferences.moc"
