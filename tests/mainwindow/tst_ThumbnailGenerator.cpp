#include "Fixtures.h"
#include "PreviewFixtures.h"
#include "TestSupport.h"
#include "mainwindow/preview/ThumbnailGenerator.h"

#include <QBuffer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

struct RecordingDelegate : ThumbnailGeneratorDelegate
{
    void thumbnailGenerator(ThumbnailGenerator &, const ThumbnailResult &result) override
    {
        results.append(result);
    }
    QList<ThumbnailResult> results;
};

// A named pipe posing as a picture: the generator's worker blocks reading it until the test
// lets it go, which holds a one-wide queue at a known point.
class Gate
{
public:
    Gate(const QString &directory, const QImage &picture)
        : path(directory + u"/gate%1.jpg"_s.arg(++made))
    {
        ::mkfifo(QFile::encodeName(path).constData(), 0600);
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        picture.save(&buffer, "JPEG");
    }
    ~Gate() { release(); }

    // True once the worker has opened the pipe, that is, is inside the decode.
    bool waitUntilEntered()
    {
        return TestSupport::waitUntil([this] {
            m_fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_NONBLOCK);
            return m_fd >= 0;
        });
    }
    void release()
    {
        if (m_fd < 0)
            return;
        const int flags = ::fcntl(m_fd, F_GETFL);
        ::fcntl(m_fd, F_SETFL, flags & ~O_NONBLOCK);
        [[maybe_unused]] const auto written
            = ::write(m_fd, bytes.constData(), size_t(bytes.size()));
        ::close(m_fd);
        m_fd = -1;
    }

    const QString path;

private:
    QByteArray bytes;
    int m_fd = -1;
    static inline int made = 0;
};

} // namespace

class tst_ThumbnailGenerator : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cacheHitIsDeliveredBeforeTheCallReturns();
    void pathInFlightTwiceStartsTwoRequests();
    void cacheKeepsRecentPathsByCount();
    void singleEntryCacheEvictsThePreviousPath();
    void cancellationDropsQueuedAndRunningWork();
    void fileRemovedAfterQueuingFails();
    void chainGivesSomethingToShow_data();
    void chainGivesSomethingToShow();
    void thumbnailsAreRoundedAndOutlined();
    void vanishedDelegateLeavesTheResultCached();

private:
    QString picture(const QString &name, const QSize &size = {64, 48},
                    const QColor &color = Qt::darkCyan)
    {
        return PreviewFixtures::makePicture(dir.path(), name, size, color);
    }
    static ImagePreviewItem item(const QString &path) { return ImagePreviewItem(path); }

    QTemporaryDir dir;
    QTemporaryDir cacheHome;
};

void tst_ThumbnailGenerator::initTestCase()
{
    QVERIFY(dir.isValid() && cacheHome.isValid());
    qputenv("XDG_CACHE_HOME", QFile::encodeName(cacheHome.path()));
}

void tst_ThumbnailGenerator::cacheHitIsDeliveredBeforeTheCallReturns()
{
    const auto generator = ThumbnailGenerator::create(2, 6);
    const auto delegate = std::make_shared<RecordingDelegate>();
    generator->setDelegate(delegate);
    const QString path = picture(u"hit.png"_s);
    generator->requestThumbnail(item(path), 0, {100, 100});
    QVERIFY(TestSupport::waitUntil([&] { return delegate->results.size() == 1; }));

    const QUuid id = generator->requestThumbnail(item(path), 4, {100, 100});
    QCOMPARE(delegate->results.size(), 2);
    const ThumbnailResult &hit = delegate->results.last();
    QCOMPARE(hit.requestId, id);
    QCOMPARE(hit.index, 4);
    QVERIFY(hit.success && hit.image);
    QCOMPARE(generator->pendingRequestCount(), 0);
}

