#pragma once

// The leaf directives of a description: each builds one control and its binding.

#include "CheckBoxBrick.h"
#include "ColorWellBrick.h"
#include "DatePickerBrick.h"
#include "PopUpButtonBrick.h"
#include "PushButtonBrick.h"
#include "RadioButtonBrick.h"
#include "ReadOnlyBindings.h"
#include "SegmentedControlBrick.h"
#include "SliderBrick.h"
#include "SmartTextField.h"
#include "SwitchBrick.h"
#include "bricks/BuildDirective.h"

// The image preview's directive, ImagePreview, lives with its view in mainwindow/preview.

namespace BuildDirectivesNamespace {

template<typename Self>
class LeafDirective
    : public LeafCreatingBuildDirective
    , public DirectiveModifiers<Self>
{ };

template<typename T>
using ReadWrite = std::shared_ptr<ReadWriteVariableType<T>>;

class StaticLabel : public LeafDirective<StaticLabel>
{
public:
    explicit StaticLabel(QString title)
        : title(std::move(title))
    { }
    QString description() const override { return "StaticLabel '" + title + "'"; }
    BuiltView buildLeaf() const override;
    QString title;
};

class RightAlignedStaticLabel : public LeafDirective<RightAlignedStaticLabel>
{
public:
    explicit RightAlignedStaticLabel(QString title)
        : title(std::move(title))
    { }
    QString description() const override { return "RightAlignedStaticLabel '" + title + "'"; }
    BuiltView buildLeaf() const override;
    QString title;
};

// Wrapping text over several lines.
class MultilineText : public LeafDirective<MultilineText>
{
public:
    explicit MultilineText(QString text)
        : text(std::move(text))
    { }
    QString description() const override { return QStringLiteral("MultilineText"); }
    BuiltView buildLeaf() const override;
    QString text;
};

class DynamicSingleLineLabel : public LeafDirective<DynamicSingleLineLabel>
{
public:
    explicit DynamicSingleLineLabel(AnyReadOnlyVariable<QString> variable)
        : variable(std::move(variable))
    { }
    QString description() const override { return QStringLiteral("DynamicSingleLineLabel"); }
    BuiltView buildLeaf() const override;
    AnyReadOnlyVariable<QString> variable;
};

class DynamicLabel : public LeafDirective<DynamicLabel>
{
public:
    explicit DynamicLabel(AnyReadOnlyVariable<QString> titleVariable)
        : titleVariable(std::move(titleVariable))
    { }
    QString description() const override { return QStringLiteral("DynamicLabel"); }
    BuiltView buildLeaf() const override;
    AnyReadOnlyVariable<QString> titleVariable;
};

class StaticMarkdownLabel : public LeafDirective<StaticMarkdownLabel>
{
public:
    explicit StaticMarkdownLabel(QString markdown)
        : markdown(std::move(markdown))
    { }
    QString description() const override { return QStringLiteral("StaticMarkdownLabel"); }
    BuiltView buildLeaf() const override;
    QString markdown;
};

class DynamicMarkdownLabel : public LeafDirective<DynamicMarkdownLabel>
{
public:
    explicit DynamicMarkdownLabel(AnyReadOnlyVariable<QString> variable)
        : variable(std::move(variable))
    { }
    QString description() const override { return QStringLiteral("DynamicMarkdownLabel"); }
    BuiltView buildLeaf() const override;
    AnyReadOnlyVariable<QString> variable;
};

class HorizontalDivider : public LeafDirective<HorizontalDivider>
{
public:
    QString description() const override { return QStringLiteral("HorizontalDivider"); }
    BuiltView buildLeaf() const override;
};

class PushButton : public LeafDirective<PushButton>
{
public:
    PushButton(QString title, std::function<void()> action)
        : title(std::move(title))
        , action(std::move(action))
    { }
    QString description() const override { return "PushButton '" + title + "'"; }
    BuiltView buildLeaf() const override;
    QString title;
    std::function<void()> action;
};

class CheckBox : public LeafDirective<CheckBox>
{
public:
    CheckBox(QString title, ReadWrite<bool> variable)
        : title(std::move(title))
        , variable(std::move(variable))
    { }
    QString description() const override { return "CheckBox '" + title + "'"; }
    BuiltView buildLeaf() const override;
    QString title;
    ReadWrite<bool> variable;
};

class Switch : public LeafDirective<Switch>
{
public:
    Switch(QString title, ReadWrite<bool> variable)
        : title(std::move(title))
        , variable(std::move(variable))
    { }
    QString description() const override { return "Switch '" + title + "'"; }
    BuiltView buildLeaf() const override;
    QString title;
    ReadWrite<bool> variable;
};

class TriStateCheckBox : public LeafDirective<TriStateCheckBox>
{
public:
    TriStateCheckBox(QString title, ReadWrite<Qt::CheckState> variable)
        : title(std::move(title))
        , variable(std::move(variable))
    { }
    QString description() const override { return "TriStateCheckBox '" + title + "'"; }
    BuiltView buildLeaf() const override;
    QString title;
    ReadWrite<Qt::CheckState> variable;
};

// A pop-up over the cases of an enumeration, bound by raw value.
template<typename E>
class PopupButtonWithEnum : public LeafDirective<PopupButtonWithEnum<E>>
{
public:
    PopupButtonWithEnum(QList<std::pair<QString, E>> items, ReadWrite<E> variable)
        : items(std::move(items))
        , variable(std::move(variable))
    { }
    QString description() const override { return QStringLiteral("PopupButtonWithEnum"); }
    BuiltView buildLeaf() const override
    {
        auto *brick = new PopUpButtonBrick;
        for (const auto &[title, value] : items)
            brick->addItem(title, static_cast<int>(value));
        return {brick, std::make_shared<PopUpButtonBrickBinding<E>>(brick, variable)};
    }
    QList<std::pair<QString, E>> items;
    ReadWrite<E> variable;
};

// A pop-up bound by the index of its choice.
class PopupButton : public LeafDirective<PopupButton>
{
public:
    PopupButton(QStringList items, ReadWrite<int> variable)
        : items(std::move(items))
        , variable(std::move(variable))
    { }
    QString description() const override { return QStringLiteral("PopupButton"); }
    BuiltView buildLeaf() const override;
    QStringList items;
    ReadWrite<int> variable;
};

class ComboBox : public LeafDirective<ComboBox>
{
public:
    ComboBox(QStringList items, ReadWrite<QString> variable)
        : items(std::move(items))
        , variable(std::move(variable))
    { }
    QString description() const override { return QStringLiteral("ComboBox"); }
    BuiltView buildLeaf() const override;
    QStringList items;
    ReadWrite<QString> variable;
};

class RadioButton : public LeafDirective<RadioButton>
{
public:
    RadioButton(QString title, ReadWrite<bool> variable)
        : title(std::move(title))
        , variable(std::move(variable))
    { }
    QString description() const override { return "RadioButton '" + title + "'"; }
    BuiltView buildLeaf() const override;
    QString title;
    ReadWrite<bool> variable;
};

// One choice of a group: checked while the variable holds value.
template<typename T>
class RadioChoice : public LeafDirective<RadioChoice<T>>
{
public:
    RadioChoice(QString title, T value, ReadWrite<T> variable)
        : title(std::move(title))
        , value(std::move(value))
        , variable(std::move(variable))
    { }
    QString description() const override { return "RadioChoice '" + title + "'"; }
    BuiltView buildLeaf() const override
    {
        auto *brick = new RadioButtonBrick(title);
        return {brick, std::make_shared<RadioButtonValueBinding<T>>(brick, variable, value)};
    }
    QString title;
    T value;
    ReadWrite<T> variable;
};

class SegmentedControl : public LeafDirective<SegmentedControl>
{
public:
    SegmentedControl(QStringList labels, ReadWrite<int> variable)
        : labels(std::move(labels))
        , variable(std::move(variable))
    { }
    QString description() const override { return QStringLiteral("SegmentedControl"); }
    BuiltView buildLeaf() const override;
    QStringList labels;
    ReadWrite<int> variable;
};

class StringInputField : public LeafDirective<StringInputField>
{
public:
    explicit StringInputField(ReadWrite<QString> variable, QString placeholder = {})
        : variable(std::move(variable))
        , placeholder(std::move(placeholder))
    { }
    QString description() const override { return QStringLiteral("StringInputField"); }
    BuiltView buildLeaf() const override;
    ReadWrite<QString> variable;
    QString placeholder;
};

class IntegerInputField : public LeafDirective<IntegerInputField>
{
public:
    explicit IntegerInputField(ReadWrite<int> variable)
        : variable(std::move(variable))
    { }
    QString description() const override { return QStringLiteral("IntegerInputField"); }
    BuiltView buildLeaf() const override;
    ReadWrite<int> variable;
};

class UnboundTextField : public LeafDirective<UnboundTextField>
{
public:
    explicit UnboundTextField(QString placeholder = {})
        : placeholder(std::move(placeholder))
    { }
    QString description() const override { return QStringLiteral("UnboundTextField"); }
    BuiltView buildLeaf() const override;
    QString placeholder;
};

class FakeComboBoxButton : public LeafDirective<FakeComboBoxButton>
{
public:
    FakeComboBoxButton(QList<FakeComboBoxButtonBrick::Section> sections,
                       ReadWrite<QString> variable)
        : sections(std::move(sections))
        , variable(std::move(variable))
    { }
    QString description() const override { return QStringLiteral("FakeComboBoxButton"); }
    BuiltView buildLeaf() const override;
    QList<FakeComboBoxButtonBrick::Section> sections;
    ReadWrite<QString> variable;
};

class PullDownButton : public LeafDirective<PullDownButton>
{
public:
    PullDownButton(QString title, QStringList items, std::function<void(int)> chosen)
        : title(std::move(title))
        , items(std::move(items))
        , chosen(std::move(chosen))
    { }
    QString description() const override { return "PullDownButton '" + title + "'"; }
    BuiltView buildLeaf() const override;
    QString title;
    QStringList items;
    std::function<void(int)> chosen;
};

class DatePicker : public LeafDirective<DatePicker>
{
public:
    explicit DatePicker(ReadWrite<QDateTime> variable)
        : variable(std::move(variable))
    { }
    QString description() const override { return QStringLiteral("DatePicker"); }
    BuiltView buildLeaf() const override;
    ReadWrite<QDateTime> variable;
};

class Slider : public LeafDirective<Slider>
{
public:
    Slider(int minimum, int maximum, ReadWrite<int> variable)
        : minimum(minimum)
        , maximum(maximum)
        , variable(std::move(variable))
    { }
    QString description() const override { return QStringLiteral("Slider"); }
    BuiltView buildLeaf() const override;
    int minimum, maximum;
    ReadWrite<int> variable;
};

class ColorWell : public LeafDirective<ColorWell>
{
public:
    ColorWell(QColor color, std::function<void(const QColor &)> changed)
        : color(std::move(color))
        , changed(std::move(changed))
    { }
    QString description() const override { return QStringLiteral("ColorWell"); }
    BuiltView buildLeaf() const override;
    QColor color;
    std::function<void(const QColor &)> changed;
};

} // namespace BuildDirectivesNamespace
