#include "PreviewFixtures.h"
#include "TestSupport.h"
#include "bricks/Assembly.h"
#include "mainwindow/preview/ControlsOverlayView.h"
#include "mainwindow/preview/ImagePreview.h"
#include "mainwindow/preview/ImagePreviewPopover.h"
#include "mainwindow/preview/ImagePreviewPopoverViewController.h"
#include "mainwindow/preview/ImagePreviewView.h"
#include "mainwindow/preview/NonExpandingImageView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QEnterEvent>
#include <QFileInfo>
#include <QFrame>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;
namespace B = BuildDirectivesNamespace;

namespace {

// An image preview built from its directive, bound to a list and a selection, in a window.
struct Harness
{
    Harness(ImagePreviewLayoutPolicy policy, const QStringList &files)
    {
        ImagePreviewConfiguration configuration;
        configuration.layoutPolicy = policy;
        assembly = build({B::ImagePreview(configuration, paths, selection)});
        assembly->activate();
        view = qobject_cast<ImagePreviewView *>(assembly->view());
        auto *layout = new QVBoxLayout(&window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(view);
        window.resize(600, 400);
        window.show();
        paths->setValue(files);
    }

    bool waitForImages() const
    {
        return TestSupport::waitUntil([this] {
            const auto views = view->imageViews();
            return !views.isEmpty()
                && std::all_of(views.begin(), views.end(),
                               [](NonExpandingImageView *v) { return v->hasImage(); });
        });
    }

    std::shared_ptr<StraightVariable<QStringList>> paths
        = std::make_shared<StraightVariable<QStringList>>();
    std::shared_ptr<StraightVariable<int>> selection = std::make_shared<StraightVariable<int>>();
    std::shared_ptr<Assembly> assembly;
    QWidget window;
    ImagePreviewView *view = nullptr;
};

void keep(const QImage &screenshot, const QString &name)
{
    const QString folder = qEnvironmentVariable("PALOMET_SCREENSHOT_DIR");
    if (!folder.isEmpty())
        screenshot.save(QDir(folder).filePath(name));
}

QPalette darkPalette()
{
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(38, 38, 40));
    dark.setColor(QPalette::WindowText, QColor(230, 230, 230));
    dark.setColor(QPalette::Base, QColor(28, 28, 30));
    dark.setColor(QPalette::Text, QColor(230, 230, 230));
    dark.setColor(QPalette::Button, QColor(58, 58, 60));
    dark.setColor(QPalette::ButtonText, QColor(235, 235, 235));
    dark.setColor(QPalette::Highlight, QColor(10, 132, 255));
    dark.setColor(QPalette::PlaceholderText, QColor(140, 140, 140));
    dark.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(120, 120, 120));
    return dark;
}

} // namespace

class tst_ImagePreviewView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void gridShowsTheFilesOfThePage();
    void clickOnACellShowsThatFileAlone();
    void arrowKeysPageTheGridAndStepTheImage();
    void stackIndicatorHintsAtFurtherFiles_data();
    void stackIndicatorHintsAtFurtherFiles();
    void controlsFadeWhileTheMouseIsInside();
    void popoverShowsTheFileLarger();
    void screenshotsInLightAndDarkThemes();

private:
    QColor colorOf(int i) const { return QColor::fromHsv((i * 53) % 360, 170, 210); }

    QTemporaryDir dir;
    QTemporaryDir cacheHome;
    QStringList files;
};

void tst_ImagePreviewView::initTestCase()
{
    QVERIFY(dir.isValid() && cacheHome.isValid());
    qputenv("XDG_CACHE_HOME", QFile::encodeName(cacheHome.path()));
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    for (int i = 0; i < 14; ++i)
        files << PreviewFixtures::makePicture(
            dir.path(), u"photo-%1.jpg"_s.arg(i, 2, 10, QChar(u'0')),
            i % 3 == 1 ? QSize(480, 640) : QSize(640, 480), colorOf(i));
}

void tst_ImagePreviewView::cleanupTestCase()
{
    QVERIFY(ThumbnailGenerator::waitForWorkInFlight(30000));
}