void tst_ThumbnailGenerator::pathInFlightTwiceStartsTwoRequests()
{
    const auto generator = ThumbnailGenerator::create(1, 6);
    const auto delegate = std::make_shared<RecordingDelegate>();
    generator->setDelegate(delegate);
    Gate gate(dir.path(), QImage(8, 8, QImage::Format_RGB32));
    generator->requestThumbnail(item(gate.path), 0, {50, 50});
    const QString path = picture(u"twice.png"_s);
    const QUuid first = generator->requestThumbnail(item(path), 1, {50, 50});
    const QUuid second = generator->requestThumbnail(item(path), 1, {50, 50});
    QCOMPARE(generator->pendingRequestCount(), 3);
    QVERIFY(gate.waitUntilEntered());
    gate.release();
    QVERIFY(TestSupport::waitUntil([&] { return delegate->results.size() == 3; }));
    QCOMPARE(delegate->results[1].requestId, first);
    QCOMPARE(delegate->results[2].requestId, second);
}

// A, B, A through a one-wide queue: the second A replaces the first and becomes the most recent,
// and nothing is evicted. Then a hit refreshes A's place, and C pushes out the oldest, B.
void tst_ThumbnailGenerator::cacheKeepsRecentPathsByCount()
{
    const auto generator = ThumbnailGenerator::create(1, 2);
    const auto delegate = std::make_shared<RecordingDelegate>();
    generator->setDelegate(delegate);
    const QString a = picture(u"a.png"_s), b = picture(u"b.png"_s), c = picture(u"c.png"_s);
    Gate gate(dir.path(), QImage(8, 8, QImage::Format_RGB32));
    generator->requestThumbnail(item(gate.path), 0, {50, 50});
    for (const QString &path : {a, b, a})
        generator->requestThumbnail(item(path), 1, {50, 50});
    QVERIFY(gate.waitUntilEntered());
    gate.release();
    QVERIFY(TestSupport::waitUntil([&] { return delegate->results.size() == 4; }));
    QCOMPARE(generator->cacheAccessOrder(), QStringList({b, a}));

    QVERIFY(generator->getCachedThumbnail(b));
    QCOMPARE(generator->cacheAccessOrder(), QStringList({a, b}));
    generator->requestThumbnail(item(c), 2, {50, 50});
    QVERIFY(TestSupport::waitUntil([&] { return delegate->results.size() == 5; }));
    QCOMPARE(generator->cacheAccessOrder(), QStringList({b, c}));
    QVERIFY(!generator->getCachedThumbnail(a));
}

void tst_ThumbnailGenerator::singleEntryCacheEvictsThePreviousPath()
{
    const auto generator = ThumbnailGenerator::create(1, 1);
    const auto delegate = std::make_shared<RecordingDelegate>();
    generator->setDelegate(delegate);
    const QString first = picture(u"first.png"_s), second = picture(u"second.png"_s);
    generator->requestThumbnail(item(first), 0, {50, 50});
    QVERIFY(TestSupport::waitUntil([&] { return delegate->results.size() == 1; }));
    generator->requestThumbnail(item(second), 1, {50, 50});
    QVERIFY(TestSupport::waitUntil([&] { return delegate->results.size() == 2; }));
    QCOMPARE(generator->cacheAccessOrder(), QStringList({second}));
    QVERIFY(!generator->getCachedThumbnail(first));
}

// The running request finds its id gone at its second check; the queued ones never run.
void tst_ThumbnailGenerator::cancellationDropsQueuedAndRunningWork()
{
    const auto generator = ThumbnailGenerator::create(1, 6);
    const auto delegate = std::make_shared<RecordingDelegate>();
    generator->setDelegate(delegate);
    Gate gate(dir.path(), QImage(8, 8, QImage::Format_RGB32));
    generator->requestThumbnail(item(gate.path), 0, {50, 50});
    generator->requestThumbnail(item(picture(u"queued1.png"_s)), 1, {50, 50});
    generator->requestThumbnail(item(picture(u"queued2.png"_s)), 2, {50, 50});
    QVERIFY(gate.waitUntilEntered());
    generator->cancelAllRequests();
    QCOMPARE(generator->pendingRequestCount(), 0);
    gate.release();
    generator->operationQueue().waitUntilAllOperationsAreFinished();
    QTest::qWait(50);
    QVERIFY(delegate->results.isEmpty());
    QVERIFY(generator->cacheAccessOrder().isEmpty());
}

