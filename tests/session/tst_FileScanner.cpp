#include "session/FileScanner.h"

#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

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
        items << path + QStringLiteral(" [") + node->relativePath + QLatin1Char(']');
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
    touch(root + QStringLiteral("/a.jpg"));
    touch(root + QStringLiteral("/.DS_Store"));
    touch(root + QStringLiteral("/sub/.DS_Store"));
    touch(root + QStringLiteral("/sub/b.jpg"));
    // The visible contents of a hidden folder are listed, though the folder itself is hidden.
    touch(root + QStringLiteral("/.thumbs/a.jpg"));
    touch(root + QStringLiteral("/Library.photoslibrary/database/photo.jpg"));
    touch(root + QStringLiteral("/outside/target.jpg"));
    QVERIFY(QFile::link(root + QStringLiteral("/outside"), root + QStringLiteral("/sub/linkdir")));
    QVERIFY(QFile::link(root + QStringLiteral("/outside/target.jpg"),
                        root + QStringLiteral("/sub/linkfile.jpg")));
    QVERIFY(QFile::link(root + QStringLiteral("/nowhere"), root + QStringLiteral("/broken.jpg")));
    // A link that points at its own folder would loop if it were followed.
    QVERIFY(QFile::link(root + QStringLiteral("/sub"), root + QStringLiteral("/sub/loop")));

    FileScanner scanner;
    scanner.deepScan(root, IncludeFiles::Yes, IncludeFolders::No);
    QCOMPARE(itemsOf(scanner, root),
             (QStringList {
                 QStringLiteral(".thumbs/a.jpg [.thumbs]"),
                 QStringLiteral("Library.photoslibrary []"), QStringLiteral("a.jpg []"),
                 QStringLiteral("broken.jpg []"), QStringLiteral("outside/target.jpg [outside]"),
                 QStringLiteral("sub/b.jpg [sub]"), QStringLiteral("sub/linkfile.jpg [sub]")}));
    QCOMPARE(scanner.currentTotalItemsScanned.load(), 7);
    QVERIFY(!scanner.isSorting); // deepScan alone does not sort

    // With folders included, real and linked folders become items too.
    FileScanner withFolders;
    withFolders.deepScan(root + QStringLiteral("/sub"), IncludeFiles::No, IncludeFolders::Yes);
    QCOMPARE(itemsOf(withFolders, root + QStringLiteral("/sub")),
             (QStringList {QStringLiteral("linkdir []"), QStringLiteral("loop []")}));
}

void tst_FileScanner::sourcesThatAreNotFolders()
{
    QTemporaryDir dir;
    const QString root = dir.path();
    touch(root + QStringLiteral("/pkg.app/Contents/x"));
    touch(root + QStringLiteral("/f/inside.jpg"));
    QDir().mkpath(root + QStringLiteral("/empty"));

    FileScanner scanner;
    scanner.scanSource(root + QStringLiteral("/pkg.app"));
    scanner.scanSource(root + QStringLiteral("/gone.jpg"));
    scanner.scanSource(root + QStringLiteral("/f"));
    scanner.scanSource(root + QStringLiteral("/f/inside.jpg"));
    scanner.scanSource(root + QStringLiteral("/empty"));
    QVERIFY(scanner.isSorting);
    // A package is one item, a vanished source stays as an item, and a file reachable through
    // two sources is listed twice.
    QCOMPARE(itemsOf(scanner, root),
             (QStringList {QStringLiteral("f/inside.jpg []"), QStringLiteral("f/inside.jpg []"),
                           QStringLiteral("gone.jpg []"), QStringLiteral("pkg.app []")}));

    FileScanner empty;
    empty.scanSource(root + QStringLiteral("/empty"));
    QCOMPARE(empty.currentTotalItemsScanned.load(), 0);
    QVERIFY(empty.flatFileList.files.isEmpty());
}

void tst_FileScanner::oddNamesAndNaturalOrder()
{
    QTemporaryDir dir;
    const QString root = dir.path();
    const QStringList names {QStringLiteral("IMG 10 \"quoted\".jpg"),
                             QStringLiteral("IMG 9 'x'.jpg"), QStringLiteral("line\nbreak.jpg"),
                             QStringLiteral("Zürich 東京 Αθήνα.jpg"),
                             QStringLiteral("IMG 100.jpg")};
    for (const QString &name : names)
        touch(root + QLatin1Char('/') + name);
    FileScanner scanner;
    scanner.scanSource(root);
    QStringList found;
    for (const NodePtr &node : scanner.flatFileList.files)
        found << node->name;
    QCOMPARE(found,
             (QStringList {QStringLiteral("IMG 9 'x'.jpg"), QStringLiteral("IMG 10 \"quoted\".jpg"),
                           QStringLiteral("IMG 100.jpg"), QStringLiteral("line\nbreak.jpg"),
                           QStringLiteral("Zürich 東京 Αθήνα.jpg")}));
    QVERIFY(QFileInfo::exists(scanner.flatFileList.files.at(4)->absolutePath));
}

void tst_FileScanner::unreadableFolderYieldsWhatCanBeRead()
{
    if (::geteuid() == 0)
        QSKIP("running as root: permissions do not stop reading");
    QTemporaryDir dir;
    const QString root = dir.path();
    touch(root + QStringLiteral("/ok.jpg"));
    touch(root + QStringLiteral("/locked/secret.jpg"));
    QFile::setPermissions(root + QStringLiteral("/locked"), QFileDevice::Permissions());
    FileScanner scanner;
    scanner.scanSource(root);
    QFile::setPermissions(root + QStringLiteral("/locked"),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    QCOMPARE(itemsOf(scanner, root), QStringList {QStringLiteral("ok.jpg []")});
}

void tst_FileScanner::walkedNodesMatchNodesMadeAlone_data()
{
    QTest::addColumn<QString>("sourceSuffix");
    QTest::newRow("plain") << QString();
    QTest::newRow("trailing slash") << QStringLiteral("/");
    QTest::newRow("doubled slashes") << QStringLiteral("//");
}

// The walk shares each folder's strings between its items and queues their reads folder by
// folder; every item must still look as if made alone, and every one must get its read.
void tst_FileScanner::walkedNodesMatchNodesMadeAlone()
{
    QFETCH(QString, sourceSuffix);
    QTemporaryDir dir;
    const QString root = dir.path();
    touch(root + QStringLiteral("/top.jpg"));
    for (const QString &folder : {QStringLiteral("/a"), QStringLiteral("/a/b"),
                                  QStringLiteral("/a/.hidden"), QStringLiteral("/c d")}) {
        for (const QString &name : {QStringLiteral("IMG_1.jpg"), QStringLiteral("x.tar.gz"),
                                    QStringLiteral("noext"), QStringLiteral("v2.final.mov")})
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
                     at, QStringLiteral("retrieved"), MetadataSource::ExifToolGeneric),
                 qPrintable(at));
    }
}

QTEST_GUILESS_MAIN(tst_FileScanner)
#include "tst_FileScanner.moc"
