#include "bricks/Assembly.h"
#include "bricks/ViewTree.h"
#include "bricks/controls/ControlDirectives.h"
#include "bricks/walls/WallDirectives.h"

#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QTest>
#include <QToolButton>

namespace B = BuildDirectivesNamespace;

namespace {

enum class Mode { first = 3, second = 7, third = 9 };

// A variable that also counts how many listeners it was given.
template<typename T>
class CountingVariable : public StraightVariable<T>
{
public:
    using StraightVariable<T>::StraightVariable;
    void addHotListener(VariableListener<T> listener) override
    {
        ++listenersAdded;
        StraightVariable<T>::addHotListener(std::move(listener));
    }
    int listenersAdded = 0;
};

// Gives every widget its place, so that clicks land on the controls.
void layOut(const std::shared_ptr<Assembly> &assembly)
{
    QWidget *root = assembly->view();
    root->resize(root->sizeHint().expandedTo(QSize(300, 100)));
    ViewTree::layoutSubtreeIfNeeded(root);
}

template<typename W>
W *only(const std::shared_ptr<Assembly> &assembly)
{
    W *widget = assembly->view()->findChild<W *>();
    Q_ASSERT(widget);
    return widget;
}

} // namespace

class tst_Bricks : public QObject
{
    Q_OBJECT

private slots:
    void checkBoxFollowsTheVariableBothWays();
    void bindingLivesAsLongAsItsControl();
    void secondActivateAddsASecondListener();
    void unbindSilencesBothDirections();
    void typingWritesEachKeystrokeAndKeepsTheReturnAction();
    void integerFieldTakesNumbers();
    void fieldDrawsItsRoundedBorder();
    void popUpBindsEnumerationsByRawValue();
    void segmentsAndRadioChoices();
    void fakeComboBoxMenuWithSections();
    void readOnlyLabelsFollow();
    void valueControlsSendOnlyUserChanges();
};

void tst_Bricks::checkBoxFollowsTheVariableBothWays()
{
    auto flag = std::make_shared<StraightVariable<bool>>(true);
    int writes = 0;
    flag->addColdListener([&](bool) { ++writes; });
    auto assembly = build({B::Wall {B::CheckBox("Remember", flag)}});
    auto *box = only<CheckBoxBrick>(assembly);
    QVERIFY(!box->isChecked()); // inactive until activate
    assembly->activate();
    QVERIFY(box->isChecked());
    QCOMPARE(writes, 0); // showing the value sends nothing back
    layOut(assembly);

    QTest::mouseClick(box, Qt::LeftButton);
    QCOMPARE(flag->value(), false);
    QCOMPARE(writes, 1);
    flag->setValue(true);
    QVERIFY(box->isChecked());
    QCOMPARE(writes, 2); // the programmatic set did not echo
    delete assembly->view();
}

// Controllers keep the widgets of a build and drop its assembly: the bindings go on working.
void tst_Bricks::bindingLivesAsLongAsItsControl()
{
    auto flag = std::make_shared<StraightVariable<bool>>(false);
    auto status = std::make_shared<StraightVariable<QString>>("Ready");
    auto assembly
        = build({B::Wall {B::CheckBox("Remember", flag), B::DynamicSingleLineLabel(status)}});
    assembly->activate();
    layOut(assembly);
    QPointer<QWidget> root = assembly->view();
    auto *box = only<CheckBoxBrick>(assembly);
    auto *label = only<SingleLineLabel>(assembly);
    assembly.reset();

    flag->setValue(true);
    QVERIFY(box->isChecked());
    status->setValue("Reading");
    QCOMPARE(label->stringValue(), QStringLiteral("Reading"));
    QTest::mouseClick(box, Qt::LeftButton);
    QCOMPARE(flag->value(), false);

    // Once the controls are gone, their listeners stay in the variables and do nothing.
    delete root;
    flag->setValue(true);
    status->setValue("Done");
    QCOMPARE(flag->value(), true);
}

