#include "session/FlatFileList.h"
#include "session/StringHelpers.h"

#include "TestSupport.h"

#include "metadata/MetadataStorage.h"
#include "metadata/RetrievalOperations.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

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
    return MetadataStorage::shared().boolValueExistsAndIsTrue(
        node->absolutePath, QStringLiteral("retrieved"), MetadataSource::Basic);
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
    QTest::newRow("letters only") << QStringLiteral("abc") << QStringLiteral("abc");
    QTest::newRow("two runs") << QStringLiteral("a1b22")
                              << QStringLiteral("a") + zeros31 + QStringLiteral("1b") + zeros30
            + QStringLiteral("22");
    const QString forty(40, QLatin1Char('7'));
    QTest::newRow("long run stays") << forty << forty;
    // Arabic-Indic digits are numeric too.
    QTest::newRow("non-ASCII digits")
        << QStringLiteral("x\u0663") << QStringLiteral("x") + zeros31 + QStringLiteral("\u0663");
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
        << QStringLiteral("/p/q/archive.tar.gz") << QStringLiteral("archive.tar")
        << QStringLiteral("archive") << QStringLiteral("q") << QStringLiteral("/p/q");
    QTest::newRow("hidden") << QStringLiteral("/p/.hidden") << QStringLiteral(".hidden")
                            << QString() << QStringLiteral("p") << QStringLiteral("/p");
    QTest::newRow("no extension") << QStringLiteral("/p/README") << QStringLiteral("README")
                                  << QStringLiteral("README") << QStringLiteral("p")
                                  << QStringLiteral("/p");
    QTest::newRow("at the root") << QStringLiteral("/a.jpg") << QStringLiteral("a")
                                 << QStringLiteral("a") << QStringLiteral("/")
                                 << QStringLiteral("/");
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
    const NodePtr node = FileNode::create(QStringLiteral("b.jpg"), QStringLiteral("/a/b.jpg"),
                                          QStringLiteral("a"));
    QCOMPARE(node->getDisplayString(QStringLiteral("full_path_name_length")).text(),
             QStringLiteral("8"));
    // The synchronous form goes through the integer row: every integer shows as a size.
    QVERIFY(node->getStringValueSync(QStringLiteral("full_path_name_length"))
            != QStringLiteral("8"));
    // Spelled this way, the key answers a length, and only in the display form.
    QCOMPARE(node->getDisplayString(QStringLiteral("absoluteParentPath")).text(),
             QStringLiteral("2"));
    QCOMPARE(node->getDisplayString(QStringLiteral("absolute_parent_path")).text(),
             QStringLiteral("/a"));
    QCOMPARE(node->getDisplayString(QStringLiteral("relative_path")).text(), QStringLiteral("a"));
    QCOMPARE(node->getDisplayString(QStringLiteral("no such key")).kind(),
             DisplayStringWrapper::Kind::NotPresent);
    QCOMPARE(node->getStringValueSync(QStringLiteral("no such key")), QStringLiteral("Null"));
    QCOMPARE(node->getIntValueSync(QStringLiteral("no such key")), 0);
    QCOMPARE(node->getDateValueSync(QStringLiteral("no such key")), Node::distantPast());
    QCOMPARE(*node, *file(QStringLiteral("/a/b.jpg")));
}

void tst_Node::pathLengthsCountCharacters_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("pathLength");
    QTest::addColumn<int>("parentLength");
    QTest::newRow("ASCII") << QStringLiteral("/a/b.jpg") << 8 << 2;
    // An accent written as its own code point belongs to its letter.
    QTest::newRow("combining accent") << QStringLiteral("/e\u0301/b.jpg") << 8 << 2;
    // A flag is two code points and four UTF-16 units, and one character.
    QTest::newRow("emoji") << QStringLiteral("/\U0001F1EB\U0001F1F7/x.jpg") << 8 << 2;
}

