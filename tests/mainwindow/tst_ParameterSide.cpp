#include "EditorTestBench.h"
#include "TestSupport.h"
#include "bricks/controls/SmartTextField.h"
#include "bricks/validation/BricksLayoutValidator.h"
#include "location/Geocoder.h"
#include "location/PinAndStepperController.h"
#include "mainwindow/editors/ParameterSide.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QPalette darkPalette()
{
    QPalette p;
    const QColor text(232, 232, 232);
    p.setColor(QPalette::Window, QColor(38, 38, 40));
    p.setColor(QPalette::Base, QColor(28, 28, 30));
    p.setColor(QPalette::AlternateBase, QColor(46, 46, 48));
    p.setColor(QPalette::Button, QColor(58, 58, 60));
    p.setColor(QPalette::Highlight, QColor(10, 95, 200));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::PlaceholderText, QColor(140, 140, 145));
    p.setColor(QPalette::ToolTipBase, QColor(58, 58, 60));
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        p.setColor(role, text);
        p.setColor(QPalette::Disabled, role, QColor(118, 118, 122));
    }
    return p;
}

// Views that a person would see cut or covered: outside their parent, narrower than they ask,
// or on top of a sibling.
QStringList drawingFaults(QWidget *root)
{
    QStringList faults;
    QList<QWidget *> parents = root->findChildren<QWidget *>();
    parents << root;
    for (QWidget *parent : std::as_const(parents)) {
        if (!parent->isVisible() || qobject_cast<QAbstractButton *>(parent)
            || qobject_cast<QLineEdit *>(parent) || parent->inherits("QComboBox"))
            continue;
        QList<QWidget *> shown;
        for (QWidget *child : parent->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
            if (child->isVisible() && !child->isWindow())
                shown << child;
        }
        for (QWidget *child : std::as_const(shown)) {
            const QString name = child->objectName().isEmpty()
                ? QString::fromLatin1(child->metaObject()->className())
                : child->objectName();
            if (!parent->rect().contains(child->geometry()))
                faults << name + u" leaves its parent"_s;
            // An icon button sized on purpose is cut when its icon is; others by their hint.
            const auto *button = qobject_cast<QAbstractButton *>(child);
            const bool sizedOnPurpose = child->minimumWidth() == child->maximumWidth();
            if (button && sizedOnPurpose && button->text().isEmpty()) {
                if (button->width() < button->iconSize().width() + 2)
                    faults << name + u" is cut"_s;
            } else if ((qobject_cast<QLabel *>(child) || button)
                       && child->width() < child->minimumSizeHint().width()) {
                faults << name + u" is cut"_s;
            }
            for (QWidget *other : std::as_const(shown)) {
                if (other != child && child < other
                    && child->geometry().intersects(other->geometry()))
                    faults << name + u" covers "_s + other->objectName();
            }
        }
    }
    return faults;
}

} // namespace

class tst_ParameterSide : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { EditorTestBench::setUpOnce(); }
    void cleanup();
    void wholeSideInEveryThemeAndWidth_data();
    void wholeSideInEveryThemeAndWidth();
    void keyboardOrderAndNames();

private:
    // The side over one selected file, with a pin; the geocoder and the reads are done.
    QWidget *showSide(int width);

    std::unique_ptr<EditorTestBench> m_bench;
    std::shared_ptr<OutputEngine> m_engine;
    std::unique_ptr<PinAndStepperController> m_controller;
};

void tst_ParameterSide::cleanup()
{
    m_controller.reset();
    m_engine.reset();
    if (m_bench)
        m_bench->model().sourceList.deleteAll();
    m_bench.reset();
    QApplication::setPalette(QPalette());
    QApplication::setFont(QFont());
}