void tst_ImagePreviewView::gridShowsTheFilesOfThePage()
{
    Harness h(ImagePreviewLayoutPolicy::automaticSelectionCount, files.mid(0, 5));
    QVERIFY(h.waitForImages());
    const auto cells = h.view->imageViews();
    QCOMPARE(cells.size(), 5);
    // Three by two, with an outer margin of 8 and gaps of 4.
    QCOMPARE(cells[0]->geometry(), QRect(8, 8, 192, 190));
    QCOMPARE(cells[4]->geometry(), QRect(204, 202, 192, 190));
    const QImage shot = h.view->grab().toImage();
    for (int i = 0; i < cells.size(); ++i) {
        const QColor seen = shot.pixelColor(cells[i]->geometry().center());
        QVERIFY2(PreviewFixtures::similar(seen, colorOf(i)), qPrintable(seen.name()));
        QCOMPARE(cells[i]->toolTip(), QFileInfo(files[i]).fileName());
    }
}

void tst_ImagePreviewView::clickOnACellShowsThatFileAlone()
{
    Harness h(ImagePreviewLayoutPolicy::automaticSelectionCount, files.mid(0, 5));
    QVERIFY(h.waitForImages());
    QTest::mouseClick(h.view->imageViews()[3], Qt::LeftButton);
    QCOMPARE(h.view->controller().displayMode(), ImagePreviewDisplayMode::single);
    QCOMPARE(h.selection->value(), 3);
    QCOMPARE(h.view->controller().currentIndex(), 3);
    QVERIFY(h.waitForImages());
    NonExpandingImageView *single = h.view->singleImageView();
    QVERIFY(single);
    QCOMPARE(single->geometry(), QRect(8, 8, 584, 384));
    const QColor seen = h.view->grab().toImage().pixelColor(single->geometry().center());
    QVERIFY(PreviewFixtures::similar(seen, colorOf(3)));
}

// The keys reach the same paging as the controls: pages in the grid, files alone.
void tst_ImagePreviewView::arrowKeysPageTheGridAndStepTheImage()
{
    Harness h(ImagePreviewLayoutPolicy::automaticSelectionCount, files);
    QTest::keyClick(h.view, Qt::Key_Right);
    QCOMPARE(h.view->controller().gridPageIndex(), 1);
    QCOMPARE(h.view->imageViews().first()->previewIndex(), 6);
    QTest::keyClick(h.view, Qt::Key_Left);
    QCOMPARE(h.view->controller().gridPageIndex(), 0);

    QTest::mouseClick(h.view->controlsContainer()->gridToggleButton(), Qt::LeftButton);
    QCOMPARE(h.view->controller().displayMode(), ImagePreviewDisplayMode::single);
    QTest::keyClick(h.view, Qt::Key_Right);
    QCOMPARE(h.selection->value(), 1);
    QCOMPARE(h.view->singleImageView()->previewIndex(), 1);
    QTest::keyClick(h.view, Qt::Key_Left);
    QCOMPARE(h.selection->value(), 0);
}

void tst_ImagePreviewView::stackIndicatorHintsAtFurtherFiles_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("layers");
    QTest::newRow("one file") << 1 << 0;
    QTest::newRow("two files") << 2 << 1;
    QTest::newRow("many files") << 7 << 2;
}

void tst_ImagePreviewView::stackIndicatorHintsAtFurtherFiles()
{
    QFETCH(int, count);
    QFETCH(int, layers);
    Harness h(ImagePreviewLayoutPolicy::manual, files.mid(0, count));
    QVERIFY(h.waitForImages());
    const auto stack = h.view->stackIndicatorViews();
    QCOMPARE(stack.size(), layers);
    const QRectF drawn = h.view->singleImageView()->displayedImageRect().translated(
        h.view->singleImageView()->pos());
    for (int i = 0; i < stack.size(); ++i) {
        QVERIFY(stack[i]->isVisible());
        const double step = ImagePreviewView::stackStep * (i + 1);
        QCOMPARE(stack[i]->geometry(), drawn.translated(step, -step).toRect());
    }
}