void tst_Bricks::secondActivateAddsASecondListener()
{
    auto flag = std::make_shared<CountingVariable<bool>>(false);
    auto assembly = build({B::CheckBox("x", flag)});
    assembly->activate();
    assembly->activate();
    QCOMPARE(flag->listenersAdded, 2);
    QCOMPARE(assembly->unbindables.size(), 2);
    delete assembly->view();
}

void tst_Bricks::unbindSilencesBothDirections()
{
    auto flag = std::make_shared<StraightVariable<bool>>(false);
    auto assembly = build({B::CheckBox("x", flag)});
    assembly->activate();
    auto *box = qobject_cast<CheckBoxBrick *>(assembly->view());
    box->resize(box->sizeHint());
    for (const auto &unbindable : assembly->unbindables)
        unbindable->unbind();
    flag->setValue(true);
    QVERIFY(!box->isChecked());
    QTest::mouseClick(box, Qt::LeftButton);
    QVERIFY(box->isChecked());
    flag->setValue(false);
    QCOMPARE(flag->value(), false);
    delete box;
}

void tst_Bricks::typingWritesEachKeystrokeAndKeepsTheReturnAction()
{
    auto text = std::make_shared<StraightVariable<QString>>("start");
    QStringList seen;
    text->addColdListener([&](const QString &v) { seen << v; });
    QStringList returned;
    auto assembly = build({B::StringInputField(text).style<SmartTextField>([&](SmartTextField *f) {
        f->returnKeyActionFunction = [&](const QString &t) {
            returned << t;
        };
    })});
    auto *field = qobject_cast<SmartTextField *>(assembly->view());
    assembly->activate();
    QCOMPARE(field->text(), QStringLiteral("start"));
    field->clear();
    QTest::keyClicks(field, "Rome");
    QCOMPARE(seen, QStringList({"R", "Ro", "Rom", "Rome"}));
    QCOMPARE(returned, seen); // the field's own action runs after the variable has the text
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(text->value(), QStringLiteral("Rome"));
    text->setValue("Paris");
    QCOMPARE(field->text(), QStringLiteral("Paris"));
    delete field;
}

void tst_Bricks::integerFieldTakesNumbers()
{
    auto number = std::make_shared<StraightVariable<int>>(5);
    auto assembly = build({B::IntegerInputField(number)});
    assembly->activate();
    auto *field = qobject_cast<IntegerTextField *>(assembly->view());
    QCOMPARE(field->text(), QStringLiteral("5"));
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Backspace);
    QCOMPARE(number->value(), 0); // an empty field is 0
    QTest::keyClicks(field, "4x2");
    QCOMPARE(number->value(), 42); // the letter was refused by the field
    field->setText("-"); // not a number yet: the variable keeps its value
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(number->value(), 42);
    delete field;
}

// The editors' fields draw a rounded border of one point in the colour they are given, and
// nothing of the field's square background outside it.
void tst_Bricks::fieldDrawsItsRoundedBorder()
{
    QWidget window;
    window.setAutoFillBackground(true);
    QPalette palette = window.palette();
    palette.setColor(QPalette::Window, QColor(200, 10, 10));
    window.setPalette(palette);
    auto *field = new SmartTextField(&window);
    field->setGeometry(10, 10, 120, 24);
    const QColor blue(10, 90, 250);
    field->layerBorderColor = blue;
    field->layerBorderWidth = 1;
    field->layerCornerRadius = 5;
    const QImage image = window.grab(QRect(10, 10, 120, 24)).toImage();
    QCOMPARE(image.pixelColor(0, 12), blue); // the middle of the left side
    QCOMPARE(image.pixelColor(60, 23), blue); // the middle of the bottom
    QCOMPARE(image.pixelColor(0, 0), QColor(200, 10, 10)); // the corner is rounded off
    QVERIFY(image.pixelColor(60, 12) != QColor(200, 10, 10)); // the field's own background

    // The editors' rule: blue while something is selected to edit, grey otherwise.
    for (const bool selection : {true, false}) {
        field->setBorderForSelection(selection);
        const QColor expected = selection ? SmartTextField::borderBlueColor(field->palette())
                                          : SmartTextField::systemGrayColor(field->palette());
        QCOMPARE(window.grab(QRect(10, 10, 120, 24)).toImage().pixelColor(0, 12), expected);
        QCOMPARE(field->layerCornerRadius, 5.0);
    }
}

