#include "SidecarPreferences.h"

#include "metadata/SidecarFiles.h"
#include "platform/UserDefaults.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QFormLayout>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("SidecarPreferences", text);
}

QComboBox *choicePopup(QWidget *parent, const QString &name, const QString &key,
                       const QList<std::pair<QString, QString>> &choices, int current)
{
    auto *popup = new QComboBox(parent);
    popup->setObjectName(name);
    for (const auto &[title, tip] : choices) {
        popup->addItem(title);
        popup->setItemData(popup->count() - 1, tip, Qt::ToolTipRole);
    }
    popup->setCurrentIndex(current);
    QObject::connect(popup, &QComboBox::currentIndexChanged, popup, [key](int index) {
        UserDefaults::standard().setObject(index, key);
        UserDefaults::standard().synchronize();
    });
    return popup;
}

} // namespace

SidecarPreferences SidecarPreferences::addRows(QFormLayout *form)
{
    QWidget *parent = form->parentWidget();
    SidecarPreferences rows;
    rows.writeLocationsToPopup = choicePopup(
        parent, QStringLiteral("writeLocationsToPopup"), SidecarFiles::writeLocationsToKey,
        {{tr("the file"), tr("Locations are written into the photo, video or audio file itself.")},
         {tr("an XMP sidecar"),
          tr("Locations are written into the XMP file beside each file; the file itself is left "
             "as it is, byte for byte.")},
         {tr("both"), tr("Locations are written into the file and into its XMP sidecar.")}},
        int(SidecarFiles::destination()));
    rows.writeLocationsToPopup->setToolTip(
        tr("Where a location edit is written. Files that ExifTool cannot write, such as some "
           "RAW types, always get an XMP sidecar."));
    form->addRow(tr("Write locations to:"), rows.writeLocationsToPopup);

    rows.sidecarNamingPopup = choicePopup(
        parent, QStringLiteral("sidecarNamingPopup"), SidecarFiles::sidecarNamingKey,
        {{tr("photo.nef.xmp"),
          tr("The whole file name with .xmp added, as darktable and "
             "digiKam name sidecars.")},
         {tr("photo.xmp"),
          tr("The file name with its extension replaced by .xmp, as Lightroom names sidecars.")}},
        int(SidecarFiles::naming()));
    rows.sidecarNamingPopup->setToolTip(
        tr("How a new sidecar is named. An existing sidecar is always used whatever its name, "
           "photo.nef.xmp first when both exist."));
    form->addRow(tr("New sidecars:"), rows.sidecarNamingPopup);
    return rows;
}
