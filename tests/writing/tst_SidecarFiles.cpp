#include "TestSupport.h"
#include "WriteFixtures.h"

#include "metadata/DataCoordinator.h"
#include "metadata/SidecarFiles.h"
#include "platform/Resources.h"
#include "session/FileScanner.h"
#include "session/Node.h"
#include "writing/UndoJournal.h"
#include "writing/UndoManager.h"
#include "writing/WriteEngine.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using Destination = SidecarFiles::Destination;
using Naming = SidecarFiles::Naming;

class tst_SidecarFiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void naming_data();
    void naming();
    void readOnlyTypesAreThoseExifToolCannotWrite();
    void sidecarsAreNotItems();
    void writingTheSidecarLeavesTheRawAlone_data();
    void writingTheSidecarLeavesTheRawAlone();

private:
    QString touch(const QString &name);

    QTemporaryDir m_directory;
};

void tst_SidecarFiles::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    QVERIFY(m_directory.isValid());
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_directory.filePath(u"data"_s)));
    UndoJournal::shared().enable();
}

QString tst_SidecarFiles::touch(const QString &name)
{
    const QString path = m_directory.filePath(name);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) ? path : QString();
}

void tst_SidecarFiles::naming_data()
{
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<int>("destination");
    QTest::addColumn<int>("naming");
    QTest::addColumn<QStringList>("targets");

    const int file = int(Destination::file);
    const int sidecar = int(Destination::sidecar);
    const int both = int(Destination::both);
    const int withExtension = int(Naming::withExtension);
    const int withoutExtension = int(Naming::withoutExtension);
    QTest::newRow("file") << QStringList {} << file << withExtension << QStringList {u"a.nef"_s};
    QTest::newRow("new sidecar, darktable form")
        << QStringList {} << sidecar << withExtension << QStringList {u"a.nef.xmp"_s};
    QTest::newRow("new sidecar, Lightroom form")
        << QStringList {} << sidecar << withoutExtension << QStringList {u"a.xmp"_s};
    QTest::newRow("both") << QStringList {} << both << withExtension
                          << QStringList {u"a.nef"_s, u"a.nef.xmp"_s};
    QTest::newRow("existing Lightroom form is written")
        << QStringList {u"a.xmp"_s} << sidecar << withExtension << QStringList {u"a.xmp"_s};
    QTest::newRow("both forms: darktable's wins")
        << QStringList {u"a.xmp"_s, u"a.nef.xmp"_s} << sidecar << withoutExtension
        << QStringList {u"a.nef.xmp"_s};
    QTest::newRow("type ExifTool can't write: the sidecar whatever the setting")
        << QStringList {} << file << withExtension << QStringList {u"a.kdc.xmp"_s};
}

void tst_SidecarFiles::naming()
{
    QFETCH(QStringList, present);
    QFETCH(int, destination);
    QFETCH(int, naming);
    QFETCH(QStringList, targets);

    const QString folder = QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'_');
    const QString base = targets.first().startsWith(u"a.kdc"_s) ? u"a.kdc"_s : u"a.nef"_s;
    const QString raw = touch(folder + u'/' + base);
    QVERIFY(!raw.isEmpty());
    for (const QString &name : std::as_const(present))
        QVERIFY(!touch(folder + u'/' + name).isEmpty());

    QStringList names;
    for (const QString &path :
         SidecarFiles::writeTargets(raw, Destination(destination), Naming(naming)))
        names << QFileInfo(path).fileName();
    QCOMPARE(names, targets);
}

void tst_SidecarFiles::readOnlyTypesAreThoseExifToolCannotWrite()
{
    const QStringList types
        = {u"3fr"_s, u"ari"_s, u"bay"_s, u"dcr"_s, u"k25"_s, u"kdc"_s, u"srf"_s, u"r3d"_s,
           u"nef"_s, u"cr2"_s, u"arw"_s, u"dng"_s, u"raf"_s, u"orf"_s, u"rw2"_s, u"jpg"_s};
    const QStringList arguments
        = {u"-I"_s, Resources::path(u"exiftool/lib"_s), u"-MImage::ExifTool"_s, u"-e"_s,
           u"print Image::ExifTool::CanWrite(\"x.$_\") ? \"w\\n\" : \"r\\n\" for @ARGV"_s};
    const WriteFixtures::CommandResult result = WriteFixtures::run(u"perl"_s, arguments + types);
    QCOMPARE(result.exitCode, 0);
    const QList<QByteArray> answers = result.standardOutput.trimmed().split('\n');
    QCOMPARE(answers.size(), types.size());
    for (qsizetype i = 0; i < types.size(); ++i) {
        QVERIFY2(SidecarFiles::exifToolCannotWrite(u"x."_s + types.at(i)) == (answers.at(i) == "r"),
                 qPrintable(types.at(i)));
    }
}