void tst_Bricks::popUpBindsEnumerationsByRawValue()
{
    auto mode = std::make_shared<StraightVariable<Mode>>(Mode::second);
    auto assembly = build({B::PopupButtonWithEnum<Mode>(
        {{"First", Mode::first}, {"Second", Mode::second}, {"Third", Mode::third}}, mode)});
    assembly->activate();
    auto *popup = qobject_cast<PopUpButtonBrick *>(assembly->view());
    QCOMPARE(popup->currentText(), QStringLiteral("Second"));
    popup->setFocus();
    QTest::keyClick(popup, Qt::Key_Down);
    QCOMPARE(mode->value(), Mode::third);
    mode->setValue(Mode::first);
    QCOMPARE(popup->currentIndex(), 0);

    auto index = std::make_shared<StraightVariable<int>>(1);
    auto simple = build({B::PopupButton({"a", "b", "c"}, index)});
    simple->activate();
    QCOMPARE(qobject_cast<PopUpButtonBrick *>(simple->view())->currentText(), QStringLiteral("b"));
    delete popup;
    delete simple->view();
}

void tst_Bricks::segmentsAndRadioChoices()
{
    auto segment = std::make_shared<StraightVariable<int>>(1);
    auto choice = std::make_shared<StraightVariable<QString>>("km");
    auto assembly = build({B::Wall {B::SegmentedControl({"Map", "Satellite", "Hybrid"}, segment),
                                    B::RadioChoice<QString>("Kilometres", "km", choice),
                                    B::RadioChoice<QString>("Miles", "mi", choice)}});
    assembly->activate();
    layOut(assembly);
    auto *control = only<SegmentedControlBrick>(assembly);
    QCOMPARE(control->selectedSegment(), 1);
    QTest::mouseClick(control->segment(2), Qt::LeftButton);
    QCOMPARE(segment->value(), 2);
    segment->setValue(0);
    QCOMPARE(control->selectedSegment(), 0);

    const QList<RadioButtonBrick *> radios = assembly->view()->findChildren<RadioButtonBrick *>();
    QVERIFY(radios[0]->isChecked());
    QVERIFY(!radios[1]->isChecked());
    QTest::mouseClick(radios[1], Qt::LeftButton);
    QCOMPARE(choice->value(), QStringLiteral("mi"));
    QVERIFY(!radios[0]->isChecked());
    QTest::mouseClick(radios[1], Qt::LeftButton); // choosing it again keeps it chosen
    QVERIFY(radios[1]->isChecked());
    delete assembly->view();
}

void tst_Bricks::fakeComboBoxMenuWithSections()
{
    auto place = std::make_shared<StraightVariable<QString>>("Lyon");
    auto assembly = build({B::FakeComboBoxButton(
        {{"Recent", {"Lyon", "Nice"}}, {"Pins", {"Home", "Office"}}}, place)});
    assembly->activate();
    auto *button = qobject_cast<FakeComboBoxButtonBrick *>(assembly->view());
    QCOMPARE(button->text(), QStringLiteral("Lyon"));
    const QList<QAction *> actions = button->itemMenu()->actions();
    QCOMPARE(actions.size(), 6);
    QVERIFY(actions[0]->isSeparator());
    QCOMPARE(actions[0]->text(), QStringLiteral("Recent"));
    QVERIFY(actions[3]->isSeparator());
    actions[5]->trigger();
    QCOMPARE(place->value(), QStringLiteral("Office"));
    QCOMPARE(button->text(), QStringLiteral("Office"));
    delete button;
}

