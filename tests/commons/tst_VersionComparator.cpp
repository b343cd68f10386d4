#include "commons/VersionComparator.h"

#include <QTest>

class tst_VersionComparator : public QObject
{
    Q_OBJECT

private slots:
    void compareVersions_data();
    void compareVersions();
};

void tst_VersionComparator::compareVersions_data()
{
    QTest::addColumn<QString>("older");
    QTest::addColumn<QString>("newer");
    QTest::newRow("numbers, not text") << "1.9"
                                       << "1.10";
    QTest::newRow("more parts") << "1.0"
                                << "1.0.1";
    QTest::newRow("pre-release before release") << "1.0b2"
                                                << "1.0";
    QTest::newRow("beta before release candidate") << "2.0-beta3"
                                                   << "2.0-rc1";
    QTest::newRow("pre-release number") << "2.0rc1"
                                        << "2.0rc2";
    QTest::newRow("release after earlier pre-release part") << "1.0b1"
                                                            << "1.0.1";
    QTest::newRow("long numbers") << "1.99999999999999999998"
                                  << "1.99999999999999999999";
    QTest::newRow("leading zeros") << "1.02"
                                   << "1.10";
    QTest::newRow("prefix word") << "v1.9"
                                 << "v1.10";
}

void tst_VersionComparator::compareVersions()
{
    QFETCH(QString, older);
    QFETCH(QString, newer);
    QVERIFY(VersionComparator::compareVersions(older, newer) < 0);
    QVERIFY(VersionComparator::compareVersions(newer, older) > 0);
    QCOMPARE(VersionComparator::compareVersions(newer, newer), 0);
    // Trailing zeros, separators and case change nothing.
    QCOMPARE(VersionComparator::compareVersions(u"1.0", u"1"), 0);
    QCOMPARE(VersionComparator::compareVersions(u"1.0.0-RC1", u"1.0.0rc1"), 0);
}

QTEST_APPLESS_MAIN(tst_VersionComparator)
#include "tst_VersionComparator.moc"
