#include "ConstraintLayout.h"

#include "LayoutGuide.h"
#include "commons/Log.h"

#include <QFontMetrics>
#include <QWidget>

#include <cmath>

namespace {

using Relation = ConstraintSolver::Relation;

// Priorities below required become weights that grow by a factor of ten every 125 steps, so
// that a stronger priority outweighs the errors of many weaker ones.
double strengthOf(float priority)
{
    if (priority >= LayoutPriority::required)
        return ConstraintSolver::Required;
    return std::pow(10.0, std::max(priority, 1.0f) / 125.0);
}

constexpr double ProbeStrength = 1e-3;
constexpr double ProbeDistance = 100;
// The window's size gives way only to required constraints.
constexpr float ContainerSizePriority = 999;

QHash<QWidget *, QList<LayoutConstraint>> &ownConstraints()
{
    static QHash<QWidget *, QList<LayoutConstraint>> table;
    return table;
}
QHash<QWidget *, QList<LayoutConstraint>> &strayConstraints()
{
    static QHash<QWidget *, QList<LayoutConstraint>> table;
    return table;
}
void forgetOnDestruction(QWidget *view)
{
    if (ownConstraints().contains(view) || strayConstraints().contains(view))
        return;
    QObject::connect(view, &QObject::destroyed, [view] {
        ownConstraints().remove(view);
        strayConstraints().remove(view);
    });
}

bool isSelfSizeConstraint(const LayoutConstraint &c, QWidget *target)
{
    return c.first.view() == target && c.second.isNull()
        && (c.firstAttribute == LayoutAttribute::width
            || c.firstAttribute == LayoutAttribute::height);
}

void applyAsSizeLimit(QWidget *view, const LayoutConstraint &c)
{
    if (c.priority < LayoutPriority::required)
        return;
    const int value = int(std::lround(c.constant));
    const bool width = c.firstAttribute == LayoutAttribute::width;
    if (c.relation != LayoutRelation::lessThanOrEqual)
        width ? view->setMinimumWidth(value) : view->setMinimumHeight(value);
    if (c.relation != LayoutRelation::greaterThanOrEqual)
        width ? view->setMaximumWidth(value) : view->setMaximumHeight(value);
}

const char *priorityProperty(bool hugging, Qt::Orientation axis)
{
    if (hugging)
        return axis == Qt::Horizontal ? "bricksHuggingH" : "bricksHuggingV";
    return axis == Qt::Horizontal ? "bricksCompressionH" : "bricksCompressionV";
}

} // namespace

ConstraintLayout::ConstraintLayout(QWidget *parent)
    : QLayout(parent)
{
    setContentsMargins(0, 0, 0, 0);
    setSizeConstraint(QLayout::SetNoConstraint);
}

ConstraintLayout::~ConstraintLayout()
{
    qDeleteAll(m_items);
}

void ConstraintLayout::installConstraints(QWidget *target,
                                          const QList<LayoutConstraint> &constraints)
{
    QList<LayoutConstraint> between;
    for (const LayoutConstraint &c : constraints) {
        if (isSelfSizeConstraint(c, target)) {
            forgetOnDestruction(target);
            ownConstraints()[target].append(c);
            applyAsSizeLimit(target, c);
            if (auto *layout = qobject_cast<ConstraintLayout *>(
                    target->parentWidget() ? target->parentWidget()->layout() : nullptr))
                layout->addConstraints({}); // the parent solves with the child's own ones
        } else {
            between.append(c);
        }
    }
    if (between.isEmpty())
        return;
    if (!target->layout())
        new ConstraintLayout(target);
    if (auto *layout = qobject_cast<ConstraintLayout *>(target->layout())) {
        layout->addConstraints(between);
        return;
    }
    Log::line(QStringLiteral("constraints installed on %1, which is managed by a %2: they are "
                             "not applied")
                  .arg(QString::fromLatin1(target->metaObject()->className()),
                       QString::fromLatin1(target->layout()->metaObject()->className())));
    forgetOnDestruction(target);
    strayConstraints()[target].append(between);
}

QList<LayoutConstraint> ConstraintLayout::constraintsOf(QWidget *view)
{
    QList<LayoutConstraint> all = ownConstraints().value(view) + strayConstraints().value(view);
    if (auto *layout = qobject_cast<ConstraintLayout *>(view->layout()))
        all += layout->constraints();
    return all;
}

bool ConstraintLayout::hasStrayConstraints(QWidget *view)
{
    return !strayConstraints().value(view).isEmpty();
}

void ConstraintLayout::setContentHuggingPriority(QWidget *view, float priority,
                                                 Qt::Orientation axis)
{
    view->setProperty(priorityProperty(true, axis), priority);
    view->updateGeometry();
}

