#pragma once

#include "BrickBinding.h"

#include <QColor>
#include <QLineEdit>

// A one-line text field with callbacks for each keystroke, the return key, the start of
// editing, and optionally the end of editing.
class SmartTextField
    : public QLineEdit
    , public BrickType
{
    Q_OBJECT

public:
    explicit SmartTextField(QWidget *parent = nullptr);

    std::function<void(const QString &)> textChangedAction;
    std::function<void(const QString &)> returnKeyActionFunction;
    std::function<void()> beginEditingActionFunction;
    // Each returns true when it handled the key.
    std::function<bool()> backTabBehaviour;
    std::function<bool()> upArrowBehaviour;
    bool callsReturnKeyFunctionOnResigningFirstResponder = false;
    bool callsReturnKeyFunctionOnTextHasChanged = false;

    std::optional<QColor> borderColor;
    double borderWidth = 0;
    std::optional<QColor> layerBorderColor;
    double layerBorderWidth = 0;
    double layerCornerRadius = 0;

protected:
    QWidget *brickWidget() override { return this; }
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;

private:
    void callReturnKeyFunction();
};

class TextFieldBinding : public BrickBinding<SmartTextField, QString>
{
public:
    using BrickBinding::BrickBinding;

protected:
    // The field is only set when it differs, so that typing keeps the cursor where it is.
    void show(SmartTextField *field, const QString &value) override
    {
        if (field->text() != value)
            field->setText(value);
    }
    void install(SmartTextField *field, Writer write) override;
};

// A text field that takes whole numbers.
class IntegerTextField : public SmartTextField
{
    Q_OBJECT

public:
    explicit IntegerTextField(QWidget *parent = nullptr);
};

class IntegerTextFieldBinding : public BrickBinding<IntegerTextField, int>
{
public:
    using BrickBinding::BrickBinding;

protected:
    void show(IntegerTextField *field, const int &value) override
    {
        if (field->text() != QString::number(value))
            field->setText(QString::number(value));
    }
    void install(IntegerTextField *field, Writer write) override;
};
