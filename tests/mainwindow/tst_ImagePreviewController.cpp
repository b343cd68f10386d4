#include "PreviewFixtures.h"
#include "TestSupport.h"
#include "mainwindow/preview/ImagePreviewController.h"
#include "mainwindow/preview/ImagePreviewDisplay.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using Policy = ImagePreviewLayoutPolicy;
using Mode = ImagePreviewDisplayMode;

Q_DECLARE_METATYPE(ImagePreviewLayoutPolicy)
Q_DECLARE_METATYPE(ImagePreviewDisplayMode)

namespace {

struct RecordingDisplay : ImagePreviewDisplay
{
    QSizeF previewBounds() const override { return bounds; }
    void updateSingleModeDisplay() override { }
    void updateGridModeDisplay() override { }
    void updateControlsVisibility() override { }
    void updateImageView(int index, const QImage &image) override { images.insert(index, image); }

    QSizeF bounds {600, 400};
    QHash<int, QImage> images;
};

// A selection variable that keeps what it is given without announcing it, to tell the
// controller's own change of index from the one that comes back through the listener.
struct HeldSelection : ReadWriteVariableType<int>
{
    int value() const override { return held; }
    void setValue(const int &value) override { held = value; }
    void addHotListener(VariableListener<int> listener) override
    {
        listeners.push_back(listener);
        listener(held);
    }
    void addColdListener(VariableListener<int> listener) override { listeners.push_back(listener); }
    void announce()
    {
        for (const auto &listener : listeners)
            listener(held);
    }
    int held = 0;
    std::vector<VariableListener<int>> listeners;
};

} // namespace

class tst_ImagePreviewController : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void layoutFollowsPolicyAndCount_data();
    void layoutFollowsPolicyAndCount();
    void newSelectionStartsByPolicy();
    void gridPagesAndSingleSteps();
    void currentFileSurvivesANewList();
    void boundSelectionChangesIndexThroughItsListener();
    void resultForAPathThatLeftIsDropped();
    void viewWithoutSizeAsksForNothing();
    void newListCancelsWorkInFlight();
    void growingAreaMakesSharperThumbnails();

private:
    QStringList pictures(int count)
    {
        QStringList paths;
        for (int i = 0; i < count; ++i)
            paths << PreviewFixtures::makePicture(dir.path(), u"p%1.jpg"_s.arg(i), {320, 240},
                                                  QColor::fromHsv((i * 47) % 360, 160, 200));
        return paths;
    }
    static std::shared_ptr<ImagePreviewController> controllerWith(Policy policy,
                                                                  RecordingDisplay &display)
    {
        ImagePreviewConfiguration configuration;
        configuration.layoutPolicy = policy;
        auto controller = ImagePreviewController::create(configuration);
        controller->setDisplay(&display);
        return controller;
    }

    QTemporaryDir dir;
    QTemporaryDir cacheHome;
    QStringList many;
};

void tst_ImagePreviewController::initTestCase()
{
    QVERIFY(dir.isValid() && cacheHome.isValid());
    qputenv("XDG_CACHE_HOME", QFile::encodeName(cacheHome.path()));
    many = pictures(14);
}

void tst_ImagePreviewController::layoutFollowsPolicyAndCount_data()
{
    QTest::addColumn<Policy>("policy");
    QTest::addColumn<int>("maxColumns");
    QTest::addColumn<int>("count");
    QTest::addColumn<Mode>("mode");
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("rows");
    QTest::newRow("manual, one file") << Policy::manual << 3 << 1 << Mode::single << 0 << 0;
    QTest::newRow("manual, two files") << Policy::manual << 3 << 2 << Mode::grid << 3 << 2;
    QTest::newRow("manual, no columns") << Policy::manual << 0 << 9 << Mode::grid << 1 << 2;
    QTest::newRow("automatic, none")
        << Policy::automaticSelectionCount << 3 << 0 << Mode::single << 0 << 0;
    QTest::newRow("automatic, 2") << Policy::automaticSelectionCount << 3 << 2 << Mode::grid << 2
                                  << 1;
    QTest::newRow("automatic, 3") << Policy::automaticSelectionCount << 3 << 3 << Mode::grid << 3
                                  << 1;
    QTest::newRow("automatic, 4") << Policy::automaticSelectionCount << 3 << 4 << Mode::grid << 2
                                  << 2;
    QTest::newRow("automatic, 5") << Policy::automaticSelectionCount << 3 << 5 << Mode::grid << 3
                                  << 2;
    QTest::newRow("automatic, 500")
        << Policy::automaticSelectionCount << 3 << 500 << Mode::grid << 3 << 2;
}

