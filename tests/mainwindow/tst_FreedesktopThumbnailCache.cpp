#include "PreviewFixtures.h"
#include "TestSupport.h"
#include "mainwindow/preview/FreedesktopThumbnailCache.h"
#include "mainwindow/preview/ThumbnailGenerator.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using Folder = FreedesktopThumbnailCache::Folder;

namespace {

struct RecordingDelegate : ThumbnailGeneratorDelegate
{
    void thumbnailGenerator(ThumbnailGenerator &, const ThumbnailResult &result) override
    {
        results.append(result);
    }
    QList<ThumbnailResult> results;
};

int modeOf(const QString &path)
{
    struct stat info
    { };
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? int(info.st_mode & 0777) : -1;
}

// The picture a fresh generator (empty memory cache) shows for the file.
QImage shownByFreshGenerator(const QString &path, const QSizeF &size)
{
    const auto generator = ThumbnailGenerator::create(1, 6);
    const auto delegate = std::make_shared<RecordingDelegate>();
    generator->setDelegate(delegate);
    generator->requestThumbnail(ImagePreviewItem(path), 0, size);
    if (!TestSupport::waitUntil([&] { return !delegate->results.isEmpty(); }))
        return {};
    generator->operationQueue().waitUntilAllOperationsAreFinished();
    return delegate->results.first().image.value_or(QImage());
}

} // namespace

class tst_FreedesktopThumbnailCache : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void namesFollowTheFileUri_data();
    void namesFollowTheFileUri();
    void decodedThumbnailIsWrittenBackPrivately();
    void storedThumbnailIsReadUntilTheFileChanges();
    void largerFoldersServeSmallerRequests();
    void refusesToThumbnailTheCacheItself();

private:
    QTemporaryDir dir;
    QTemporaryDir cacheHome;
};

void tst_FreedesktopThumbnailCache::initTestCase()
{
    QVERIFY(dir.isValid() && cacheHome.isValid());
    qputenv("XDG_CACHE_HOME", QFile::encodeName(cacheHome.path()));
    QCOMPARE(FreedesktopThumbnailCache::thumbnailsDirectory(), cacheHome.path() + u"/thumbnails"_s);
}

void tst_FreedesktopThumbnailCache::namesFollowTheFileUri_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("uri");
    QTest::newRow("the standard's example")
        << u"/home/jens/photos/me.png"_s << QByteArray("file:///home/jens/photos/me.png");
    QTest::newRow("reserved and non-ASCII characters")
        << u"/tmp/a b;é#%[1].jpg"_s << QByteArray("file:///tmp/a%20b%3B%C3%A9%23%25%5B1%5D.jpg");
    QTest::newRow("characters a path may keep")
        << u"/tmp/it's (1)+x=y,@home~_$&!*.jpg"_s
        << QByteArray("file:///tmp/it's%20(1)+x=y,@home~_$&!*.jpg");
}

void tst_FreedesktopThumbnailCache::namesFollowTheFileUri()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, uri);
    QCOMPARE(FreedesktopThumbnailCache::uriForPath(path), uri);
    const QString name
        = QString::fromLatin1(QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex());
    QCOMPARE(FreedesktopThumbnailCache::thumbnailPath(path, Folder::large),
             cacheHome.path() + u"/thumbnails/large/"_s + name + u".png"_s);
    if (QTest::currentDataTag() == QByteArray("the standard's example"))
        QCOMPARE(name, u"c6ee772d9e49320e97ec29a7eb5b1697"_s);
}