QWidget *tst_ParameterSide::showSide(int width)
{
    m_bench = std::make_unique<EditorTestBench>();
    EditorTestBench &bench = *m_bench;
    DataModel &model = bench.model();
    m_controller = PinAndStepperController::create(model, nullptr, nullptr);
    m_engine = OutputEngine::create(&model);
    model.outputFormat->setValue(OutputFormatIndexEnum::HTML);
    QWidget *side = bench.show(ParameterSide::directive(model, m_engine, *m_controller), width);
    const NodePtr node = bench.readJpeg(
        u"Ile de la Cité with a rather long name.jpg"_s,
        {u"-GPSLatitude=48.8553"_s, u"-GPSLatitudeRef=N"_s, u"-GPSLongitude=2.3470"_s,
         u"-GPSLongitudeRef=E"_s, u"-IPTC:City=Paris"_s, u"-IPTC:Sub-location=Île de la Cité"_s});
    if (!side || !node)
        return nullptr;
    model.sourceList.deleteAll();
    model.sourceList.add({node->absolutePath}, false);
    m_engine->startListening();
    model.setSelectedNodes({node});
    model._pins->setValue({Pin {u"Pin 1"_s, 45.764, 4.8357, {}, {}, {}, {}}});
    model.setHasPins(true);
    model.setCurrentPinIndex(0);
    model.updateCurrentPinDisplay();
    bool idle = false;
    QTest::qWait(300);
    Geocoder::shared().notifyWhenIdle([&] { idle = true; });
    if (!TestSupport::waitUntil([&] { return idle; }, 60000) || !TestSupport::waitUntil([&] {
            return bench.view<SmartTextField>(u"cityField"_s)->text() == u"Paris"_s
                && bench.view<QWidget>(u"saveOutputButton"_s)->isEnabled();
        }))
        return nullptr;
    side->resize(width, side->sizeHint().height());
    QTest::qWait(100);
    return side;
}

void tst_ParameterSide::wholeSideInEveryThemeAndWidth_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<int>("width");
    QTest::addColumn<double>("fontScale");
    QTest::newRow("light-narrow") << false << 380 << 1.0;
    QTest::newRow("light-wide") << false << 620 << 1.0;
    QTest::newRow("dark-narrow") << true << 380 << 1.0;
    QTest::newRow("dark-wide") << true << 620 << 1.0;
    QTest::newRow("light-large-font") << false << 520 << 1.4;
}

void tst_ParameterSide::wholeSideInEveryThemeAndWidth()
{
    QFETCH(bool, dark);
    QFETCH(int, width);
    QFETCH(double, fontScale);
    if (dark)
        QApplication::setPalette(darkPalette());
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * fontScale);
    QApplication::setFont(font);

    QWidget *side = showSide(width);
    QVERIFY(side);
    const QList<BricksLayoutValidator::Issue> issues
        = BricksLayoutValidator::validate(side, BricksLayoutValidator::Phase::both);
    // The whole report in the log: the failure message is cut short.
    for (const QString &line : BricksLayoutValidator::humanReport(issues))
        qWarning().noquote() << line;
    QVERIFY(issues.isEmpty());
    const QStringList faults = drawingFaults(side);
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));

    const QString folder = qEnvironmentVariable("PALOMET_SCREENSHOTS",
                                                QDir::temp().filePath(u"palomet-screenshots"_s));
    QDir().mkpath(folder);
    QVERIFY(side->grab().save(QDir(folder).filePath(
        u"parameter-side-%1.png"_s.arg(QString::fromLatin1(QTest::currentDataTag())))));
}

void tst_ParameterSide::keyboardOrderAndNames()
{
    QWidget *side = showSide(440);
    QVERIFY(side);
    EditorTestBench &bench = *m_bench;
    for (QAbstractButton *button : side->findChildren<QAbstractButton *>()) {
        QVERIFY2(!button->toolTip().isEmpty(), qPrintable(button->objectName()));
        QVERIFY2(!button->accessibleName().isEmpty(), qPrintable(button->objectName()));
    }

    // Tab walks the text fields in reading order, through the buttons between them.
    QStringList fields;
    QWidget *start = bench.view<QWidget>(u"latitudeFieldInner"_s);
    start->setFocus();
    for (int presses = 0; presses < 40 && fields.size() < 6; ++presses) {
        if (auto *field = qobject_cast<SmartTextField *>(QApplication::focusWidget()))
            if (fields.isEmpty() || fields.last() != field->objectName())
                fields << field->objectName();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(fields,
             (QStringList {u"latitudeFieldInner"_s, u"longitudeFieldInner"_s, u"sublocationField"_s,
                           u"cityField"_s, u"provinceField"_s, u"countryField"_s}));
}

QTEST_MAIN(tst_ParameterSide)
#include "tst_ParameterSide.moc"
