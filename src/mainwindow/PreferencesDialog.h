#pragma once

#include <QDialog>

class AppDelegate;
class QCheckBox;
class QComboBox;

// The settings that have no place in the window: the look, the map's tiles and the update
// checks. Each change is stored at once. One dialog at a time, not modal.
class PreferencesDialog : public QDialog
{
    Q_OBJECT

public:
    explicit PreferencesDialog(QWidget *parent = nullptr);

    // Shows the one dialog, making it when needed.
    static PreferencesDialog *showPreferences(QWidget *parent, AppDelegate &delegate);

    QComboBox *appearancePopup = nullptr;
    QCheckBox *onlineTilesCheckBox = nullptr;
    QCheckBox *automaticUpdateCheckBox = nullptr;
};
