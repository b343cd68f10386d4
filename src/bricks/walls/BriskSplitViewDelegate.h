#pragma once

#include "SplitViewDelegate.h"

#include <QPointer>
#include <QWidget>

// The split of the window: the main view over the info pane. Only the info pane collapses, by
// dragging or by a double click on the divider; the main view takes all of a change of the
// window's height; dragged, the pane stays between its minimum and maximum height.
class BriskSplitViewDelegate : public SplitViewDelegate
{
public:
    const double maximumHeightOfInfoPane = 400;
    const double minimumHeightOfInfoPane = 200;
    // The first and the last subview, unless set otherwise.
    QPointer<QWidget> mainView;
    QPointer<QWidget> infoPane;
    QPointer<BriskSplitView> splitView;

    bool canCollapseSubview(const BriskSplitView *split, const QWidget *subview) const override;
    bool shouldCollapseSubviewForDoubleClickOnDivider(const BriskSplitView *split,
                                                      const QWidget *subview,
                                                      int dividerIndex) const override;
    bool shouldAdjustSizeOfSubview(const BriskSplitView *split,
                                   const QWidget *subview) const override;
    double constrainMaxCoordinate(const BriskSplitView *split, double proposedMaximum,
                                  int dividerIndex) const override;
    double constrainMinCoordinate(const BriskSplitView *split, double proposedMinimum,
                                  int dividerIndex) const override;
    void subviewsChanged(BriskSplitView *split) override;
};
