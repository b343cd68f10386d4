#include "session/FlatFileList.h"
#include "session/StringHelpers.h"

#include "TestSupport.h"

#include "metadata/MetadataStorage.h"
#include "metadata/RetrievalOperations.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace StringHelpers;

namespace {
NodePtr file(const QString &path)
{
    return FileNode::create(path.mid(path.lastIndexOf(QLatin1Char('/')) + 1), path, QString());
}

QStringList names(const FlatFileList &list)
{
    QStringList result;
    for (const NodePtr &node : list.files)
        result << node->name;
    return result;
}

QStringList paths(const QList<NodePtr> &nodes)
{
    QStringList result;
    for (const NodePtr &node : nodes)
        result << node->absolutePath;
    return result;
}

bool basicSourceRead(const NodePtr &node)
{
    return MetadataStorage::shared().boolValueExistsAndIsTrue(node->absolutePath, u"retrieved"_s,
                                                              MetadataSource::Basic);
}
} // namespace

class tst_Node : public QObject
{
    Q_OBJECT

private slots:
    void expandingNumberGroups_data();
    void expandingNumberGroups();
    void derivedFields_data();
    void derivedFields();
    void builtInKeysDifferBetweenDisplayAndSyncForms();
    void pathLengthsCountCharacters_data();
    void pathLengthsCountCharacters();
    void datesFollowTheLocale_data();
    void datesFollowTheLocale();
    void sortIsNaturalStableAndIgnoresSecondMode();
    void descendingInvertsAndNamesCompareCaseInsensitively();
    void textSortsAgreeWithNodeCompare_data();
    void textSortsAgreeWithNodeCompare();
    void tiesStillReadTheSecondModesSource();
};

void tst_Node::expandingNumberGroups_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("expected");
    const QString zeros31(31, QLatin1Char('0'));
    const QString zeros30(30, QLatin1Char('0'));
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("letters only") << u"abc"_s << u"abc"_s;
    QTest::newRow("two runs") << u"a1b22"_s << u"a"_s + zeros31 + u"1b"_s + zeros30 + u"22"_s;
    const QString forty(40, QLatin1Char('7'));
    QTest::newRow("long run stays") << forty << forty;
    // Arabic-Indic digits are numeric too.
    QTest::newRow("non-ASCII digits") << u"x\u0663"_s << u"x"_s + zeros31 + u"\u0663"_s;
}

void tst_Node::expandingNumberGroups()
{
    QFETCH(QString, input);
    QFETCH(QString, expected);
    QCOMPARE(stringByExpandingAllNumberGroups(input), expected);
}

void tst_Node::derivedFields_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("upToFirstPeriod");
    QTest::addColumn<QString>("parent");
    QTest::addColumn<QString>("parentPath");
    QTest::newRow("double extension")
        << u"/p/q/archive.tar.gz"_s << u"archive.tar"_s << u"archive"_s << u"q"_s << u"/p/q"_s;
    QTest::newRow("hidden") << u"/p/.hidden"_s << u".hidden"_s << QString() << u"p"_s << u"/p"_s;
    QTest::newRow("no extension") << u"/p/README"_s << u"README"_s << u"README"_s << u"p"_s
                                  << u"/p"_s;
    QTest::newRow("at the root") << u"/a.jpg"_s << u"a"_s << u"a"_s << u"/"_s << u"/"_s;
}

void tst_Node::derivedFields()
{
    QFETCH(QString, path);
    const NodePtr node = file(path);
    QTEST(node->fileName, "fileName");
    QTEST(node->fileNameUpToFirstPeriod, "upToFirstPeriod");
    QTEST(node->parent, "parent");
    QTEST(node->absoluteParentPath, "parentPath");
}