void tst_SidecarFiles::sidecarsAreNotItems()
{
    const QString folder = u"scan"_s;
    for (const QString &name :
         {u"a.nef"_s, u"a.nef.xmp"_s, u"b.cr2"_s, u"b.xmp"_s, u"alone.xmp"_s, u"c.jpg"_s})
        QVERIFY(!touch(folder + u'/' + name).isEmpty());
    FileScanner scanner;
    scanner.deepScan(m_directory.filePath(folder), IncludeFiles::Yes, IncludeFolders::No);
    QStringList names;
    for (const NodePtr &node : scanner.flatFileList.files)
        names << QFileInfo(node->absolutePath).fileName();
    names.sort();
    QCOMPARE(names, (QStringList {u"a.nef"_s, u"alone.xmp"_s, u"b.cr2"_s, u"c.jpg"_s}));
}

void tst_SidecarFiles::writingTheSidecarLeavesTheRawAlone_data()
{
    QTest::addColumn<int>("naming");
    QTest::addColumn<QString>("sidecarName");
    QTest::newRow("darktable form") << int(Naming::withExtension) << u"raw1.nef.xmp"_s;
    QTest::newRow("Lightroom form") << int(Naming::withoutExtension) << u"raw2.xmp"_s;
}

void tst_SidecarFiles::writingTheSidecarLeavesTheRawAlone()
{
    QFETCH(int, naming);
    QFETCH(QString, sidecarName);
    // A RAW stand-in: a TIFF under a RAW extension, as many RAW formats are TIFF inside.
    const QString tiff = m_directory.filePath(sidecarName.section(u'.', 0, 0) + u".tif"_s);
    const QString made = WriteFixtures::makeFixture(tiff);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    const QString raw = tiff.chopped(4) + u".nef"_s;
    QVERIFY(QFile::rename(tiff, raw));
    const QByteArray rawBytes = WriteFixtures::fileHash(raw);

    const QStringList targets
        = SidecarFiles::writeTargets(raw, Destination::sidecar, Naming(naming));
    QCOMPARE(targets, QStringList {m_directory.filePath(sidecarName)});
    const QString name = QFileInfo(raw).fileName();
    WriteEngine::shared().enqueueWrite(
        {targets.first(),
         {u"GPSLatitude#"_s, u"-33.5"_s, u"GPSLongitude#"_s, u"151.25"_s, u"GPSLatitudeRef"_s,
          u"South"_s, u"GPSLongitudeRef"_s, u"East"_s, u"City"_s, u"Sydney"_s},
         FileNode::create(name, raw, name),
         {}});
    WriteEngine::shared().flushImmediately();
    QVERIFY(TestSupport::waitForWrites());

    QCOMPARE(WriteFixtures::fileHash(raw), rawBytes);
    const QJsonObject values = WriteFixtures::numericValues(targets.first());
    QCOMPARE(values.value(u"XMP-exif:GPSLatitude"_s).toDouble(), -33.5);
    QCOMPARE(values.value(u"XMP-exif:GPSLongitude"_s).toDouble(), 151.25);
    QCOMPARE(values.value(u"XMP-photoshop:City"_s).toString(), u"Sydney"_s);
    QCOMPARE(SidecarFiles::existingSidecar(raw), targets.first());

    // The sidecar was made by the write, so undoing the write removes it.
    QVERIFY(UndoManager::shared().undo());
    QVERIFY(TestSupport::waitForWrites());
    QVERIFY(!QFileInfo::exists(targets.first()));
    QCOMPARE(WriteFixtures::fileHash(raw), rawBytes);
    QVERIFY(UndoManager::shared().redo());
    QVERIFY(TestSupport::waitForWrites());
    QCOMPARE(WriteFixtures::numericValues(targets.first()).value(u"XMP-photoshop:City"_s),
             u"Sydney"_s);
}

QTEST_GUILESS_MAIN(tst_SidecarFiles)
#include "tst_SidecarFiles.moc"