void tst_ImagePreviewController::layoutFollowsPolicyAndCount()
{
    QFETCH(Policy, policy);
    QFETCH(int, maxColumns);
    QFETCH(int, count);
    QFETCH(Mode, mode);
    QFETCH(int, columns);
    QFETCH(int, rows);
    ImagePreviewConfiguration configuration;
    configuration.layoutPolicy = policy;
    configuration.maxColumns = maxColumns;
    const auto layout = ImagePreviewController::resolveOverviewLayout(configuration, count);
    QCOMPARE(layout.mode, mode);
    if (mode == Mode::grid)
        QCOMPARE(layout.gridLayout, (ImagePreviewGridLayout {columns, rows}));
}

// Under manual a new list starts with one image whatever its length; the toggle shows the
// configured grid. Under automatic the grid's shape follows the list.
void tst_ImagePreviewController::newSelectionStartsByPolicy()
{
    RecordingDisplay display;
    const auto manual = controllerWith(Policy::manual, display);
    manual->setFilePaths(many.mid(0, 5));
    QCOMPARE(manual->displayMode(), Mode::single);
    manual->toggleGridMode();
    QCOMPARE(manual->displayMode(), Mode::grid);
    QCOMPARE(manual->activeGridLayout(), (ImagePreviewGridLayout {3, 2}));
    manual->setFilePaths(many.mid(0, 4));
    QCOMPARE(manual->displayMode(), Mode::single);

    const auto automatic = controllerWith(Policy::automaticSelectionCount, display);
    automatic->setFilePaths(many.mid(0, 2));
    QCOMPARE(automatic->displayMode(), Mode::grid);
    QCOMPARE(automatic->activeGridLayout(), (ImagePreviewGridLayout {2, 1}));
}

void tst_ImagePreviewController::gridPagesAndSingleSteps()
{
    RecordingDisplay display;
    const auto controller = controllerWith(Policy::automaticSelectionCount, display);
    controller->setFilePaths(many); // 14 files: pages 0 to 2 of six
    controller->navigateForward();
    controller->navigateForward();
    QCOMPARE(controller->gridPageIndex(), 2);
    QCOMPARE(controller->gridPageIndices(), QList<int>({12, 13}));
    QVERIFY(!controller->forwardEnabled());
    controller->navigateForward();
    QCOMPARE(controller->gridPageIndex(), 2);
    controller->navigateBackward();
    QCOMPARE(controller->gridPageIndex(), 1);
    QVERIFY(controller->backEnabled());
    QCOMPARE(controller->currentIndex(), 0); // paging leaves the selection alone

    controller->toggleGridMode();
    QCOMPARE(controller->displayMode(), Mode::single);
    QVERIFY(!controller->backEnabled());
    controller->navigateBackward();
    QCOMPARE(controller->currentIndex(), 0);
    controller->navigateForward();
    QCOMPARE(controller->currentIndex(), 1);
    controller->setSelectedIndex(13);
    QVERIFY(!controller->forwardEnabled());
    controller->navigateForward();
    QCOMPARE(controller->currentIndex(), 13);
    // Back to the grid, on the page of the current file.
    controller->toggleGridMode();
    QCOMPARE(controller->gridPageIndex(), 2);
}

void tst_ImagePreviewController::currentFileSurvivesANewList()
{
    RecordingDisplay display;
    const auto controller = controllerWith(Policy::manual, display);
    controller->setFilePaths(many.mid(0, 3));
    controller->setSelectedIndex(2);
    controller->setFilePaths({many[7], many[2], many[8]});
    QCOMPARE(controller->currentIndex(), 1);
    controller->setFilePaths({many[9], many[10]});
    QCOMPARE(controller->currentIndex(), 0);
    controller->setFilePaths({});
    QCOMPARE(controller->currentIndex(), 0);
    QVERIFY(controller->items().isEmpty());
    controller->setSelectedIndex(0); // out of range in an empty list: ignored
    QCOMPARE(controller->currentIndex(), 0);
}