void tst_Bricks::readOnlyLabelsFollow()
{
    auto status = std::make_shared<StraightVariable<QString>>("Ready");
    auto markdown = std::make_shared<StraightVariable<QString>>("**bold** text");
    auto assembly = build({B::Wall {B::DynamicSingleLineLabel(status), B::DynamicLabel(status),
                                    B::DynamicMarkdownLabel(markdown)}});
    assembly->activate();
    auto *single = only<SingleLineLabel>(assembly);
    QCOMPARE(single->stringValue(), QStringLiteral("Ready"));
    status->setValue("Reading 3 files");
    QCOMPARE(single->stringValue(), QStringLiteral("Reading 3 files"));
    const QList<QLabel *> labels = assembly->view()->findChildren<QLabel *>();
    QCOMPARE(labels[0]->text(), QStringLiteral("Reading 3 files"));
    QCOMPARE(labels[1]->textFormat(), Qt::MarkdownText);
    QCOMPARE(labels[1]->text(), QStringLiteral("**bold** text"));

    // The label draws its own text: the image is no longer blank where the text stands.
    single->resize(single->sizeHint());
    const QImage image = single->grab().toImage();
    bool inked = false;
    for (int x = 0; x < image.width() && !inked; ++x)
        for (int y = 0; y < image.height() && !inked; ++y)
            inked = image.pixelColor(x, y) != image.pixelColor(0, 0);
    QVERIFY(inked);
    delete assembly->view();
}

void tst_Bricks::valueControlsSendOnlyUserChanges()
{
    auto date = std::make_shared<StraightVariable<QDateTime>>(
        QDateTime(QDate(2020, 1, 2), QTime(3, 4, 5)));
    auto zoom = std::make_shared<StraightVariable<int>>(5);
    auto state = std::make_shared<StraightVariable<Qt::CheckState>>(Qt::PartiallyChecked);
    auto city = std::make_shared<StraightVariable<QString>>("Nice");
    int writes = 0;
    date->addColdListener([&](const QDateTime &) { ++writes; });
    zoom->addColdListener([&](int) { ++writes; });
    state->addColdListener([&](Qt::CheckState) { ++writes; });
    city->addColdListener([&](const QString &) { ++writes; });
    auto assembly
        = build({B::Wall {B::DatePicker(date), B::Slider(1, 18, zoom),
                          B::TriStateCheckBox("t", state), B::ComboBox({"Lyon", "Nice"}, city)}});
    assembly->activate();
    layOut(assembly);
    auto *picker = only<DatePickerBrick>(assembly);
    auto *slider = only<SliderBrick>(assembly);
    auto *tri = only<ButtonStateValueCheckBoxBrick>(assembly);
    auto *combo = only<ComboBoxBrick>(assembly);
    QCOMPARE(picker->dateTime(), date->value());
    QCOMPARE(slider->value(), 5);
    QCOMPARE(tri->checkState(), Qt::PartiallyChecked);
    QCOMPARE(combo->currentText(), QStringLiteral("Nice"));
    date->setValue(QDateTime(QDate(2021, 6, 7), QTime(8, 9, 10)));
    zoom->setValue(9);
    city->setValue("Lyon");
    QCOMPARE(writes, 3); // the controls followed and sent nothing back
    QCOMPARE(slider->value(), 9);
    QCOMPARE(combo->currentText(), QStringLiteral("Lyon"));

    slider->setFocus();
    QTest::keyClick(slider, Qt::Key_Right);
    QCOMPARE(zoom->value(), 10);
    QTest::mouseClick(tri, Qt::LeftButton);
    QCOMPARE(state->value(), tri->checkState());
    QVERIFY(state->value() != Qt::PartiallyChecked);
    combo->lineEdit()->selectAll();
    QTest::keyClicks(combo->lineEdit(), "Annecy");
    QCOMPARE(city->value(), QStringLiteral("Annecy"));
    delete assembly->view();
}

QTEST_MAIN(tst_Bricks)
#include "tst_Bricks.moc"
