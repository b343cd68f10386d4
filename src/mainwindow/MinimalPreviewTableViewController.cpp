#include "MinimalPreviewTableViewController.h"

void MinimalPreviewTableViewController::updateColumns()
{
    setColumns({QStringLiteral("name"), QStringLiteral("GPSDataAvailable"),
                QStringLiteral("IPTCDataComplete")});
}
