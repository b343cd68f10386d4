#include "PopUpButtonBrick.h"

#include <QLineEdit>

PopUpButtonBrick::PopUpButtonBrick(QWidget *parent)
    : QComboBox(parent)
{
    // activated is sent for the user's choices only, never for a choice made by code.
    connect(this, &QComboBox::activated, this, [this](int index) {
        if (selectionChangedFunc)
            selectionChangedFunc(index);
    });
}

ComboBoxBrick::ComboBoxBrick(QWidget *parent)
    : QComboBox(parent)
{
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    const auto changed = [this] {
        if (textChangedAction)
            textChangedAction(currentText());
    };
    connect(lineEdit(), &QLineEdit::textEdited, this, changed);
    connect(this, &QComboBox::activated, this, changed);
}