void ConstraintLayout::setCompressionResistancePriority(QWidget *view, float priority,
                                                        Qt::Orientation axis)
{
    view->setProperty(priorityProperty(false, axis), priority);
    view->updateGeometry();
}

// Without an explicit priority the size policy decides: a widget that may not grow hugs
// firmly, as controls do, and an expanding one least.
float ConstraintLayout::contentHuggingPriority(const QWidget *view, Qt::Orientation axis)
{
    const QVariant explicitValue = view->property(priorityProperty(true, axis));
    if (explicitValue.isValid())
        return explicitValue.toFloat();
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
    const QVariant explicitValue = view->property(priorityProperty(false, axis));
    return explicitValue.isValid() ? explicitValue.toFloat() : LayoutPriority::defaultHigh;
}

void ConstraintLayout::addConstraints(const QList<LayoutConstraint> &constraints)
{
    m_constraints += constraints;
    m_dirty = true;
    invalidate();
}

void ConstraintLayout::addItem(QLayoutItem *item)
{
    m_items.append(item);
    m_dirty = true;
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
    m_dirty = true;
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
    m_hintsDirty = true;
    QLayout::invalidate();
}

Qt::Orientations ConstraintLayout::expandingDirections() const
{
    return Qt::Horizontal | Qt::Vertical;
}

QSize ConstraintLayout::sizeHint() const
{
    ensureSolved();
    const QMargins m = contentsMargins();
    return QSize(int(std::ceil(m_fittingSize.width() - 1e-6)) + m.left() + m.right(),
                 int(std::ceil(m_fittingSize.height() - 1e-6)) + m.top() + m.bottom());
}

QSize ConstraintLayout::minimumSize() const
{
    return sizeHint();
}

void ConstraintLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    ensureSolved();
    const QRect area = rect.marginsRemoved(contentsMargins());
    if (m_suggested != QSizeF(area.size())) {
        m_suggested = QSizeF(area.size());
        m_solver->suggestValue(m_container.w, area.width());
        m_solver->suggestValue(m_container.h, area.height());
    }
    for (auto it = m_frames.cbegin(); it != m_frames.cend(); ++it) {
        const Frame &f = it.value();
        const double x = m_solver->value(f.x), y = m_solver->value(f.y);
        const double w = m_solver->value(f.w), h = m_solver->value(f.h);
        const int left = int(std::lround(x)), top = int(std::lround(y));
        it.key()->setGeometry(QRect(area.x() + left, area.y() + top,
                                    std::max(0, int(std::lround(x + w)) - left),
                                    std::max(0, int(std::lround(y + h)) - top)));
    }
    for (auto it = m_guideFrames.cbegin(); it != m_guideFrames.cend(); ++it) {
        const Frame &f = it.value();
        it.key()->setFrame(QRectF(m_solver->value(f.x), m_solver->value(f.y), m_solver->value(f.w),
                                  m_solver->value(f.h)));
    }
}

void ConstraintLayout::ensureSolved() const
{
    if (m_hintsDirty && !m_dirty) {
        m_hintsDirty = false;
        if (intrinsicSignature() != m_signature)
            m_dirty = true;
    }
    if (m_dirty || !m_solver)
        rebuild();
}

QList<int> ConstraintLayout::intrinsicSignature() const
{
    QList<int> signature;
    signature.reserve(m_items.size() * 10);
    for (QLayoutItem *item : m_items) {
        QWidget *child = item->widget();
        if (!child)
            continue;
        const QSize hint = child->sizeHint(), low = child->minimumSize(),
                    high = child->maximumSize();
        signature << hint.width() << hint.height() << low.width() << low.height() << high.width()
                  << high.height();
        for (const Qt::Orientation axis : {Qt::Horizontal, Qt::Vertical})
            signature << int(contentHuggingPriority(child, axis))
                      << int(compressionResistancePriority(child, axis));
    }
    return signature;
}

