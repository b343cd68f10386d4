#pragma once

#include "PreviewTableViewController.h"

// The compact table beside the map: the name and the two status columns.
class MinimalPreviewTableViewController : public PreviewTableViewController
{
    Q_OBJECT

public:
    using PreviewTableViewController::PreviewTableViewController;

    void updateColumns() override;
};
