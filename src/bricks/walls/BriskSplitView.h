#pragma once

#include "SplitViewDelegate.h"
#include "bricks/ViewTree.h"

#include <QHash>
#include <QSplitter>
#include <QSplitterHandle>

#include <memory>

// A split of two or more panes whose dividers follow the rules of a delegate: how far a divider
// may be dragged, which panes collapse when it is dragged past that or double-clicked, and which
// panes take a change of the split's size. A program sets a divider where it wants with
// setPosition, without the delegate's limits.
class BriskSplitView
    : public QSplitter
    , public SubviewAdopting
{
    Q_OBJECT

public:
    explicit BriskSplitView(Qt::Orientation orientation = Qt::Vertical, QWidget *parent = nullptr);
    ~BriskSplitView() override;

    void setDelegate(std::unique_ptr<SplitViewDelegate> delegate);
    SplitViewDelegate *delegate() const { return m_delegate.get(); }

    void adoptSubview(QWidget *child) override;

    // The length of the split along its orientation: its height when the panes are stacked.
    int extent() const;
    int dividerThickness() const { return handleWidth(); }
    double dividerPosition(int dividerIndex) const;
    void setPosition(double position, int dividerIndex);
    bool isSubviewCollapsed(const QWidget *subview) const;

    // What a user's drag and double click do, after the delegate's rules.
    void dragDivider(int dividerIndex, double proposedPosition);
    void doubleClickDivider(int dividerIndex);

protected:
    QSplitterHandle *createHandle() override;

private:
    struct DividerRange
    {
        double low = 0, high = 0; // the ends of the two panes around the divider
        double minimum = 0, maximum = 0; // where the delegate lets a drag go
    };
    DividerRange dividerRange(int dividerIndex) const;
    void applyDelegateRules();

    std::unique_ptr<SplitViewDelegate> m_delegate;
    // The size a collapsed pane had, to come back to.
    QHash<const QWidget *, int> m_sizeBeforeCollapse;
};

class BriskSplitViewHandle : public QSplitterHandle
{
    Q_OBJECT

public:
    BriskSplitViewHandle(Qt::Orientation orientation, BriskSplitView *parent);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    int dividerIndex() const;
    double along(const QPointF &point) const;

    double m_grabOffset = -1;
};
