#pragma once

#include "BrickBinding.h"
#include "SingleLineLabel.h"

#include <QLabel>
#include <QLineEdit>

class SingleLineLabelBinding : public ReadOnlyBinding<SingleLineLabel, QString>
{
public:
    using ReadOnlyBinding::ReadOnlyBinding;

protected:
    Presenter presenter() const override
    {
        return [](SingleLineLabel *label, const QString &value) {
            label->setStringValue(value);
        };
    }
};

// Shows a read-only text in any label or field.
class TextFieldReadOnlyBinding : public ReadOnlyBinding<QWidget, QString>
{
public:
    using ReadOnlyBinding::ReadOnlyBinding;

protected:
    Presenter presenter() const override
    {
        return [](QWidget *view, const QString &value) {
            if (auto *label = qobject_cast<QLabel *>(view))
                label->setText(value);
            else if (auto *field = qobject_cast<QLineEdit *>(view))
                field->setText(value);
        };
    }
};
