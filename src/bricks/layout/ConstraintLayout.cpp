#include "ConstraintLayout.h"

#include "ConstraintSystem.h"
#include "bricks/ViewAttachments.h"
#include "bricks/ViewTree.h"

#include <QAbstractScrollArea>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QWidget>

#include <cmath>

namespace {

void applyAsSizeLimit(QWidget *view, const LayoutConstraint &c)
{
    if (c.priority < LayoutPriority::required || c.second.view() || c.second.guide())
        return;
    const bool width = c.firstAttribute == LayoutAttribute::width;
    if (!width && c.firstAttribute != LayoutAttribute::height)
        return;
    const int value = int(std::lround(c.constant));
    if (c.relation != LayoutRelation::lessThanOrEqual)
        width ? view->setMinimumWidth(value) : view->setMinimumHeight(value);
    if (c.relation != LayoutRelation::greaterThanOrEqual)
        width ? view->setMaximumWidth(value) : view->setMaximumHeight(value);
}

int axisIndex(Qt::Orientation axis)
{
    return axis == Qt::Horizontal ? 0 : 1;
}

} // namespace

ConstraintLayout::ConstraintLayout(QWidget *parent)
    : QLayout(parent)
    , m_system(std::make_shared<ConstraintSystem>(parent))
{
    setContentsMargins(0, 0, 0, 0);
    setSizeConstraint(QLayout::SetNoConstraint);
    m_system->addMember(this);
}

ConstraintLayout::~ConstraintLayout()
{
    m_system->removeMember(this);
    qDeleteAll(m_items);
}

void ConstraintLayout::installConstraints(QWidget *, const QList<LayoutConstraint> &constraints)
{
    for (const LayoutConstraint &c : constraints) {
        const bool relation
            = c.secondAttribute != LayoutAttribute::notAnAttribute && !c.second.isNull();
        if (relation || c.first.guide()) {
            ConstraintSystem::holdConstraint(c);
            continue;
        }
        // A view's constraint on itself: whoever places the view solves it.
        QWidget *view = c.first.view();
        if (!view)
            continue;
        ViewAttachments::of(view).ownConstraints.append(c);
        applyAsSizeLimit(view, c);
        if (auto *layout = qobject_cast<ConstraintLayout *>(
                view->parentWidget() ? view->parentWidget()->layout() : nullptr)) {
            layout->m_system->markDirty();
            layout->invalidate();
        }
    }
}

QList<LayoutConstraint> ConstraintLayout::constraintsOf(QWidget *view)
{
    QList<LayoutConstraint> all;
    if (const ViewAttachment *attached = ViewAttachments::find(view))
        all += attached->ownConstraints;
    if (auto *layout = qobject_cast<ConstraintLayout *>(view->layout()))
        all += layout->constraints();
    return all;
}

bool ConstraintLayout::canHoldConstraints(const QWidget *view)
{
    return !view->layout() && !dynamic_cast<const SubviewAdopting *>(view)
        && !qobject_cast<const QAbstractScrollArea *>(view)
        && !qobject_cast<const QSplitter *>(view) && !qobject_cast<const QTabWidget *>(view)
        && !qobject_cast<const QStackedWidget *>(view);
}

// Children made before the layout are its items from the start.
ConstraintLayout *ConstraintLayout::installOn(QWidget *view)
{
    auto *layout = new ConstraintLayout(view);
    for (QObject *child : view->children())
        if (auto *widget = qobject_cast<QWidget *>(child); widget && !widget->isWindow())
            layout->addWidget(widget);
    return layout;
}

void ConstraintLayout::setContentHuggingPriority(QWidget *view, float priority,
                                                 Qt::Orientation axis)
{
    ViewAttachments::of(view).contentHuggingPriority[axisIndex(axis)] = priority;
    view->updateGeometry();
}

void ConstraintLayout::setCompressionResistancePriority(QWidget *view, float priority,
                                                        Qt::Orientation axis)
{
    ViewAttachments::of(view).compressionResistancePriority[axisIndex(axis)] = priority;
    view->updateGeometry();
}

// Without an explicit priority the size policy decides: a widget that may not grow hugs
// firmly, as controls do, and an expanding one least.
float ConstraintLayout::contentHuggingPriority(const QWidget *view, Qt::Orientation axis)
{
    if (const ViewAttachment *attached = ViewAttachments::find(view))
        if (const auto explicitValue = attached->contentHuggingPriority[axisIndex(axis)])
            return *explicitValue;
    const QSizePolicy::Policy policy = axis == Qt::Horizontal
        ? view->sizePolicy().horizontalPolicy()
        : view->sizePolicy().verticalPolicy();
    if (policy & QSizePolicy::ExpandFlag)
        return LayoutPriority::defaultLow;
    // A widget that may grow but does not ask to gives the extra room to one that does.
    return (policy & QSizePolicy::GrowFlag) ? LayoutPriority::defaultLow + 1
                                            : LayoutPriority::defaultHigh;
}

float ConstraintLayout::compressionResistancePriority(const QWidget *view, Qt::Orientation axis)
{
    if (const ViewAttachment *attached = ViewAttachments::find(view))
        if (const auto explicitValue = attached->compressionResistancePriority[axisIndex(axis)])
            return *explicitValue;
    return LayoutPriority::defaultHigh;
}

Qt::Orientations ConstraintLayout::ambiguousAxes(const LayoutItem &item)
{
    return m_system->ambiguousAxes(item);
}

QRectF ConstraintLayout::solvedFrame(const LayoutItem &item)
{
    return m_system->solvedFrame(item);
}

int ConstraintLayout::fittingHeight(int width) const
{
    return int(std::ceil(m_system->fittingHeight(this, width) - 1e-6));
}

void ConstraintLayout::addItem(QLayoutItem *item)
{
    m_items.append(item);
    m_system->markDirty();
    invalidate();
}

QLayoutItem *ConstraintLayout::itemAt(int index) const
{
    return m_items.value(index);
}

QLayoutItem *ConstraintLayout::takeAt(int index)
{
    if (index < 0 || index >= m_items.size())
        return nullptr;
    QLayoutItem *item = m_items.takeAt(index);
    m_system->markDirty();
    invalidate();
    return item;
}

int ConstraintLayout::count() const
{
    return int(m_items.size());
}

// Qt invalidates a layout on every activation; the solver is only rebuilt when the children,
// the constraints or what the children ask for have changed.
void ConstraintLayout::invalidate()
{
    m_system->markHintsDirty();
    QLayout::invalidate();
}

Qt::Orientations ConstraintLayout::expandingDirections() const
{
    return Qt::Horizontal | Qt::Vertical;
}

QSize ConstraintLayout::sizeHint() const
{
    const QSizeF fitting = m_system->fittingSize(this);
    return QSize(int(std::ceil(fitting.width() - 1e-6)), int(std::ceil(fitting.height() - 1e-6)));
}

QSize ConstraintLayout::minimumSize() const
{
    return sizeHint();
}

void ConstraintLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    m_system->place(this);
}