void tst_ImagePreviewView::controlsFadeWhileTheMouseIsInside()
{
    Harness h(ImagePreviewLayoutPolicy::manual, files.mid(0, 3));
    ControlsOverlayView *controls = h.view->controlsContainer();
    QVERIFY(controls->isVisible());
    QCOMPARE(controls->alphaValue(), 0.0);
    QEnterEvent enter(QPointF(50, 50), QPointF(50, 50), h.view->mapToGlobal(QPointF(50, 50)));
    QApplication::sendEvent(h.view, &enter);
    QVERIFY(TestSupport::waitUntil([&] { return controls->alphaValue() == 1.0; }, 2000));
    QVERIFY(!controls->backButton()->isEnabled());
    QVERIFY(controls->forwardButton()->isEnabled());
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(h.view, &leave);
    QVERIFY(TestSupport::waitUntil([&] { return controls->alphaValue() == 0.0; }, 2000));

    h.paths->setValue({files[0]});
    QVERIFY(!controls->isVisible());
}

void tst_ImagePreviewView::popoverShowsTheFileLarger()
{
    Harness h(ImagePreviewLayoutPolicy::manual, files.mid(0, 3));
    QVERIFY(h.waitForImages());
    QTest::mouseClick(h.view->singleImageView(), Qt::LeftButton);
    ImagePreviewPopover *popover = h.view->previewPopover();
    QVERIFY(popover);
    QVERIFY(popover->popover()->isVisible());
    ImagePreviewPopoverViewController *content = popover->contentViewController();
    QCOMPARE(content->view()->size(), QSize(616, 448));
    QCOMPARE(content->title(), QFileInfo(files[0]).fileName());
    QVERIFY(TestSupport::waitUntil([&] {
        return content->imageView()->hasImage()
            && content->imageView()->displayedImageRect().width() > 500;
    }));
    QVERIFY(!content->backButton()->isEnabled());

    QTest::mouseClick(content->forwardButton(), Qt::LeftButton);
    QCOMPARE(h.selection->value(), 1);
    QCOMPARE(content->title(), QFileInfo(files[1]).fileName());
    QCOMPARE(h.view->singleImageView()->previewIndex(), 1);

    QTest::keyClick(content->view(), Qt::Key_Escape);
    QVERIFY(!popover->popover()->isVisible());
    QVERIFY(TestSupport::waitUntil([&] { return h.view->previewPopover() == nullptr; }));
}

// Saved when PALOMET_SCREENSHOT_DIR names a folder; checked here for pictures in their places.
void tst_ImagePreviewView::screenshotsInLightAndDarkThemes()
{
    const QPalette light = QApplication::palette();
    for (const QString &theme : {u"light"_s, u"dark"_s}) {
        QApplication::setPalette(theme == u"dark"_s ? darkPalette() : light);
        Harness h(ImagePreviewLayoutPolicy::automaticSelectionCount, files.mid(0, 5));
        QVERIFY(h.waitForImages());
        QEnterEvent enter(QPointF(50, 50), QPointF(50, 50), h.view->mapToGlobal(QPointF(50, 50)));
        QApplication::sendEvent(h.view, &enter);
        QVERIFY(TestSupport::waitUntil(
            [&] { return h.view->controlsContainer()->alphaValue() == 1.0; }, 2000));
        keep(h.window.grab().toImage(), u"preview-grid-%1.png"_s.arg(theme));

        QTest::mouseClick(h.view->imageViews()[1], Qt::LeftButton);
        QVERIFY(h.waitForImages());
        const QImage single = h.window.grab().toImage();
        keep(single, u"preview-single-%1.png"_s.arg(theme));
        QVERIFY(PreviewFixtures::similar(single.pixelColor(300, 200), colorOf(1)));

        QTest::mouseClick(h.view->singleImageView(), Qt::LeftButton);
        ImagePreviewPopover *popover = h.view->previewPopover();
        QVERIFY(popover);
        QVERIFY(TestSupport::waitUntil([&] {
            return popover->contentViewController()->imageView()->displayedImageRect().height()
                > 390;
        }));
        const QImage large = popover->popover()->grab().toImage();
        keep(large, u"preview-popover-%1.png"_s.arg(theme));
        QVERIFY(PreviewFixtures::similar(large.pixelColor(large.width() / 2, 240), colorOf(1)));
        popover->close();
    }
    QApplication::setPalette(light);
}

QTEST_MAIN(tst_ImagePreviewView)
#include "tst_ImagePreviewView.moc"
