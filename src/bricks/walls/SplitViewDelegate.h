#pragma once

class BriskSplitView;
class QWidget;

// What a split view asks before it moves a divider. Without answers of its own, a delegate
// lets every divider go anywhere, collapses nothing, and lets every subview take its part of a
// resize.
class SplitViewDelegate
{
public:
    virtual ~SplitViewDelegate() = default;

    virtual bool canCollapseSubview(const BriskSplitView *, const QWidget *) const { return false; }
    virtual bool shouldCollapseSubviewForDoubleClickOnDivider(const BriskSplitView *,
                                                              const QWidget *, int) const
    {
        return false;
    }
    virtual bool shouldAdjustSizeOfSubview(const BriskSplitView *, const QWidget *) const
    {
        return true;
    }
    // Coordinates are divider positions along the split, from its top or left edge.
    virtual double constrainMaxCoordinate(const BriskSplitView *, double proposedMaximum, int) const
    {
        return proposedMaximum;
    }
    virtual double constrainMinCoordinate(const BriskSplitView *, double proposedMinimum, int) const
    {
        return proposedMinimum;
    }
    // The split's subviews have changed.
    virtual void subviewsChanged(BriskSplitView *) { }
};
