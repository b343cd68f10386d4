#include "BriskSplitView.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

BriskSplitView::BriskSplitView(Qt::Orientation orientation, QWidget *parent)
    : QSplitter(orientation, parent)
    , m_delegate(std::make_unique<SplitViewDelegate>())
{
    setOpaqueResize(true);
    setChildrenCollapsible(true);
    // A thin line to see, in a band wide enough to grab.
    setHandleWidth(5);
}

BriskSplitView::~BriskSplitView() = default;

void BriskSplitView::setDelegate(std::unique_ptr<SplitViewDelegate> delegate)
{
    m_delegate = delegate ? std::move(delegate) : std::make_unique<SplitViewDelegate>();
    applyDelegateRules();
}

// The panes' own minimum sizes give way to the dividers: the delegate decides how small a pane
// may be dragged, and the program may set any position.
void BriskSplitView::adoptSubview(QWidget *child)
{
    QSizePolicy policy = child->sizePolicy();
    if (orientation() == Qt::Vertical)
        policy.setVerticalPolicy(QSizePolicy::Ignored);
    else
        policy.setHorizontalPolicy(QSizePolicy::Ignored);
    child->setSizePolicy(policy);
    addWidget(child);
    applyDelegateRules();
}

void BriskSplitView::applyDelegateRules()
{
    m_delegate->subviewsChanged(this);
    for (int i = 0; i < count(); ++i)
        setStretchFactor(i, m_delegate->shouldAdjustSizeOfSubview(this, widget(i)) ? 1 : 0);
}

int BriskSplitView::extent() const
{
    return orientation() == Qt::Vertical ? height() : width();
}

double BriskSplitView::dividerPosition(int dividerIndex) const
{
    const QSplitterHandle *divider = handle(dividerIndex + 1);
    if (!divider)
        return 0;
    return orientation() == Qt::Vertical ? divider->y() : divider->x();
}

void BriskSplitView::setPosition(double position, int dividerIndex)
{
    QList<int> sizes = this->sizes();
    if (dividerIndex < 0 || dividerIndex + 1 >= sizes.size())
        return;
    int start = 0;
    for (int i = 0; i < dividerIndex; ++i)
        start += sizes[i] + handleWidth();
    const int combined = sizes[dividerIndex] + sizes[dividerIndex + 1];
    const int before = std::clamp(int(std::lround(position)) - start, 0, combined);
    for (const int i : {dividerIndex, dividerIndex + 1}) {
        const int size = i == dividerIndex ? before : combined - before;
        if (size == 0 && sizes[i] > 0)
            m_sizeBeforeCollapse.insert(widget(i), sizes[i]);
    }
    sizes[dividerIndex] = before;
    sizes[dividerIndex + 1] = combined - before;
    setSizes(sizes);
}

bool BriskSplitView::isSubviewCollapsed(const QWidget *subview) const
{
    const int index = indexOf(const_cast<QWidget *>(subview));
    return index >= 0 && sizes().value(index) == 0;
}

// The divider moves between the start of the pane before it and the end of the one after, and
// within that as far as the delegate lets it.
BriskSplitView::DividerRange BriskSplitView::dividerRange(int dividerIndex) const
{
    const QList<int> sizes = this->sizes();
    DividerRange range;
    for (int i = 0; i < dividerIndex; ++i)
        range.low += sizes[i] + handleWidth();
    range.high = range.low + sizes[dividerIndex] + sizes[dividerIndex + 1];
    range.minimum
        = std::max(range.low, m_delegate->constrainMinCoordinate(this, range.low, dividerIndex));
    range.maximum = std::max(
        range.minimum,
        std::min(range.high, m_delegate->constrainMaxCoordinate(this, range.high, dividerIndex)));
    return range;
}

void BriskSplitView::dragDivider(int dividerIndex, double proposedPosition)
{
    if (dividerIndex < 0 || dividerIndex + 1 >= count())
        return;
    const DividerRange range = dividerRange(dividerIndex);
    // Past a limit, a pane that may collapse does so once the divider is more than halfway to
    // the end; before that it stays at the limit.
    double position = proposedPosition;
    if (position > range.maximum) {
        const bool collapse = m_delegate->canCollapseSubview(this, widget(dividerIndex + 1))
            && position > (range.maximum + range.high) / 2;
        position = collapse ? range.high : range.maximum;
    } else if (position < range.minimum) {
        const bool collapse = m_delegate->canCollapseSubview(this, widget(dividerIndex))
            && position < (range.low + range.minimum) / 2;
        position = collapse ? range.low : range.minimum;
    }
    setPosition(position, dividerIndex);
}

// A double click collapses the pane that the delegate names, or brings it back as it was.
void BriskSplitView::doubleClickDivider(int dividerIndex)
{
    if (dividerIndex < 0 || dividerIndex + 1 >= count())
        return;
    const DividerRange range = dividerRange(dividerIndex);
    for (const bool after : {true, false}) {
        QWidget *subview = widget(after ? dividerIndex + 1 : dividerIndex);
        if (!m_delegate->shouldCollapseSubviewForDoubleClickOnDivider(this, subview, dividerIndex))
            continue;
        if (!isSubviewCollapsed(subview)) {
            setPosition(after ? range.high : range.low, dividerIndex);
            return;
        }
        const int size = m_sizeBeforeCollapse.value(subview, 0);
        const double position = after ? range.high - size : range.low + size;
        setPosition(std::clamp(position, range.minimum, range.maximum), dividerIndex);
        return;
    }
}

QSplitterHandle *BriskSplitView::createHandle()
{
    return new BriskSplitViewHandle(orientation(), this);
}

BriskSplitViewHandle::BriskSplitViewHandle(Qt::Orientation orientation, BriskSplitView *parent)
    : QSplitterHandle(orientation, parent)
{ }

int BriskSplitViewHandle::dividerIndex() const
{
    const QSplitter *split = splitter();
    for (int i = 1; i < split->count(); ++i)
        if (split->handle(i) == this)
            return i - 1;
    return -1;
}

double BriskSplitViewHandle::along(const QPointF &point) const
{
    const QPointF inSplit = mapToParent(point);
    return orientation() == Qt::Vertical ? inSplit.y() : inSplit.x();
}

void BriskSplitViewHandle::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_grabOffset = orientation() == Qt::Vertical ? event->position().y() : event->position().x();
}

void BriskSplitViewHandle::mouseMoveEvent(QMouseEvent *event)
{
    if (m_grabOffset < 0 || !(event->buttons() & Qt::LeftButton))
        return;
    static_cast<BriskSplitView *>(splitter())
        ->dragDivider(dividerIndex(), along(event->position()) - m_grabOffset);
}

void BriskSplitViewHandle::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_grabOffset = -1;
}

void BriskSplitViewHandle::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        static_cast<BriskSplitView *>(splitter())->doubleClickDivider(dividerIndex());
}

void BriskSplitViewHandle::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QColor line = palette().color(QPalette::Mid);
    if (orientation() == Qt::Vertical)
        painter.fillRect(QRect(0, height() / 2, width(), 1), line);
    else
        painter.fillRect(QRect(width() / 2, 0, 1, height()), line);
}
