#pragma once

#include <QList>
#include <QString>

// Which groups the stepper walks through; inactive steps through single items.
enum class StepperMode : int { inactive, sublocation, province, country, city };

// How a mode shows in the stepper's popup and which value makes its groups.
struct StepperModeEntry
{
    StepperMode mode;
    // Shown in the popup; translated by the view.
    const char *popupTitle;
    // The compared key; empty for single items.
    QString key;
    const char *menuCommand;
};

// The popup's entries, in the popup's order, which is not the enumeration's.
inline const QList<StepperModeEntry> &stepperModeEntries()
{
    static const QList<StepperModeEntry> entries {
        {StepperMode::inactive, "Item", QString(), "filterInactive:"},
        {StepperMode::sublocation, "Sub-Location", QStringLiteral("Sub-location"),
         "filterBySublocation:"},
        {StepperMode::city, "City", QStringLiteral("City"), "filterByCity:"},
        {StepperMode::province, "Province", QStringLiteral("Province-State"), "filterByProvince:"},
        {StepperMode::country, "Country", QStringLiteral("Country"), "filterByCountry:"},
    };
    return entries;
}

inline QString stepperModeKey(StepperMode mode)
{
    for (const StepperModeEntry &entry : stepperModeEntries()) {
        if (entry.mode == mode)
            return entry.key;
    }
    return QString();
}
