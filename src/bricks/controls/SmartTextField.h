#pragma once

#include "BrickBinding.h"

#include <QColor>
#include <QLineEdit>

#include <optional>

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

    // A square border, and a border with rounded corners drawn over it; either shows when it
    // has a colour and a width. With one, the field draws its own background inside it.
    std::optional<QColor> borderColor;
    double borderWidth = 0;
    std::optional<QColor> layerBorderColor;
    double layerBorderWidth = 0;
    double layerCornerRadius = 0;
    // Applies the border fields; the next paint would do it as well.
    void updateLayerBorder();
    // The editors' rule: "BorderBlue" while something is selected to edit, the system grey
    // otherwise; one point wide, with corners of radius 5.
    void setBorderForSelection(bool hasSelection);

    // The application's "BorderBlue", and the system grey, for the light or the dark theme.
    static QColor borderBlueColor(const QPalette &palette);
    static QColor systemGrayColor(const QPalette &palette);

protected:
    QWidget *brickWidget() override { return this; }
    void paintEvent(QPaintEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;

private:
    void callReturnKeyFunction();
    bool hasOwnBorder() const;
    void applyOwnBorder();
    bool m_ownBorderApplied = false;
};

class TextFieldBinding : public BrickBinding<SmartTextField, QString>
{
public:
    using BrickBinding::BrickBinding;

protected:
    // The field is only set when it differs, so that typing keeps the cursor where it is.
    Presenter presenter() const override
    {
        return [](SmartTextField *field, const QString &value) {
            if (field->text() != value)
                field->setText(value);
        };
    }
    void install(SmartTextField *field, Writer write) override;
};

// A text field that takes whole numbers.
class IntegerTextField : public SmartTextField
{
    Q_OBJECT

public:
    explicit IntegerTextField(QWidget *parent = nullptr);
    // An empty field is 0; text that is not a number has no value.
    static std::optional<int> valueOf(const QString &text);
};

class IntegerTextFieldBinding : public BrickBinding<IntegerTextField, int>
{
public:
    using BrickBinding::BrickBinding;

protected:
    // An empty field already shows 0, and is left empty.
    Presenter presenter() const override
    {
        return [](IntegerTextField *field, const int &value) {
            if (IntegerTextField::valueOf(field->text()) != value)
                field->setText(QString::number(value));
        };
    }
    void install(IntegerTextField *field, Writer write) override;
};
