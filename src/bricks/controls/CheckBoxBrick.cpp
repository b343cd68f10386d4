#include "CheckBoxBrick.h"

CheckBoxBrick::CheckBoxBrick(const QString &title, QWidget *parent)
    : QCheckBox(title, parent)
{ }

void CheckBoxBrick::setTargetToSelf()
{
    if (m_targetSet)
        return;
    m_targetSet = true;
    connect(this, &QCheckBox::clicked, this, &CheckBoxBrick::actionMethod);
}

void CheckBoxBrick::actionMethod()
{
    if (actualCheckboxFunc)
        actualCheckboxFunc(isChecked());
}

ButtonStateValueCheckBoxBrick::ButtonStateValueCheckBoxBrick(const QString &title, QWidget *parent)
    : QCheckBox(title, parent)
{
    setTristate(true);
    connect(this, &QCheckBox::clicked, this, [this] {
        if (actualCheckboxFunc)
            actualCheckboxFunc(checkState());
    });
}