void tst_ThumbnailGenerator::fileRemovedAfterQueuingFails()
{
    const auto generator = ThumbnailGenerator::create(1, 6);
    const auto delegate = std::make_shared<RecordingDelegate>();
    generator->setDelegate(delegate);
    Gate gate(dir.path(), QImage(8, 8, QImage::Format_RGB32));
    generator->requestThumbnail(item(gate.path), 0, {50, 50});
    const QString path = picture(u"vanishing.png"_s);
    generator->requestThumbnail(item(path), 1, {50, 50});
    QVERIFY(gate.waitUntilEntered());
    QVERIFY(QFile::remove(path));
    gate.release();
    QVERIFY(TestSupport::waitUntil([&] { return delegate->results.size() == 2; }));
    const ThumbnailResult &vanished = delegate->results.last();
    QCOMPARE(vanished.path, path);
    QVERIFY(!vanished.success);
    QVERIFY(!vanished.image);
}

// Whatever the file, there is something to show: the picture fitted without enlarging it,
// else the icon of its type drawn into the whole target.
void tst_ThumbnailGenerator::chainGivesSomethingToShow_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QSize>("expectedPixels");
    QTest::newRow("picture smaller than the target keeps its size") << u"small"_s << QSize(40, 30);
    QTest::newRow("larger picture is fitted") << u"large"_s << QSize(107, 80);
    QTest::newRow("corrupt JPEG shows its type's icon") << u"corrupt"_s << QSize(120, 80);
    QTest::newRow("unknown file shows an icon") << u"unknown"_s << QSize(120, 80);
}

void tst_ThumbnailGenerator::chainGivesSomethingToShow()
{
    QFETCH(QString, kind);
    QFETCH(QSize, expectedPixels);
    QString path;
    if (kind == u"small"_s)
        path = picture(u"small.png"_s, {40, 30});
    else if (kind == u"large"_s)
        path = picture(u"large.jpg"_s, {400, 300});
    else if (kind == u"corrupt"_s)
        path = Fixtures::makeFile(dir.path(), u"corrupt.jpg"_s,
                                  QByteArray("\xFF\xD8\xFF\xE0", 4) + QByteArray(300, 'x'));
    else
        path = Fixtures::makeFile(dir.path(), u"notes.xyz"_s, QByteArray(300, '\x07'));

    const auto generator = ThumbnailGenerator::create(1, 6);
    const auto delegate = std::make_shared<RecordingDelegate>();
    generator->setDelegate(delegate);
    generator->requestThumbnail(item(path), 0, {120, 80});
    QVERIFY(TestSupport::waitUntil([&] { return delegate->results.size() == 1; }));
    const ThumbnailResult &result = delegate->results.first();
    QVERIFY(result.success);
    QVERIFY(result.image && !result.image->isNull());
    QCOMPARE(result.image->size(), expectedPixels);
}

void tst_ThumbnailGenerator::thumbnailsAreRoundedAndOutlined()
{
    const auto generator = ThumbnailGenerator::create(1, 6);
    const auto delegate = std::make_shared<RecordingDelegate>();
    generator->setDelegate(delegate);
    const QString path = picture(u"red.png"_s, {100, 100}, QColor(220, 30, 30));
    generator->requestThumbnail(item(path), 0, {100, 100});
    QVERIFY(TestSupport::waitUntil([&] { return delegate->results.size() == 1; }));
    const QImage image = *delegate->results.first().image;
    QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
    const QColor edge = image.pixelColor(50, 0);
    QVERIFY2(edge.red() < 90 && edge.alpha() > 200, qPrintable(edge.name(QColor::HexArgb)));
    QVERIFY(PreviewFixtures::similar(PreviewFixtures::centreColor(image), QColor(220, 30, 30)));
}

void tst_ThumbnailGenerator::vanishedDelegateLeavesTheResultCached()
{
    const auto generator = ThumbnailGenerator::create(1, 6);
    auto delegate = std::make_shared<RecordingDelegate>();
    generator->setDelegate(delegate);
    const QString path = picture(u"orphan.png"_s);
    generator->requestThumbnail(item(path), 0, {50, 50});
    delegate.reset();
    generator->operationQueue().waitUntilAllOperationsAreFinished();
    QTest::qWait(20);
    QVERIFY(generator->getCachedThumbnail(path));
}

QTEST_MAIN(tst_ThumbnailGenerator)
#include "tst_ThumbnailGenerator.moc"