void tst_Node::builtInKeysDifferBetweenDisplayAndSyncForms()
{
    const NodePtr node = FileNode::create(u"b.jpg"_s, u"/a/b.jpg"_s, u"a"_s);
    QCOMPARE(node->getDisplayString(u"full_path_name_length"_s).text(), u"8"_s);
    // The synchronous form goes through the integer row: every integer shows as a size.
    QVERIFY(node->getStringValueSync(u"full_path_name_length"_s) != u"8"_s);
    // Spelled this way, the key answers a length, and only in the display form.
    QCOMPARE(node->getDisplayString(u"absoluteParentPath"_s).text(), u"2"_s);
    QCOMPARE(node->getDisplayString(u"absolute_parent_path"_s).text(), u"/a"_s);
    QCOMPARE(node->getDisplayString(u"relative_path"_s).text(), u"a"_s);
    QCOMPARE(node->getDisplayString(u"no such key"_s).kind(),
             DisplayStringWrapper::Kind::NotPresent);
    QCOMPARE(node->getStringValueSync(u"no such key"_s), u"Null"_s);
    QCOMPARE(node->getIntValueSync(u"no such key"_s), 0);
    QCOMPARE(node->getDateValueSync(u"no such key"_s), Node::distantPast());
    QCOMPARE(*node, *file(u"/a/b.jpg"_s));
}

void tst_Node::pathLengthsCountCharacters_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("pathLength");
    QTest::addColumn<int>("parentLength");
    QTest::newRow("ASCII") << u"/a/b.jpg"_s << 8 << 2;
    // An accent written as its own code point belongs to its letter.
    QTest::newRow("combining accent") << u"/e\u0301/b.jpg"_s << 8 << 2;
    // A flag is two code points and four UTF-16 units, and one character.
    QTest::newRow("emoji") << u"/\U0001F1EB\U0001F1F7/x.jpg"_s << 8 << 2;
}

void tst_Node::pathLengthsCountCharacters()
{
    QFETCH(QString, path);
    const NodePtr node = FileNode::createWithoutRead(path.section(u'/', -1), path, {}, {});
    QFETCH(int, pathLength);
    QFETCH(int, parentLength);
    QCOMPARE(node->getDisplayString(u"full_path_name_length"_s).text(),
             QString::number(pathLength));
    QCOMPARE(node->getWrappedValueSync(u"full_path_name_length"_s).integerValue(), pathLength);
    QCOMPARE(node->getDisplayString(u"absoluteParentPath"_s).text(), QString::number(parentLength));
}

void tst_Node::datesFollowTheLocale_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("expected");
    // Medium date and short time, in each locale's own order and words.
    QTest::newRow("American English") << u"en_US"_s << u"Jan 5, 2024, 3:04\u202FPM"_s;
    QTest::newRow("German") << u"de_DE"_s << u"05.01.2024, 15:04"_s;
    QTest::newRow("French") << u"fr_FR"_s << u"5 janv. 2024, 15:04"_s;
}

void tst_Node::datesFollowTheLocale()
{
    QFETCH(QString, locale);
    const QLocale before;
    QLocale::setDefault(QLocale(locale));
    const QString text = Node::formatDisplayDate(QDateTime(QDate(2024, 1, 5), QTime(15, 4, 30)));
    QLocale::setDefault(before);
    QTEST(text, "expected");
}

void tst_Node::sortIsNaturalStableAndIgnoresSecondMode()
{
    FlatFileList list({file(u"/x/IMG12.jpg"_s), file(u"/y/IMG2.jpg"_s), file(u"/z/img2.jpg"_s),
                       file(u"/w/IMG1.jpg"_s)});
    list.sort(SortMode::nameAndSequenceAscending, SortMode::absolutePathDescending);
    // IMG2 and img2 tie case-insensitively and keep their previous order whatever the second
    // mode says.
    QCOMPARE(names(list),
             (QStringList {u"IMG1.jpg"_s, u"IMG2.jpg"_s, u"img2.jpg"_s, u"IMG12.jpg"_s}));
    // Sizes are all unknown here (0), so a size sort keeps the order as it was.
    const QStringList before = names(list);
    list.sort(SortMode::sizeAscending, SortMode::nameDescending);
    QCOMPARE(names(list), before);
}

