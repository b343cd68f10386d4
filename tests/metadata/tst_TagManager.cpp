#include "metadata/TagManager.h"

#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

using Space = TagManager::DescriptiveTagSpace;

class tst_TagManager : public QObject
{
    Q_OBJECT

private slots:
    void displayName_data();
    void displayName();
    void sourceForKey_data();
    void sourceForKey();
    void everyListedColumnHasASource();
    void descriptiveGroupsFollowTheCategoryLists_data();
    void descriptiveGroupsFollowTheCategoryLists();
    void divergenceFlagKey_data();
    void divergenceFlagKey();
};

void tst_TagManager::displayName_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("name");
    QTest::newRow("made-up id shows as itself") << u"NoSuchColumn"_s << u"NoSuchColumn"_s;
    QTest::newRow("Sub-location misses the row spelled Sub-Location")
        << u"Sub-location"_s << u"Sub-location"_s;
    QTest::newRow("the row spelled Sub-Location") << u"Sub-Location"_s << u"Sub-Location"_s;
    QTest::newRow("EXIF date has no row") << u"DateTimeOriginal"_s << u"DateTimeOriginal"_s;
    QTest::newRow("XMP state") << u"XMPState"_s << u"Province/State"_s;
    QTest::newRow("misspelled id") << u"aperature"_s << u"Aperature"_s;
    QTest::newRow("title case from id") << u"exif_subject_distance"_s << u"Subject Distance"_s;
    QTest::newRow("title case keeps letters") << u"exif_iso_speed"_s << u"Iso Speed"_s;
    QTest::newRow("reference suffix") << u"gps_latitude_ref"_s << u"Latitude Ref"_s;
}

void tst_TagManager::displayName()
{
    QFETCH(QString, id);
    QFETCH(QString, name);
    QCOMPARE(TagManager::shared().displayName(id), name);
}

void tst_TagManager::sourceForKey_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<std::optional<MetadataSource>>("source");
    QTest::newRow("IPTC country") << u"Country"_s << std::optional(MetadataSource::ExifToolGeneric);
    QTest::newRow("search index city") << u"city"_s << std::optional(MetadataSource::Spotlight);
    QTest::newRow("sort key") << u"size"_s << std::optional(MetadataSource::Basic);
    QTest::newRow("image reader key") << u"exif_make"_s << std::optional<MetadataSource>();
}

void tst_TagManager::sourceForKey()
{
    QFETCH(QString, key);
    QFETCH(std::optional<MetadataSource>, source);
    QCOMPARE(TagManager::shared().sourceForKey(key), source);
}

void tst_TagManager::everyListedColumnHasASource()
{
    // A misspelt row in one table would leave a column that can never show a value.
    const TagManager &tags = TagManager::shared();
    QStringList withoutSource;
    for (const QStringList &list : tags.columnIDsByCategory()) {
        for (const QString &id : list) {
            if (id != u"-" && !tags.sourceForKey(id))
                withoutSource.append(id);
        }
    }
    for (const QString &id : tags.columnIDsToDescriptiveTagSpaceMapping().keys()) {
        if (!tags.sourceForKey(id))
            withoutSource.append(id);
    }
    QCOMPARE(withoutSource, QStringList {u"country"_s});
}

void tst_TagManager::descriptiveGroupsFollowTheCategoryLists_data()
{
    // The order within a group is the info pane's, checked there.
    QTest::addColumn<Space>("space");
    const char *names[] = {"Basic", "Size", "EXIF", "GPS", "IPTC"};
    for (size_t i = 0; i < TagManager::allDescriptiveTagSpaces.size(); ++i)
        QTest::newRow(names[i]) << TagManager::allDescriptiveTagSpaces[i];
}

void tst_TagManager::descriptiveGroupsFollowTheCategoryLists()
{
    QFETCH(Space, space);
    const TagManager &tags = TagManager::shared();
    const QStringList ids = tags.columnIDArrayForDescriptiveTag(space);

    // The group holds exactly its own ids, each once.
    QSet<QString> expected;
    const auto &mapping = tags.columnIDsToDescriptiveTagSpaceMapping();
    for (auto it = mapping.cbegin(); it != mapping.cend(); ++it) {
        if (it.value() == space)
            expected.insert(it.key());
    }
    QVERIFY(!ids.isEmpty());
    QCOMPARE(ids.size(), expected.size());
    QCOMPARE(QSet<QString>(ids.cbegin(), ids.cend()), expected);
}

void tst_TagManager::divergenceFlagKey_data()
{
    QTest::addColumn<QString>("column");
    QTest::addColumn<std::optional<QString>>("flag");
    QTest::newRow("city") << u"XMPCity"_s << std::optional(u"CityDivergent"_s);
    QTest::newRow("country") << u"XMPCountry"_s << std::optional(u"CountryDivergent"_s);
    QTest::newRow("state") << u"XMPState"_s << std::optional(u"StateDivergent"_s);
    QTest::newRow("location") << u"XMPLocation"_s << std::optional(u"SublocationDivergent"_s);
    QTest::newRow("latitude") << u"XMPGPSLatitude#"_s << std::optional(u"GPSDivergent"_s);
    QTest::newRow("longitude") << u"XMPGPSLongitude#"_s << std::optional(u"GPSDivergent"_s);
    QTest::newRow("legacy city") << u"City"_s << std::optional<QString>();
}

void tst_TagManager::divergenceFlagKey()
{
    QFETCH(QString, column);
    QFETCH(std::optional<QString>, flag);
    QCOMPARE(TagManager::divergenceFlagKey(column), flag);
}

QTEST_GUILESS_MAIN(tst_TagManager)
#include "tst_TagManager.moc"
