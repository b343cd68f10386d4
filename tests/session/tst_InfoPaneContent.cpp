#include "session/InfoPaneContent.h"

#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(CombinedValuesWrapper)

// The info pane's rows for each entry of the category menu, and the words of combined values.
class tst_InfoPaneContent : public QObject
{
    Q_OBJECT

private slots:
    void rowsOfEachMenuEntry_data();
    void rowsOfEachMenuEntry();
    void wordsOfCombinedValues_data();
    void wordsOfCombinedValues();
};

void tst_InfoPaneContent::rowsOfEachMenuEntry_data()
{
    QTest::addColumn<int>("category");
    QTest::addColumn<bool>("xmp");
    QTest::addColumn<QStringList>("firstRows");
    QTest::addColumn<int>("count");
    QTest::newRow("Basic") << 0 << false << QStringList {u"name"_s, u"file_name"_s} << 11;
    QTest::newRow("separator") << 2 << false << QStringList() << 0;
    QTest::newRow("GPS, no XMP") << 4 << false
                                 << QStringList {u"GPSLatitude#"_s, u"GPSLatitudeRef"_s} << 9;
    QTest::newRow("GPS with XMP") << 4 << true
                                  << QStringList {u"GPSLatitude#"_s, u"XMPGPSLatitude#"_s} << 11;
    QTest::newRow("IPTC, no XMP") << 6 << false << QStringList {u"City"_s, u"Country"_s} << 4;
    QTest::newRow("past the end") << 7 << true << QStringList() << 0;
    QTest::newRow("negative") << -1 << true << QStringList() << 0;
}

void tst_InfoPaneContent::rowsOfEachMenuEntry()
{
    QFETCH(int, category);
    QFETCH(bool, xmp);
    QFETCH(QStringList, firstRows);
    const QStringList rows = InfoPaneContent::effectiveColumnIDs(category, xmp);
    QCOMPARE(rows.mid(0, firstRows.size()), firstRows);
    QTEST(int(rows.size()), "count");
}

void tst_InfoPaneContent::wordsOfCombinedValues_data()
{
    using K = CombinedValuesWrapper::Kind;
    QTest::addColumn<CombinedValuesWrapper>("combined");
    QTest::addColumn<QString>("text"); // null: still waiting
    QTest::newRow("waiting") << CombinedValuesWrapper {K::Waiting, {}, false} << QString();
    QTest::newRow("none") << CombinedValuesWrapper {K::NoValue, {}, false} << u"no value"_s;
    QTest::newRow("one, some blank")
        << CombinedValuesWrapper {K::SingleValue, {u"Paris"_s}, true} << u"Paris"_s;
    QTest::newRow("several") << CombinedValuesWrapper {K::MultipleValues, {u"a"_s, u"b"_s}, false}
                             << u"Multiple Values: ( a, b )"_s;
}

void tst_InfoPaneContent::wordsOfCombinedValues()
{
    QFETCH(CombinedValuesWrapper, combined);
    QFETCH(QString, text);
    const std::optional<QString> label = InfoPaneContent::labelText(combined);
    QCOMPARE(label.has_value(), !text.isNull());
    QCOMPARE(label.value_or(QString()), text);
}

QTEST_GUILESS_MAIN(tst_InfoPaneContent)
#include "tst_InfoPaneContent.moc"
