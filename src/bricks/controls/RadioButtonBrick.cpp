#include "RadioButtonBrick.h"

RadioButtonBrick::RadioButtonBrick(const QString &title, QWidget *parent)
    : QRadioButton(title, parent)
{
    setAutoExclusive(false);
    connect(this, &QRadioButton::clicked, this, [this] {
        // A click on the chosen button leaves it chosen, as in a group.
        setChecked(true);
        if (selectedFunc)
            selectedFunc();
    });
}
