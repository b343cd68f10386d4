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

// A generator and the results its delegate was given.
struct Run : ThumbnailGeneratorDelegate
{
    static std::shared_ptr<Run> make(int width, int cacheSize)
    {
        auto run = std::make_shared<Run>();
        run->generator = ThumbnailGenerator::create(width, cacheSize);
        run->generator->setDelegate(run);
        return run;
    }
    void thumbnailGenerator(ThumbnailGenerator &, const ThumbnailResult &result) override
    {
        results.append(result);
    }
    QUuid ask(const QString &path, int index = 0, const QSizeF &size = {50, 50})
    {
        return generator->requestThumbnail(ImagePreviewItem(path), index, size);
    }
    bool waitFor(int count)
    {
        return TestSupport::waitUntil([&] { return results.size() >= count; });
    }
    std::shared_ptr<ThumbnailGenerator> generator;
    QList<ThumbnailResult> results;
};

// A named pipe posing as a picture: the worker blocks reading it until the test lets it go,
// which holds a one-wide queue at a known point.
class Gate
{
public:
    explicit Gate(const QString &directory)
        : path(directory + u"/gate%1.jpg"_s.arg(++made))
    {
        ::mkfifo(QFile::encodeName(path).constData(), 0600);
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        QImage(8, 8, QImage::Format_RGB32).save(&buffer, "JPEG");
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
        ::fcntl(m_fd, F_SETFL, ::fcntl(m_fd, F_GETFL) & ~O_NONBLOCK);
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
    const auto run = Run::make(2, 6);
    const QString path = picture(u"hit.png"_s);
    run->ask(path);
    QVERIFY(run->waitFor(1));
    const QUuid id = run->ask(path, 4);
    QCOMPARE(run->results.size(), 2);
    const ThumbnailResult &hit = run->results.last();
    QCOMPARE(hit.requestId, id);
    QCOMPARE(hit.index, 4);
    QVERIFY(hit.success && hit.image);
    QCOMPARE(run->generator->pendingRequestCount(), 0);
}

void tst_ThumbnailGenerator::pathInFlightTwiceStartsTwoRequests()
{
    const auto run = Run::make(1, 6);
    Gate gate(dir.path());
    run->ask(gate.path);
    const QString path = picture(u"twice.png"_s);
    const QUuid first = run->ask(path, 1);
    const QUuid second = run->ask(path, 1);
    QCOMPARE(run->generator->pendingRequestCount(), 3);
    QVERIFY(gate.waitUntilEntered());
    gate.release();
    QVERIFY(run->waitFor(3));
    QCOMPARE(run->results[1].requestId, first);
    QCOMPARE(run->results[2].requestId, second);
}

// Through a one-wide queue with room for two: the gate, A, B, A. The second A replaces the
// first and becomes the most recent; B pushed out the gate. A hit refreshes B; C then pushes out
// the oldest, A. With room for one, each new path evicts the one before.
void tst_ThumbnailGenerator::cacheKeepsRecentPathsByCount()
{
    const auto run = Run::make(1, 2);
    const QString a = picture(u"a.png"_s), b = picture(u"b.png"_s), c = picture(u"c.png"_s);
    Gate gate(dir.path());
    run->ask(gate.path);
    for (const QString &path : {a, b, a})
        run->ask(path, 1);
    QVERIFY(gate.waitUntilEntered());
    gate.release();
    QVERIFY(run->waitFor(4));
    QCOMPARE(run->generator->cacheAccessOrder(), QStringList({b, a}));
    QVERIFY(run->generator->getCachedThumbnail(b));
    QCOMPARE(run->generator->cacheAccessOrder(), QStringList({a, b}));
    run->ask(c, 2);
    QVERIFY(run->waitFor(5));
    QCOMPARE(run->generator->cacheAccessOrder(), QStringList({b, c}));
    QVERIFY(!run->generator->getCachedThumbnail(a));

    const auto single = Run::make(1, 1);
    single->ask(a);
    QVERIFY(single->waitFor(1));
    single->ask(b);
    QVERIFY(single->waitFor(2));
    QCOMPARE(single->generator->cacheAccessOrder(), QStringList({b}));
}

// The running request finds its id gone at its second check; the queued ones never run.
void tst_ThumbnailGenerator::cancellationDropsQueuedAndRunningWork()
{
    const auto run = Run::make(1, 6);
    Gate gate(dir.path());
    run->ask(gate.path);
    run->ask(picture(u"queued1.png"_s), 1);
    run->ask(picture(u"queued2.png"_s), 2);
    QVERIFY(gate.waitUntilEntered());
    run->generator->cancelAllRequests();
    QCOMPARE(run->generator->pendingRequestCount(), 0);
    gate.release();
    run->generator->operationQueue().waitUntilAllOperationsAreFinished();
    QTest::qWait(50);
    QVERIFY(run->results.isEmpty());
    QVERIFY(run->generator->cacheAccessOrder().isEmpty());
}

void tst_ThumbnailGenerator::fileRemovedAfterQueuingFails()
{
    const auto run = Run::make(1, 6);
    Gate gate(dir.path());
    run->ask(gate.path);
    const QString path = picture(u"vanishing.png"_s);
    run->ask(path, 1);
    QVERIFY(gate.waitUntilEntered());
    QVERIFY(QFile::remove(path));
    gate.release();
    QVERIFY(run->waitFor(2));
    const ThumbnailResult &vanished = run->results.last();
    QCOMPARE(vanished.path, path);
    QVERIFY(!vanished.success);
    QVERIFY(!vanished.image);
}

// Whatever the file, there is something to show: the picture fitted without enlarging it,
// else the icon of its type in a bitmap of the whole target.
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

    const auto run = Run::make(1, 6);
    run->ask(path, 0, {120, 80});
    QVERIFY(run->waitFor(1));
    const ThumbnailResult &result = run->results.first();
    QVERIFY(result.success);
    QVERIFY(result.image && !result.image->isNull());
    QCOMPARE(result.image->size(), expectedPixels);
}

void tst_ThumbnailGenerator::thumbnailsAreRoundedAndOutlined()
{
    const auto run = Run::make(1, 6);
    run->ask(picture(u"red.png"_s, {100, 100}, QColor(220, 30, 30)), 0, {100, 100});
    QVERIFY(run->waitFor(1));
    const QImage image = *run->results.first().image;
    QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
    const QColor edge = image.pixelColor(50, 0);
    QVERIFY2(edge.red() < 90 && edge.alpha() > 200, qPrintable(edge.name(QColor::HexArgb)));
    QVERIFY(PreviewFixtures::similar(PreviewFixtures::centreColor(image), QColor(220, 30, 30)));
}

void tst_ThumbnailGenerator::vanishedDelegateLeavesTheResultCached()
{
    auto run = Run::make(1, 6);
    const std::shared_ptr<ThumbnailGenerator> generator = run->generator;
    const QString path = picture(u"orphan.png"_s);
    run->ask(path);
    run.reset();
    generator->operationQueue().waitUntilAllOperationsAreFinished();
    QTest::qWait(20);
    QVERIFY(generator->getCachedThumbnail(path));
}

QTEST_MAIN(tst_ThumbnailGenerator)
#include "tst_ThumbnailGenerator.moc"
