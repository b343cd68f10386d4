#include "PreferencesDialog.h"

#include "AppDelegate.h"
#include "Appearance.h"
#include "MainContentViewController.h"
#include "MainWindow.h"
#include "MapWebView.h"
#include "MapWidget.h"
#include "MapZoomToolbar.h"
#include "SidecarPreferences.h"
#include "platform/UserDefaults.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPointer>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

// A stored boolean, its default when absent or of another type.
bool storedBool(const QString &key, bool fallback)
{
    const QVariant value = UserDefaults::standard().objectForKey(key);
    return value.typeId() == QMetaType::Bool ? value.toBool() : fallback;
}

QLabel *note(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setWordWrap(true);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, palette.color(QPalette::PlaceholderText));
    label->setPalette(palette);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * 0.9);
    label->setFont(font);
    return label;
}

} // namespace

PreferencesDialog::PreferencesDialog(QWidget *parent)
    : QDialog(parent)
    , appearancePopup(new QComboBox(this))
    , onlineTilesCheckBox(new QCheckBox(tr("Load map tiles from OpenStreetMap"), this))
    , automaticUpdateCheckBox(new QCheckBox(tr("Check for updates automatically"), this))
{
    setObjectName(QStringLiteral("preferencesDialog"));
    setWindowTitle(tr("Palomet Preferences"));
    UserDefaults &defaults = UserDefaults::standard();

    appearancePopup->setObjectName(QStringLiteral("appearancePopup"));
    appearancePopup->addItems({tr("As the System"), tr("Light"), tr("Dark")});
    appearancePopup->setCurrentIndex(int(Appearance::storedMode()));
    connect(appearancePopup, &QComboBox::currentIndexChanged, this, [](int index) {
        UserDefaults::standard().setObject(index, Appearance::settingKey());
        UserDefaults::standard().synchronize();
    });

    onlineTilesCheckBox->setObjectName(QStringLiteral("onlineTilesCheckBox"));
    onlineTilesCheckBox->setChecked(MapWebView::onlineSetting());
    connect(onlineTilesCheckBox, &QCheckBox::toggled, this, [](bool online) {
        UserDefaults::standard().setObject(online, MapWebView::onlineSettingKey());
        UserDefaults::standard().synchronize();
    });

    const bool hasFeed = !defaults.stringForKey(QStringLiteral("SUFeedURL")).isEmpty();
    automaticUpdateCheckBox->setObjectName(QStringLiteral("automaticUpdateCheckBox"));
    automaticUpdateCheckBox->setChecked(
        hasFeed && storedBool(QStringLiteral("SUEnableAutomaticChecks"), true));
    automaticUpdateCheckBox->setEnabled(hasFeed);
    connect(automaticUpdateCheckBox, &QCheckBox::toggled, this, [](bool automatic) {
        UserDefaults::standard().setObject(automatic, QStringLiteral("SUEnableAutomaticChecks"));
        UserDefaults::standard().synchronize();
    });

    auto *form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(tr("Appearance:"), appearancePopup);
    auto *map = new QVBoxLayout;
    map->addWidget(onlineTilesCheckBox);
    map->addWidget(note(tr("Without tiles the map shows the country shapes that come with Palomet, "
                           "and the map reaches no server."),
                        this));
    form->addRow(tr("Map:"), map);
    auto *updates = new QVBoxLayout;
    updates->addWidget(automaticUpdateCheckBox);
    if (!hasFeed)
        updates->addWidget(note(tr("This build is updated with the system's packages."), this));
    form->addRow(tr("Updates:"), updates);
    SidecarPreferences::addRows(form);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    setMinimumWidth(440);
}

PreferencesDialog *PreferencesDialog::showPreferences(QWidget *parent, AppDelegate &delegate)
{
    static QPointer<PreferencesDialog> dialog;
    if (!dialog) {
        dialog = new PreferencesDialog(parent);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        // The map's globe button and this box are one setting: each follows the other, and the
        // map changes its tiles at once.
        MapWidget *map = delegate.mainWindow
            ? delegate.mainWindow->mainContentViewController->mapWidget()
            : nullptr;
        if (map) {
            QAbstractButton *globe = map->zoomToolbar()->onlineButton();
            connect(dialog->onlineTilesCheckBox, &QCheckBox::toggled, globe,
                    &QAbstractButton::setChecked);
            connect(globe, &QAbstractButton::toggled, dialog->onlineTilesCheckBox,
                    &QAbstractButton::setChecked);
        }
    }
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
    return dialog;
}
