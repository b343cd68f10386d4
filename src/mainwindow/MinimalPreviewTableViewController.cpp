#include "MinimalPreviewTableViewController.h"

MinimalPreviewTableViewController::MinimalPreviewTableViewController(DataModel &dataModel,
                                                                     DelayedBuild delayedBuild,
                                                                     QObject *parent)
    : PreviewTableViewController(dataModel, DelayedBuild::Yes, parent)
{
    // Built here rather than by the base, so that the build reaches this class's columns.
    if (delayedBuild == DelayedBuild::No)
        build();
}

void MinimalPreviewTableViewController::updateColumns()
{
    setColumns({QStringLiteral("name"), QStringLiteral("GPSDataAvailable"),
                QStringLiteral("IPTCDataComplete")});
}
