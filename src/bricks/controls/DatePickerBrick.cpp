#include "DatePickerBrick.h"

DatePickerBrick::DatePickerBrick(QWidget *parent)
    : QDateTimeEdit(parent)
{
    setCalendarPopup(true);
    setDisplayFormat(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    // The binding blocks this signal while it sets the date, so only the user's edits pass.
    connect(this, &QDateTimeEdit::dateTimeChanged, this, [this](const QDateTime &value) {
        if (dateValueChangedFunc)
            dateValueChangedFunc(value);
    });
}
