#include "session/FileScanner.h"

#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

void touch(const QString &path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
}

// name (relative path) pairs, sorted, so that the enumeration order does not matter.
QStringList itemsOf(const FileScanner &scanner, const QString &root)
{
    QStringList items;
    for (const NodePtr &node : scanner.flatFileList.files) {
        QString path = node->absolutePath;
        if (path.startsWith(root + QLatin1Char('/')))
            path = path.mid(root.size() + 1);
        items << path + u" ["_s + node->relativePath + QLatin1Char(']');
    }
    items.sort();
    return items;
}

} // namespace

class tst_FileScanner : public QObject
{
    Q_OBJECT

private slots:
    void hiddenItemsPackagesAndLinks();
    void sourcesThatAreNotFolders();
    void oddNamesAndNaturalOrder();
    void unreadableFolderYieldsWhatCanBeRead();
    void walkedNodesMatchNodesMadeAlone_data();
    void walkedNodesMatchNodesMadeAlone();
};

void tst_FileScanner::hiddenItemsPackagesAndLinks()
{
    QTemporaryDir dir;
    const QString root = dir.path();
    touch(root + u"/a.jpg"_s);
    touch(root + u"/.DS_Store"_s);
    touch(root + u"/sub/.DS_Store"_s);
    touch(root + u"/sub/b.jpg"_s);
    // The visible contents of a hidden folder are listed, though the folder itself is hidden.
    touch(root + u"/.thumbs/a.jpg"_s);
    touch(root + u"/Library.photoslibrary/database/photo.jpg"_s);
    touch(root + u"/outside/target.jpg"_s);
    QVERIFY(QFile::link(root + u"/outside"_s, root + u"/sub/linkdir"_s));
    QVERIFY(QFile::link(root + u"/outside/target.jpg"_s, root + u"/sub/linkfile.jpg"_s));
    QVERIFY(QFile::link(root + u"/nowhere"_s, root + u"/broken.jpg"_s));
    // A link that points at its own folder would loop if it were followed.
    QVERIFY(QFile::link(root + u"/sub"_s, root + u"/sub/loop"_s));

    FileScanner scanner;
    scanner.deepScan(root, IncludeFiles::Yes, IncludeFolders::No);
    QCOMPARE(itemsOf(scanner, root),
             (QStringList {u".thumbs/a.jpg [.thumbs]"_s, u"Library.photoslibrary []"_s,
                           u"a.jpg []"_s, u"broken.jpg []"_s, u"outside/target.jpg [outside]"_s,
                           u"sub/b.jpg [sub]"_s, u"sub/linkfile.jpg [sub]"_s}));
    QCOMPARE(scanner.currentTotalItemsScanned.load(), 7);
    QVERIFY(!scanner.isSorting); // deepScan alone does not sort

    // With folders included, real and linked folders become items too.
    FileScanner withFolders;
    withFolders.deepScan(root + u"/sub"_s, IncludeFiles::No, IncludeFolders::Yes);
    QCOMPARE(itemsOf(withFolders, root + u"/sub"_s), (QStringList {u"linkdir []"_s, u"loop []"_s}));
}

void tst_FileScanner::sourcesThatAreNotFolders()
{
    QTemporaryDir dir;
    const QString root = dir.path();
    touch(root + u"/pkg.app/Contents/x"_s);
    touch(root + u"/f/inside.jpg"_s);
    QDir().mkpath(root + u"/empty"_s);

    FileScanner scanner;
    scanner.scanSource(root + u"/pkg.app"_s);
    scanner.scanSource(root + u"/gone.jpg"_s);
    scanner.scanSource(root + u"/f"_s);
    scanner.scanSource(root + u"/f/inside.jpg"_s);
    scanner.scanSource(root + u"/empty"_s);
    QVERIFY(scanner.isSorting);
    // A package is one item, a vanished source stays as an item, and a file reachable through
    // two sources is listed twice.
    QCOMPARE(itemsOf(scanner, root),
             (QStringList {u"f/inside.jpg []"_s, u"f/inside.jpg []"_s, u"gone.jpg []"_s,
                           u"pkg.app []"_s}));

    FileScanner empty;
    empty.scanSource(root + u"/empty"_s);
    QCOMPARE(empty.currentTotalItemsScanned.load(), 0);
    QVERIFY(empty.flatFileList.files.isEmpty());
}