// A 200 by 150 request is made from the large folder's 256 pixels, and that is what is kept.
void tst_FreedesktopThumbnailCache::decodedThumbnailIsWrittenBackPrivately()
{
    const QString path
        = PreviewFixtures::makePicture(dir.path(), u"beach.jpg"_s, {800, 600}, QColor(30, 90, 200));
    QVERIFY(!shownByFreshGenerator(path, {200, 150}).isNull());

    const QString stored = FreedesktopThumbnailCache::thumbnailPath(path, Folder::large);
    QCOMPARE(QImageReader::imageFormat(stored), QByteArray("png"));
    const QImage thumbnail(stored);
    QCOMPARE(thumbnail.text(u"Thumb::URI"_s),
             QString::fromLatin1(FreedesktopThumbnailCache::uriForPath(path)));
    QCOMPARE(thumbnail.text(u"Thumb::MTime"_s),
             QString::number(QFileInfo(path).lastModified().toSecsSinceEpoch()));
    QCOMPARE(thumbnail.text(u"Thumb::Image::Width"_s), u"800"_s);
    QCOMPARE(thumbnail.text(u"Thumb::Mimetype"_s), u"image/jpeg"_s);
    QCOMPARE(thumbnail.size(), QSize(256, 192));
    QCOMPARE(modeOf(stored), 0600);
    const QString folder = QFileInfo(stored).absolutePath();
    QCOMPARE(modeOf(folder), 0700);
    QCOMPARE(modeOf(FreedesktopThumbnailCache::thumbnailsDirectory()), 0700);
    QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList {QFileInfo(stored).fileName()});
}

// A thumbnail that another program left is shown as it is; once the file changes it no longer
// counts, and the picture is decoded and stored anew.
void tst_FreedesktopThumbnailCache::storedThumbnailIsReadUntilTheFileChanges()
{
    const QColor sea(30, 90, 200), moss(60, 160, 60);
    const QString path = PreviewFixtures::makePicture(dir.path(), u"coast.jpg"_s, {800, 600}, sea);
    QImage foreign(256, 192, QImage::Format_RGB32);
    foreign.fill(moss);
    QVERIFY(FreedesktopThumbnailCache::store(path, foreign, Folder::large, {800, 600},
                                             u"image/jpeg"_s));
    QVERIFY(PreviewFixtures::similar(
        PreviewFixtures::centreColor(shownByFreshGenerator(path, {200, 150})), moss));

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(-3600),
                             QFileDevice::FileModificationTime));
    file.close();
    QVERIFY(PreviewFixtures::similar(
        PreviewFixtures::centreColor(shownByFreshGenerator(path, {200, 150})), sea));
    const QImage rewritten(FreedesktopThumbnailCache::thumbnailPath(path, Folder::large));
    QCOMPARE(rewritten.text(u"Thumb::MTime"_s),
             QString::number(QFileInfo(path).lastModified().toSecsSinceEpoch()));
}

void tst_FreedesktopThumbnailCache::largerFoldersServeSmallerRequests()
{
    const QString path
        = PreviewFixtures::makePicture(dir.path(), u"field.jpg"_s, {2000, 1500}, Qt::darkGreen);
    QImage big(1024, 768, QImage::Format_RGB32);
    big.fill(Qt::yellow);
    QVERIFY(FreedesktopThumbnailCache::store(path, big, Folder::xxLarge, {2000, 1500}, {}));
    QCOMPARE(FreedesktopThumbnailCache::lookup(path, {200, 150}).size(), QSize(1024, 768));
    QVERIFY(FreedesktopThumbnailCache::lookup(path, {1100, 800}).isNull());
    // Too large for a folder, and a thumbnail of a picture that was smaller than its folder.
    QVERIFY(!FreedesktopThumbnailCache::store(path, big, Folder::xLarge, {2000, 1500}, {}));
    const QString small
        = PreviewFixtures::makePicture(dir.path(), u"stamp.png"_s, {90, 60}, Qt::darkRed);
    QVERIFY(FreedesktopThumbnailCache::store(small, QImage(small), Folder::xLarge, {90, 60}, {}));
    QCOMPARE(FreedesktopThumbnailCache::lookup(small, {400, 300}).size(), QSize(90, 60));
}

void tst_FreedesktopThumbnailCache::refusesToThumbnailTheCacheItself()
{
    const QString path
        = PreviewFixtures::makePicture(dir.path(), u"pier.jpg"_s, {300, 200}, Qt::gray);
    QVERIFY(!shownByFreshGenerator(path, {100, 100}).isNull());
    const QString stored = FreedesktopThumbnailCache::thumbnailPath(path, Folder::normal);
    QVERIFY(QFileInfo::exists(stored));
    QVERIFY(!FreedesktopThumbnailCache::store(stored, QImage(stored), Folder::normal, {}, {}));
}

QTEST_MAIN(tst_FreedesktopThumbnailCache)
#include "tst_FreedesktopThumbnailCache.moc"