void tst_Node::pathLengthsCountCharacters()
{
    QFETCH(QString, path);
    const NodePtr node = FileNode::createWithoutRead(path.section(u'/', -1), path, {}, {});
    QFETCH(int, pathLength);
    QFETCH(int, parentLength);
    QCOMPARE(node->getDisplayString(QStringLiteral("full_path_name_length")).text(),
             QString::number(pathLength));
    QCOMPARE(node->getWrappedValueSync(QStringLiteral("full_path_name_length")).integerValue(),
             pathLength);
    QCOMPARE(node->getDisplayString(QStringLiteral("absoluteParentPath")).text(),
             QString::number(parentLength));
}

void tst_Node::datesFollowTheLocale_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("expected");
    // Medium date and short time, in each locale's own order and words.
    QTest::newRow("American English")
        << QStringLiteral("en_US") << QStringLiteral("Jan 5, 2024, 3:04\u202FPM");
    QTest::newRow("German") << QStringLiteral("de_DE") << QStringLiteral("05.01.2024, 15:04");
    QTest::newRow("French") << QStringLiteral("fr_FR") << QStringLiteral("5 janv. 2024, 15:04");
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
    FlatFileList list({file(QStringLiteral("/x/IMG12.jpg")), file(QStringLiteral("/y/IMG2.jpg")),
                       file(QStringLiteral("/z/img2.jpg")), file(QStringLiteral("/w/IMG1.jpg"))});
    list.sort(SortMode::nameAndSequenceAscending, SortMode::absolutePathDescending);
    // IMG2 and img2 tie case-insensitively and keep their previous order whatever the second
    // mode says.
    QCOMPARE(names(list),
             (QStringList {QStringLiteral("IMG1.jpg"), QStringLiteral("IMG2.jpg"),
                           QStringLiteral("img2.jpg"), QStringLiteral("IMG12.jpg")}));
    // Sizes are all unknown here (0), so a size sort keeps the order as it was.
    const QStringList before = names(list);
    list.sort(SortMode::sizeAscending, SortMode::nameDescending);
    QCOMPARE(names(list), before);
}

void tst_Node::descendingInvertsAndNamesCompareCaseInsensitively()
{
    const NodePtr a = file(QStringLiteral("/b/apple"));
    const NodePtr b = file(QStringLiteral("/a/Banana"));
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
    const QStringList stems {QStringLiteral("IMG_"),        QStringLiteral("img_"),
                             QStringLiteral("Img_"),        QStringLiteral("DSC"),
                             QStringLiteral("\u00c4rger"),  QStringLiteral("\u00e4rger"),
                             QStringLiteral("stra\u00dfe"), QStringLiteral("STRASSE"),
                             QStringLiteral("\U0001F600"),  QStringLiteral("\uFF21")};
    const QStringList numbers {QStringLiteral("1"),  QStringLiteral("2"), QStringLiteral("10"),
                               QStringLiteral("02"), QStringLiteral(""),  QStringLiteral("\u0663")};
    const QStringList extensions {QStringLiteral(".jpg"), QStringLiteral(".JPG"), QString()};
    QRandomGenerator random(42);
    QList<NodePtr> nodes;
    // Some namesakes share their strings, as the scanner's do, and some have copies of their own.
    QHash<QString, NodePtr> firstOfName;
    for (int i = 0; i < 600; ++i) {
        const QString name = stems.at(random.bounded(stems.size()))
            + numbers.at(random.bounded(numbers.size()))
            + extensions.at(random.bounded(extensions.size()));
        const QString folder = QStringLiteral("/f%1/").arg(random.bounded(4));
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
    const NodePtr alone = make(QStringLiteral("a/alone.jpg"));
    const NodePtr first = make(QStringLiteral("a/same.jpg"));
    const NodePtr second = make(QStringLiteral("b/same.jpg"));
    const NodePtr third = make(QStringLiteral("c/SAME.jpg"));
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
