#include "BriskSplitViewDelegate.h"

#include "BriskSplitView.h"

bool BriskSplitViewDelegate::canCollapseSubview(const BriskSplitView *,
                                                const QWidget *subview) const
{
    return subview && subview == infoPane;
}

bool BriskSplitViewDelegate::shouldCollapseSubviewForDoubleClickOnDivider(const BriskSplitView *,
                                                                          const QWidget *subview,
                                                                          int) const
{
    return subview && subview == infoPane;
}

bool BriskSplitViewDelegate::shouldAdjustSizeOfSubview(const BriskSplitView *,
                                                       const QWidget *subview) const
{
    return subview != infoPane;
}

// The pane never under its minimum height, nor over its maximum; the divider's own thickness
// is not part of the pane.
double BriskSplitViewDelegate::constrainMaxCoordinate(const BriskSplitView *split, double,
                                                      int) const
{
    return split->extent() - split->dividerThickness() - minimumHeightOfInfoPane;
}

double BriskSplitViewDelegate::constrainMinCoordinate(const BriskSplitView *split, double,
                                                      int) const
{
    return split->extent() - split->dividerThickness() - maximumHeightOfInfoPane;
}

void BriskSplitViewDelegate::subviewsChanged(BriskSplitView *split)
{
    splitView = split;
    if (split->count() < 2)
        return;
    if (!mainView)
        mainView = split->widget(0);
    if (!infoPane)
        infoPane = split->widget(split->count() - 1);
}