void tst_ImagePreviewController::boundSelectionChangesIndexThroughItsListener()
{
    RecordingDisplay display;
    const auto controller = controllerWith(Policy::manual, display);
    const auto paths = std::make_shared<StraightVariable<QStringList>>(many.mid(0, 4));
    const auto selection = std::make_shared<HeldSelection>();
    controller->bindPaths(paths);
    controller->bindSelection(selection);
    QCOMPARE(controller->items().size(), 4);

    controller->setSelectedIndex(3);
    QCOMPARE(selection->held, 3);
    QCOMPARE(controller->currentIndex(), 0);
    selection->announce();
    QCOMPARE(controller->currentIndex(), 3);
    controller->setSelectedIndex(9);
    QCOMPARE(selection->held, 3);

    paths->setValue(many.mid(3, 2));
    QCOMPARE(controller->items().first().path, many[3]);
    QCOMPARE(controller->currentIndex(), 0);
}

void tst_ImagePreviewController::resultForAPathThatLeftIsDropped()
{
    RecordingDisplay display;
    display.bounds = {};
    const auto controller = controllerWith(Policy::manual, display);
    controller->setFilePaths(many.mid(0, 2));
    QImage picture(10, 10, QImage::Format_RGB32);
    controller->thumbnailGenerator(controller->thumbnailGenerator(),
                                   {1, many[5], picture, QUuid::createUuid(), true});
    QVERIFY(display.images.isEmpty());
    QVERIFY(!controller->items()[1].thumbnail);

    controller->thumbnailGenerator(controller->thumbnailGenerator(),
                                   {1, many[1], std::nullopt, QUuid::createUuid(), false});
    QVERIFY(display.images.contains(1));
    QVERIFY(controller->items()[1].loadFailed);
    controller->thumbnailGenerator(controller->thumbnailGenerator(),
                                   {2, many[1], picture, QUuid::createUuid(), true});
    QCOMPARE(display.images.size(), 1);
}

void tst_ImagePreviewController::viewWithoutSizeAsksForNothing()
{
    RecordingDisplay display;
    display.bounds = {};
    const auto controller = controllerWith(Policy::automaticSelectionCount, display);
    controller->setFilePaths(many.mid(0, 3));
    QVERIFY(controller->pendingThumbnailRequests().isEmpty());
    QCOMPARE(controller->thumbnailGenerator().pendingRequestCount(), 0);
    QTest::qWait(100);
    QVERIFY(display.images.isEmpty());

    display.bounds = {600, 400};
    controller->redisplay();
    QVERIFY(TestSupport::waitUntil([&] { return display.images.size() == 3; }));
    QVERIFY(controller->pendingThumbnailRequests().isEmpty());
    for (const ImagePreviewItem &item : controller->items())
        QVERIFY(item.thumbnail && !item.isLoading && !item.loadFailed);
}

void tst_ImagePreviewController::newListCancelsWorkInFlight()
{
    RecordingDisplay display;
    const auto controller = controllerWith(Policy::automaticSelectionCount, display);
    controller->setFilePaths(many.mid(0, 6));
    controller->setFilePaths({many[10]});
    QCOMPARE(controller->pendingThumbnailRequests().size(), 1);
    QVERIFY(controller->thumbnailGenerator().pendingRequestCount() <= 1);
    QVERIFY(TestSupport::waitUntil([&] { return controller->items()[0].thumbnail.has_value(); }));
    controller->thumbnailGenerator().operationQueue().waitUntilAllOperationsAreFinished();
    QTest::qWait(50);
    QCOMPARE(display.images.keys(), QList<int>({0}));
}

void tst_ImagePreviewController::growingAreaMakesSharperThumbnails()
{
    RecordingDisplay display;
    const auto controller = controllerWith(Policy::automaticSelectionCount, display);
    controller->setFilePaths(many.mid(0, 4));
    QVERIFY(TestSupport::waitUntil([&] { return display.images.size() == 4; }));
    const QSize cell = display.images[0].size();
    display.images.clear();
    controller->gridCellClicked(0);
    QVERIFY(TestSupport::waitUntil(
        [&] { return display.images.contains(0) && display.images[0].width() > cell.width(); }));
    QCOMPARE(display.images[0].size(), QSize(320, 240));
}

QTEST_MAIN(tst_ImagePreviewController)
#include "tst_ImagePreviewController.moc"
