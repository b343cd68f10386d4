#include "ControlDirectives.h"

#include <QFrame>
#include <QLabel>

namespace BuildDirectivesNamespace {

namespace {
std::shared_ptr<Binding> none()
{
    return std::make_shared<NullBinding>();
}

QLabel *makeLabel(const QString &text, Qt::Alignment alignment)
{
    auto *label = new QLabel(text);
    label->setAlignment(alignment | Qt::AlignVCenter);
    label->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    return label;
}

QLabel *makeMarkdownLabel()
{
    auto *label = new QLabel;
    label->setTextFormat(Qt::MarkdownText);
    label->setWordWrap(true);
    label->setOpenExternalLinks(true);
    label->setTextInteractionFlags(Qt::TextBrowserInteraction);
    return label;
}
} // namespace

BuiltView StaticLabel::buildLeaf() const
{
    return {makeLabel(title, Qt::AlignLeft), none()};
}

BuiltView RightAlignedStaticLabel::buildLeaf() const
{
    return {makeLabel(title, Qt::AlignRight), none()};
}

BuiltView MultilineText::buildLeaf() const
{
    auto *label = new QLabel(text);
    label->setWordWrap(true);
    return {label, none()};
}

BuiltView DynamicSingleLineLabel::buildLeaf() const
{
    auto *label = new SingleLineLabel;
    return {label, std::make_shared<SingleLineLabelBinding>(label, variable)};
}

BuiltView DynamicLabel::buildLeaf() const
{
    QLabel *label = makeLabel(QString(), Qt::AlignLeft);
    return {label, std::make_shared<TextFieldReadOnlyBinding>(label, titleVariable)};
}

BuiltView StaticMarkdownLabel::buildLeaf() const
{
    QLabel *label = makeMarkdownLabel();
    label->setText(markdown);
    return {label, none()};
}

BuiltView DynamicMarkdownLabel::buildLeaf() const
{
    QLabel *label = makeMarkdownLabel();
    return {label, std::make_shared<TextFieldReadOnlyBinding>(label, variable)};
}

BuiltView HorizontalDivider::buildLeaf() const
{
    auto *line = new QFrame;
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return {line, none()};
}

BuiltView PushButton::buildLeaf() const
{
    auto *brick = new PushButtonBrick(title);
    brick->actionFunc = action;
    return {brick, none()};
}

BuiltView CheckBox::buildLeaf() const
{
    auto *brick = new CheckBoxBrick(title);
    return {brick, std::make_shared<CheckBoxBrickBinding>(brick, variable)};
}

BuiltView Switch::buildLeaf() const
{
    auto *brick = new SwitchBrick(title);
    return {brick, std::make_shared<SwitchBrickBinding>(brick, variable)};
}

BuiltView TriStateCheckBox::buildLeaf() const
{
    auto *brick = new ButtonStateValueCheckBoxBrick(title);
    return {brick, std::make_shared<ButtonStateValueCheckBoxBrickBinding>(brick, variable)};
}

BuiltView PopupButton::buildLeaf() const
{
    auto *brick = new PopUpButtonBrick;
    brick->addItems(items);
    return {brick, std::make_shared<PopUpButtonBrickSimpleIntBinding>(brick, variable)};
}

BuiltView ComboBox::buildLeaf() const
{
    auto *brick = new ComboBoxBrick;
    brick->addItems(items);
    return {brick, std::make_shared<ComboBoxBrickBinding>(brick, variable)};
}

BuiltView RadioButton::buildLeaf() const
{
    auto *brick = new RadioButtonBrick(title);
    return {brick, std::make_shared<RadioButtonBrickBinding>(brick, variable)};
}

BuiltView SegmentedControl::buildLeaf() const
{
    auto *brick = new SegmentedControlBrick(labels);
    return {brick, std::make_shared<SegmentedControlBrickBinding>(brick, variable)};
}

BuiltView StringInputField::buildLeaf() const
{
    auto *field = new SmartTextField;
    field->setPlaceholderText(placeholder);
    return {field, std::make_shared<TextFieldBinding>(field, variable)};
}

BuiltView IntegerInputField::buildLeaf() const
{
    auto *field = new IntegerTextField;
    return {field, std::make_shared<IntegerTextFieldBinding>(field, variable)};
}

BuiltView UnboundTextField::buildLeaf() const
{
    auto *field = new SmartTextField;
    field->setPlaceholderText(placeholder);
    return {field, none()};
}

BuiltView FakeComboBoxButton::buildLeaf() const
{
    auto *brick = new FakeComboBoxButtonBrick(sections);
    return {brick, std::make_shared<FakeComboBoxButtonBrickStringBinding>(brick, variable)};
}

BuiltView PullDownButton::buildLeaf() const
{
    auto *brick = new PullDownButtonBrick(title, items);
    brick->itemChosenFunc = chosen;
    return {brick, none()};
}

BuiltView DatePicker::buildLeaf() const
{
    auto *brick = new DatePickerBrick;
    return {brick, std::make_shared<DatePickerBrickBinding>(brick, variable)};
}

BuiltView Slider::buildLeaf() const
{
    auto *brick = new SliderBrick(minimum, maximum);
    return {brick, std::make_shared<SliderBrickBinding>(brick, variable)};
}

BuiltView ColorWell::buildLeaf() const
{
    auto *brick = new ColorWellBrick(color);
    brick->valueChangedFunc = changed;
    return {brick, none()};
}

} // namespace BuildDirectivesNamespace