std::optional<ConstraintSolver::Expression> ConstraintLayout::expressionFor(
    const LayoutItem &item, LayoutAttribute attribute, double factor) const
{
    const Frame *frame = nullptr;
    QWidget *fontSource = nullptr;
    if (item.guide()) {
        const auto it = m_guideFrames.constFind(item.guide());
        if (it == m_guideFrames.cend())
            return std::nullopt;
        frame = &it.value();
    } else if (item.view() == parentWidget()) {
        frame = &m_container;
        fontSource = item.view();
    } else {
        const auto it = m_frames.constFind(item.view());
        if (it == m_frames.cend())
            return std::nullopt;
        frame = &it.value();
        fontSource = item.view();
    }
    ConstraintSolver::Expression e;
    const auto add = [&](ConstraintSolver::Variable v, double c) {
        e.terms.push_back({v, c * factor});
    };
    switch (attribute) {
    case LayoutAttribute::left:
    case LayoutAttribute::leading:
        add(frame->x, 1);
        break;
    case LayoutAttribute::right:
    case LayoutAttribute::trailing:
        add(frame->x, 1);
        add(frame->w, 1);
        break;
    case LayoutAttribute::top:
        add(frame->y, 1);
        break;
    case LayoutAttribute::bottom:
        add(frame->y, 1);
        add(frame->h, 1);
        break;
    case LayoutAttribute::width:
        add(frame->w, 1);
        break;
    case LayoutAttribute::height:
        add(frame->h, 1);
        break;
    case LayoutAttribute::centerX:
        add(frame->x, 1);
        add(frame->w, 0.5);
        break;
    case LayoutAttribute::centerY:
        add(frame->y, 1);
        add(frame->h, 0.5);
        break;
    case LayoutAttribute::firstBaseline:
    case LayoutAttribute::lastBaseline: {
        // A single line of text sits centred: its baseline is below the centre by half of
        // ascent minus descent.
        add(frame->y, 1);
        add(frame->h, 0.5);
        if (fontSource) {
            const QFontMetrics metrics(fontSource->font());
            e.constant += factor * (metrics.ascent() - metrics.descent()) / 2.0;
        }
        break;
    }
    case LayoutAttribute::notAnAttribute:
        break;
    }
    return e;
}

bool ConstraintLayout::addConstraintToSolver(const LayoutConstraint &c) const
{
    auto first = expressionFor(c.first, c.firstAttribute, 1);
    std::optional<ConstraintSolver::Expression> second;
    if (first && !c.second.isNull() && c.secondAttribute != LayoutAttribute::notAnAttribute) {
        second = expressionFor(c.second, c.secondAttribute, -c.multiplier);
        if (!second)
            first.reset();
    }
    if (!first) {
        ++m_ignored;
        Log::line(QStringLiteral("constraint ignored, it relates views of other walls: ")
                  + c.debugDescription());
        return true;
    }
    ConstraintSolver::Expression e = *first;
    if (second) {
        e.terms.insert(e.terms.end(), second->terms.begin(), second->terms.end());
        e.constant += second->constant;
    }
    e.constant -= c.constant;
    const Relation relation = c.relation == LayoutRelation::equal ? Relation::Equal
        : c.relation == LayoutRelation::lessThanOrEqual           ? Relation::LessOrEqual
                                                                  : Relation::GreaterOrEqual;
    return addToSolver(e, relation, strengthOf(c.priority), &c);
}

// Every addition is numbered; one that the solver refuses is left out of the next attempt.
bool ConstraintLayout::addToSolver(const ConstraintSolver::Expression &e, Relation relation,
                                   double strength, const LayoutConstraint *constraint) const
{
    const int number = m_addition++;
    if (m_refused.contains(number))
        return true;
    if (m_solver->addConstraint(e, relation, strength))
        return true;
    Log::line(QStringLiteral("Unable to simultaneously satisfy constraints, breaking ")
              + (constraint ? constraint->debugDescription() : QStringLiteral("a size limit")));
    m_refused.insert(number);
    return m_solver->isValid();
}

void ConstraintLayout::rebuild() const
{
    m_refused.clear();
    while (!tryRebuild()) { }
    m_hintsDirty = false;
    m_signature = intrinsicSignature();
}

