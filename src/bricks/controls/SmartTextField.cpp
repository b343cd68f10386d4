#include "SmartTextField.h"

#include <QIntValidator>
#include <QKeyEvent>

SmartTextField::SmartTextField(QWidget *parent)
    : QLineEdit(parent)
{
    connect(this, &QLineEdit::textEdited, this, [this](const QString &text) {
        if (textChangedAction)
            textChangedAction(text);
        if (callsReturnKeyFunctionOnTextHasChanged)
            callReturnKeyFunction();
    });
    connect(this, &QLineEdit::returnPressed, this, &SmartTextField::callReturnKeyFunction);
}

void SmartTextField::callReturnKeyFunction()
{
    if (returnKeyActionFunction)
        returnKeyActionFunction(text());
}

void SmartTextField::focusInEvent(QFocusEvent *event)
{
    QLineEdit::focusInEvent(event);
    if (beginEditingActionFunction)
        beginEditingActionFunction();
}

void SmartTextField::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    // A menu opening over the field, or another window coming to the front, leaves the field
    // in charge of its text: the user has not finished with it.
    const bool stillEditing
        = event->reason() == Qt::PopupFocusReason || event->reason() == Qt::ActiveWindowFocusReason;
    if (callsReturnKeyFunctionOnResigningFirstResponder && !stillEditing)
        callReturnKeyFunction();
}

void SmartTextField::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Up && upArrowBehaviour && upArrowBehaviour())
        return;
    QLineEdit::keyPressEvent(event);
}

// Back-tab is taken by focus handling before keyPressEvent, so it is caught here.
bool SmartTextField::event(QEvent *event)
{
    if (event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Backtab && backTabBehaviour
        && backTabBehaviour())
        return true;
    return QLineEdit::event(event);
}

void TextFieldBinding::install(SmartTextField *field, Writer write)
{
    if (!write) {
        field->returnKeyActionFunction = nullptr;
        return;
    }
    // The field's own return action still runs, after the variable has the text.
    const auto kept = field->returnKeyActionFunction;
    field->returnKeyActionFunction = [write, kept](const QString &text) {
        write(text);
        if (kept)
            kept(text);
    };
    field->callsReturnKeyFunctionOnResigningFirstResponder = true;
    field->callsReturnKeyFunctionOnTextHasChanged = true;
}

IntegerTextField::IntegerTextField(QWidget *parent)
    : SmartTextField(parent)
{
    setValidator(new QIntValidator(this));
}

void IntegerTextFieldBinding::install(IntegerTextField *field, Writer write)
{
    if (!write) {
        field->returnKeyActionFunction = nullptr;
        return;
    }
    field->returnKeyActionFunction = [write](const QString &text) {
        bool ok = false;
        const int value = text.toInt(&ok);
        if (ok)
            write(value);
    };
    field->callsReturnKeyFunctionOnResigningFirstResponder = true;
    field->callsReturnKeyFunctionOnTextHasChanged = true;
}