void tst_Node::descendingInvertsAndNamesCompareCaseInsensitively()
{
    const NodePtr a = file(u"/b/apple"_s);
    const NodePtr b = file(u"/a/Banana"_s);
    QCOMPARE(Node::compare(*a, *b, SortMode::nameAscending), NodeComparisonResult::aBeforeB);
    QCOMPARE(Node::compare(*a, *b, SortMode::nameDescending), NodeComparisonResult::bBeforeA);
    // The path-and-sequence modes compare the names, not the paths.
    QCOMPARE(Node::compare(*a, *b, SortMode::pathAndSequenceAscending),
             NodeComparisonResult::aBeforeB);
    QCOMPARE(Node::compare(*a, *b, SortMode::absolutePathAscending),
             NodeComparisonResult::bBeforeA);
    QCOMPARE(Node::compare(*a, *a, SortMode::cityAscending), NodeComparisonResult::tie);
}

void tst_Node::textSortsAgreeWithNodeCompare_data()
{
    QTest::addColumn<SortMode>("mode");
    for (SortMode mode : {SortMode::nameAndSequenceAscending, SortMode::nameAndSequenceDescending,
                          SortMode::pathAndSequenceAscending, SortMode::pathAndSequenceDescending,
                          SortMode::nameAscending, SortMode::nameDescending,
                          SortMode::absolutePathAscending, SortMode::absolutePathDescending})
        QTest::newRow(qPrintable(QString::number(int(mode)))) << mode;
}

// The list's sort must order exactly as a stable sort by Node::compare would, ties included,
// over names that repeat, differ only in case, carry numbers of any width and leave ASCII.
void tst_Node::textSortsAgreeWithNodeCompare()
{
    QFETCH(SortMode, mode);
    const QStringList stems {u"IMG_"_s,       u"img_"_s,       u"Img_"_s,        u"DSC"_s,
                             u"\u00c4rger"_s, u"\u00e4rger"_s, u"stra\u00dfe"_s, u"STRASSE"_s,
                             u"\U0001F600"_s, u"\uFF21"_s};
    const QStringList numbers {u"1"_s, u"2"_s, u"10"_s, u"02"_s, u""_s, u"\u0663"_s};
    const QStringList extensions {u".jpg"_s, u".JPG"_s, QString()};
    QRandomGenerator random(42);
    QList<NodePtr> nodes;
    // Some namesakes share their strings, as the scanner's do, and some have copies of their own.
    QHash<QString, NodePtr> firstOfName;
    for (int i = 0; i < 600; ++i) {
        const QString name = stems.at(random.bounded(stems.size()))
            + numbers.at(random.bounded(numbers.size()))
            + extensions.at(random.bounded(extensions.size()));
        const QString folder = u"/f%1/"_s.arg(random.bounded(4));
        const NodePtr namesake = i % 2 ? firstOfName.value(name) : NodePtr();
        nodes << FileNode::createWithoutRead(name, folder + name, QString(),
                                             {nullptr, namesake.get()});
        if (!firstOfName.contains(name))
            firstOfName.insert(name, nodes.last());
    }

    QList<NodePtr> expected = nodes;
    std::stable_sort(expected.begin(), expected.end(), [&](const NodePtr &a, const NodePtr &b) {
        return Node::compare(*a, *b, mode) == NodeComparisonResult::aBeforeB;
    });
    FlatFileList list(nodes);
    list.sort(mode, SortMode::nameAscending);
    QCOMPARE(paths(list.files), paths(expected));
}

void tst_Node::tiesStillReadTheSecondModesSource()
{
    QTemporaryDir dir;
    const auto make = [&](const QString &relative) {
        const QString path = dir.filePath(relative);
        return FileNode::createWithoutRead(relative.section(QLatin1Char('/'), -1), path, QString(),
                                           {});
    };
    const NodePtr alone = make(u"a/alone.jpg"_s);
    const NodePtr first = make(u"a/same.jpg"_s);
    const NodePtr second = make(u"b/same.jpg"_s);
    const NodePtr third = make(u"c/SAME.jpg"_s);
    FlatFileList list({third, alone, first, second});
    list.sort(SortMode::nameAndSequenceAscending, SortMode::sizeAscending);
    QCOMPARE(list.files, (QList<NodePtr> {alone, third, first, second}));
    // The second mode never moves an item, but the items that tie have their sizes read.
    QVERIFY(!basicSourceRead(alone));
    QVERIFY(basicSourceRead(first));
    QVERIFY(basicSourceRead(second));
    QVERIFY(basicSourceRead(third));
}

QTEST_GUILESS_MAIN(tst_Node)
#include "tst_Node.moc"
