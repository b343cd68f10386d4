#include "commons/NiblessViewController.h"

#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>
#include <QtTest>

namespace {

class PaneController : public NiblessViewController
{
public:
    explicit PaneController(DelayedBuild delayedBuild)
        : NiblessViewController(delayedBuild)
    { }

    int builds = 0;
    QStringList events;

protected:
    QWidget *build() override
    {
        ++builds;
        return new QLabel(QStringLiteral("pane"));
    }
    void viewDidAppear() override { events.append(QStringLiteral("appear")); }
    void viewDidDisappear() override { events.append(QStringLiteral("disappear")); }
};

} // namespace

class tst_NiblessViewController : public QObject
{
    Q_OBJECT

private slots:
    void buildsAtOnceOrWhenAsked_data();
    void buildsAtOnceOrWhenAsked();
    void buildFunctionMakesTheView();
    void appearsWithItsWindow();
    void ownsItsView();
};

void tst_NiblessViewController::buildsAtOnceOrWhenAsked_data()
{
    QTest::addColumn<bool>("delayed");
    QTest::newRow("at once") << false;
    QTest::newRow("delayed") << true;
}

void tst_NiblessViewController::buildsAtOnceOrWhenAsked()
{
    QFETCH(bool, delayed);
    auto controller = NiblessViewController::make<PaneController>(delayed ? DelayedBuild::Yes
                                                                          : DelayedBuild::No);
    QCOMPARE(controller->builds, delayed ? 0 : 1);
    QCOMPARE(controller->isViewLoaded(), !delayed);
    QCOMPARE(controller->view() == nullptr, delayed);

    QWidget *view = controller->buildIfNeeded();
    QVERIFY(qobject_cast<QLabel *>(view));
    QCOMPARE(controller->buildIfNeeded(), view);
    QCOMPARE(controller->view(), view);
    QCOMPARE(controller->builds, 1);
}

void tst_NiblessViewController::buildFunctionMakesTheView()
{
    NiblessViewController *seen = nullptr;
    auto controller = NiblessViewController::make([&](NiblessViewController &self) -> QWidget * {
        seen = &self;
        return new QLabel(QStringLiteral("made by the function"));
    });
    QCOMPARE(seen, controller.get());
    QCOMPARE(qobject_cast<QLabel *>(controller->view())->text(), "made by the function");
}

void tst_NiblessViewController::appearsWithItsWindow()
{
    auto controller = NiblessViewController::make<PaneController>(DelayedBuild::No);
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    layout->addWidget(controller->view());
    QVERIFY(controller->events.isEmpty());

    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.hide();
    window.show();
    QCOMPARE(controller->events, QStringList({"appear", "disappear", "appear"}));
    layout->removeWidget(controller->view());
}

void tst_NiblessViewController::ownsItsView()
{
    auto controller = NiblessViewController::make<PaneController>(DelayedBuild::No);
    QPointer<QWidget> view = controller->view();
    controller.reset();
    QVERIFY(view.isNull());

    // A view that its parent deleted first is not deleted again.
    controller = NiblessViewController::make<PaneController>(DelayedBuild::No);
    auto *parent = new QWidget;
    controller->view()->setParent(parent);
    delete parent;
    QCOMPARE(controller->view(), nullptr);
    controller.reset();
}

QTEST_MAIN(tst_NiblessViewController)
#include "tst_NiblessViewController.moc"