void tst_FileScanner::oddNamesAndNaturalOrder()
{
    QTemporaryDir dir;
    const QString root = dir.path();
    const QStringList names {u"IMG 10 \"quoted\".jpg"_s, u"IMG 9 'x'.jpg"_s, u"line\nbreak.jpg"_s,
                             u"Zürich 東京 Αθήνα.jpg"_s, u"IMG 100.jpg"_s};
    for (const QString &name : names)
        touch(root + QLatin1Char('/') + name);
    FileScanner scanner;
    scanner.scanSource(root);
    QStringList found;
    for (const NodePtr &node : scanner.flatFileList.files)
        found << node->name;
    QCOMPARE(found,
             (QStringList {u"IMG 9 'x'.jpg"_s, u"IMG 10 \"quoted\".jpg"_s, u"IMG 100.jpg"_s,
                           u"line\nbreak.jpg"_s, u"Zürich 東京 Αθήνα.jpg"_s}));
    QVERIFY(QFileInfo::exists(scanner.flatFileList.files.at(4)->absolutePath));
}

void tst_FileScanner::unreadableFolderYieldsWhatCanBeRead()
{
    if (::geteuid() == 0)
        QSKIP("running as root: permissions do not stop reading");
    QTemporaryDir dir;
    const QString root = dir.path();
    touch(root + u"/ok.jpg"_s);
    touch(root + u"/locked/secret.jpg"_s);
    QFile::setPermissions(root + u"/locked"_s, QFileDevice::Permissions());
    FileScanner scanner;
    scanner.scanSource(root);
    QFile::setPermissions(root + u"/locked"_s,
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    QCOMPARE(itemsOf(scanner, root), QStringList {u"ok.jpg []"_s});
}

void tst_FileScanner::walkedNodesMatchNodesMadeAlone_data()
{
    QTest::addColumn<QString>("sourceSuffix");
    QTest::newRow("plain") << QString();
    QTest::newRow("trailing slash") << u"/"_s;
    QTest::newRow("doubled slashes") << u"//"_s;
}

// The walk shares each folder's strings between its items and queues their reads folder by
// folder; every item must still look as if made alone, and every one must get its read.
void tst_FileScanner::walkedNodesMatchNodesMadeAlone()
{
    QFETCH(QString, sourceSuffix);
    QTemporaryDir dir;
    const QString root = dir.path();
    touch(root + u"/top.jpg"_s);
    for (const QString &folder : {u"/a"_s, u"/a/b"_s, u"/a/.hidden"_s, u"/c d"_s}) {
        for (const QString &name : {u"IMG_1.jpg"_s, u"x.tar.gz"_s, u"noext"_s, u"v2.final.mov"_s})
            touch(root + folder + QLatin1Char('/') + name);
    }

    FileScanner scanner;
    scanner.scanSource(root + sourceSuffix);
    QCOMPARE(scanner.flatFileList.files.size(), 17);
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    for (const NodePtr &node : scanner.flatFileList.files) {
        const NodePtr alone
            = FileNode::createWithoutRead(node->name, node->absolutePath, node->relativePath, {});
        const QString at = node->absolutePath;
        QCOMPARE(node->name, at.section(QLatin1Char('/'), -1));
        QCOMPARE(node->smartName, alone->smartName);
        QCOMPARE(node->fileName, alone->fileName);
        QCOMPARE(node->fileNameUpToFirstPeriod, alone->fileNameUpToFirstPeriod);
        QCOMPARE(node->parent, alone->parent);
        QCOMPARE(node->absoluteParentPath, alone->absoluteParentPath);
        QVERIFY2(QFileInfo::exists(at), qPrintable(at));
        QVERIFY2(MetadataStorage::shared().boolValueExistsAndIsTrue(
                     at, u"retrieved"_s, MetadataSource::ExifToolGeneric),
                 qPrintable(at));
    }
}

QTEST_GUILESS_MAIN(tst_FileScanner)
#include "tst_FileScanner.moc"