bool ConstraintLayout::tryRebuild() const
{
    m_dirty = false;
    m_ignored = 0;
    m_addition = 0;
    m_solver = std::make_unique<ConstraintSolver>();
    m_frames.clear();
    m_guideFrames.clear();
    m_suggested = QSizeF(-1, -1);
    ConstraintSolver &s = *m_solver;
    const auto newFrame = [&s] {
        return Frame {s.newVariable(), s.newVariable(), s.newVariable(), s.newVariable()};
    };
    const auto require = [this](ConstraintSolver::Variable v, Relation r, double value,
                                double strength = ConstraintSolver::Required) {
        return addToSolver({{{v, 1}}, -value}, r, strength, nullptr);
    };

    m_container = newFrame();
    require(m_container.x, Relation::Equal, 0);
    require(m_container.y, Relation::Equal, 0);

    QList<QWidget *> children;
    for (QLayoutItem *item : m_items) {
        if (QWidget *widget = item->widget()) {
            m_frames.insert(widget, newFrame());
            children.append(widget);
        }
    }
    if (QWidget *owner = parentWidget()) {
        for (QObject *child : owner->children())
            if (auto *guide = qobject_cast<LayoutGuide *>(child))
                m_guideFrames.insert(guide, newFrame());
    }

    for (const LayoutConstraint &c : m_constraints)
        if (!addConstraintToSolver(c))
            return false;
    for (QWidget *child : children)
        for (const LayoutConstraint &c : ownConstraints().value(child))
            if (!addConstraintToSolver(c))
                return false;

    for (QWidget *child : children) {
        const Frame f = m_frames.value(child);
        const QSize hint = child->sizeHint();
        const QSize minimum = child->minimumSize();
        const QSize maximum = child->maximumSize();
        for (const Qt::Orientation axis : {Qt::Horizontal, Qt::Vertical}) {
            const bool horizontal = axis == Qt::Horizontal;
            const ConstraintSolver::Variable v = horizontal ? f.w : f.h;
            const int intrinsic = horizontal ? hint.width() : hint.height();
            bool fine = true;
            if (intrinsic >= 0) {
                fine = fine
                    && require(v, Relation::LessOrEqual, intrinsic,
                               strengthOf(contentHuggingPriority(child, axis)))
                    && require(v, Relation::GreaterOrEqual, intrinsic,
                               strengthOf(compressionResistancePriority(child, axis)));
            }
            const int low = horizontal ? minimum.width() : minimum.height();
            const int high = horizontal ? maximum.width() : maximum.height();
            fine = fine && require(v, Relation::GreaterOrEqual, std::max(low, 0));
            if (high < QWIDGETSIZE_MAX)
                fine = fine && require(v, Relation::LessOrEqual, high);
            if (!fine)
                return false;
        }
    }

    // The fitting size: as small as the constraints allow, pulled at a low priority.
    ConstraintSolver::ConstraintId fitW = 0, fitH = 0;
    s.addConstraint({{{m_container.w, 1}}, 0}, Relation::Equal,
                    strengthOf(LayoutPriority::fittingSizeLevel), &fitW);
    s.addConstraint({{{m_container.h, 1}}, 0}, Relation::Equal,
                    strengthOf(LayoutPriority::fittingSizeLevel), &fitH);
    m_fittingSize
        = QSizeF(std::max(0.0, s.value(m_container.w)), std::max(0.0, s.value(m_container.h)));
    s.removeConstraint(fitW);
    s.removeConstraint(fitH);
    s.addEditVariable(m_container.w, strengthOf(ContainerSizePriority));
    s.addEditVariable(m_container.h, strengthOf(ContainerSizePriority));
    return true;
}

QRectF ConstraintLayout::solvedFrame(const LayoutItem &item)
{
    ensureSolved();
    const Frame *f = item.guide() ? &m_guideFrames[item.guide()] : &m_frames[item.view()];
    return QRectF(m_solver->value(f->x), m_solver->value(f->y), m_solver->value(f->w),
                  m_solver->value(f->h));
}

int ConstraintLayout::ignoredConstraintCount()
{
    ensureSolved();
    return m_ignored;
}

Qt::Orientations ConstraintLayout::ambiguousAxes(const LayoutItem &item)
{
    ensureSolved();
    Frame f;
    if (item.guide() && m_guideFrames.contains(item.guide()))
        f = m_guideFrames.value(item.guide());
    else if (item.view() && m_frames.contains(item.view()))
        f = m_frames.value(item.view());
    else
        return {};
    if (m_suggested.width() < 0 && parentWidget()) {
        const QSize size = parentWidget()->size();
        m_suggested = QSizeF(size);
        m_solver->suggestValue(m_container.w, size.width());
        m_solver->suggestValue(m_container.h, size.height());
    }
    // Pull each variable a little away, more weakly than any real constraint: if it follows
    // in either direction, nothing decides it.
    Qt::Orientations axes;
    const std::pair<ConstraintSolver::Variable, Qt::Orientation> probes[]
        = {{f.x, Qt::Horizontal}, {f.w, Qt::Horizontal}, {f.y, Qt::Vertical}, {f.h, Qt::Vertical}};
    for (const auto &[variable, axis] : probes) {
        if (axes & axis)
            continue;
        const double solved = m_solver->value(variable);
        for (const double direction : {1.0, -1.0}) {
            ConstraintSolver::ConstraintId probe = 0;
            const double target = solved + direction * ProbeDistance;
            if (!m_solver->addConstraint({{{variable, 1}}, -target}, Relation::Equal, ProbeStrength,
                                         &probe))
                continue;
            const bool moved = std::fabs(m_solver->value(variable) - solved) > 0.5;
            m_solver->removeConstraint(probe);
            if (moved) {
                axes |= axis;
                break;
            }
        }
    }
    return axes;
}
