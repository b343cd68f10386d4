#include "ConstraintSystem.h"

#include "ConstraintLayout.h"
#include "LayoutGuide.h"
#include "bricks/BricksLogging.h"
#include "bricks/ViewAttachments.h"
#include "commons/Log.h"

#include <QAbstractScrollArea>
#include <QFontMetrics>
#include <QWidget>

#include <algorithm>
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
// Where a window or a Qt layout puts a wall gives way only to required constraints.
constexpr float PlacementPriority = 999;

ConstraintLayout *constraintLayoutOf(const QWidget *view)
{
    return view ? qobject_cast<ConstraintLayout *>(view->layout()) : nullptr;
}

QWidget *anchorOf(const LayoutItem &item)
{
    return item.guide() ? item.guide()->owningView() : item.view();
}

QByteArray describe(const LayoutConstraint &constraint)
{
    return constraint.debugDescription().toUtf8();
}

const char *classOf(const QWidget *view)
{
    return view->metaObject()->className();
}

int depthBelow(const QWidget *view, const QWidget *ancestor)
{
    int depth = 0;
    for (const QWidget *w = view; w && w != ancestor; w = w->parentWidget())
        ++depth;
    return depth;
}

} // namespace

ConstraintSystem::ConstraintSystem(QWidget *host)
    : m_host(host)
{ }

void ConstraintSystem::holdConstraint(const LayoutConstraint &constraint)
{
    QList<LayoutItem> items {constraint.first};
    if (!constraint.second.isNull())
        items.append(constraint.second);

    // The container that holds every item: a view holds what is inside it, so a constraint
    // between a wall and its children is the wall's own.
    QWidget *holder = anchorOf(items.first());
    for (const LayoutItem &item : items) {
        const QWidget *anchor = anchorOf(item);
        while (holder && holder != anchor && !holder->isAncestorOf(anchor))
            holder = holder->parentWidget();
    }
    if (!holder)
        qFatal("constraint relates views that share no container: %s",
               describe(constraint).constData());

    ConstraintLayout *layout = constraintLayoutOf(holder);
    if (!layout && !holder->layout() && ConstraintLayout::canHoldConstraints(holder))
        layout = ConstraintLayout::installOn(holder);
    std::shared_ptr<ConstraintSystem> system;
    if (layout) {
        system = layout->m_system;
    } else {
        std::shared_ptr<ConstraintSystem> &hosted
            = ViewAttachments::of(holder).hostedConstraintSystem;
        if (!hosted)
            hosted = std::make_shared<ConstraintSystem>(holder);
        system = hosted;
    }

    // Every wall between the holder and an item is solved together with the holder.
    bool movable = false;
    for (const LayoutItem &item : items) {
        QWidget *anchor = anchorOf(item);
        if (anchor == holder) {
            if (item.guide() && !layout)
                qFatal("constraint %s names a guide of a %s, which has no constraint layout",
                       describe(constraint).constData(), classOf(holder));
            movable = movable || item.guide();
            continue;
        }
        // A view is placed by its parent; a guide by the wall that owns it.
        QWidget *wall = item.guide() ? anchor : anchor->parentWidget();
        if (wall == holder && !layout) {
            // Placed by the holder's own layout, where it stands: a wall there still solves
            // its children with the others.
            if (!constraintLayoutOf(anchor))
                continue;
            wall = anchor;
        } else {
            movable = true;
        }
        for (; wall != holder; wall = wall->parentWidget()) {
            ConstraintLayout *member = constraintLayoutOf(wall);
            if (!member)
                qFatal("constraint %s crosses a %s, which places its children itself: put the "
                       "views in walls",
                       describe(constraint).constData(), classOf(wall));
            system = joined(system, member->m_system);
        }
    }
    if (!movable)
        qFatal("constraint %s cannot hold: it relates only views that a %s places itself",
               describe(constraint).constData(), classOf(holder));

    if (layout)
        layout->m_constraints.append(constraint);
    else
        system->m_hosted.append(constraint);
    system->checkStructure();
    system->markDirty();
    for (const QPointer<ConstraintLayout> &member : std::as_const(system->m_members))
        if (member)
            member->invalidate();
}

std::shared_ptr<ConstraintSystem> ConstraintSystem::joined(std::shared_ptr<ConstraintSystem> a,
                                                           std::shared_ptr<ConstraintSystem> b)
{
    if (a == b)
        return a;
    // The system of the outer host takes the other one in.
    if (b->m_host && a->m_host && b->m_host->isAncestorOf(a->m_host))
        std::swap(a, b);
    if (!a->m_host || !b->m_host || !(a->m_host == b->m_host || a->m_host->isAncestorOf(b->m_host)))
        qFatal("constraints join walls that share no container");
    for (const QPointer<ConstraintLayout> &member : std::as_const(b->m_members)) {
        if (!member)
            continue;
        member->m_system = a;
        a->m_members.append(member);
    }
    a->m_hosted += b->m_hosted;
    b->m_members.clear();
    b->m_hosted.clear();
    if (b->m_host && !constraintLayoutOf(b->m_host))
        ViewAttachments::of(b->m_host).hostedConstraintSystem = a;
    a->markDirty();
    return a;
}

void ConstraintSystem::checkStructure() const
{
    for (const QPointer<ConstraintLayout> &member : m_members) {
        if (!member)
            continue;
        const QWidget *wall = member->parentWidget();
        if (wall == m_host)
            continue;
        const QWidget *parent = wall->parentWidget();
        if (parent != m_host && !isMemberWall(parent))
            qFatal("a wall of joined constraints stands in a %s, which places its children "
                   "itself",
                   parent ? classOf(parent) : "window");
    }
}

bool ConstraintSystem::isMemberWall(const QWidget *view) const
{
    if (!view)
        return false;
    const ConstraintLayout *layout = constraintLayoutOf(view);
    return layout && layout->m_system.get() == this;
}

void ConstraintSystem::addMember(ConstraintLayout *member)
{
    m_members.append(member);
    m_dirty = true;
}

void ConstraintSystem::removeMember(ConstraintLayout *member)
{
    m_members.removeAll(member);
    m_members.removeAll(nullptr);
    m_dirty = true;
}

void ConstraintSystem::ensureSolved()
{
    // A size asked for while the solver is being built comes from the solver in the making.
    if (m_rebuilding)
        return;
    if (m_hintsDirty && !m_dirty) {
        m_hintsDirty = false;
        if (intrinsicSignature() != m_signature)
            m_dirty = true;
    }
    if (m_dirty || !m_solver)
        rebuild();
}

QList<int> ConstraintSystem::intrinsicSignature() const
{
    QList<int> signature;
    for (const QPointer<ConstraintLayout> &member : m_members) {
        if (!member)
            continue;
        for (QLayoutItem *item : std::as_const(member->m_items)) {
            QWidget *child = item->widget();
            if (!child)
                continue;
            const QSize low = child->minimumSize(), high = child->maximumSize();
            signature << low.width() << low.height() << high.width() << high.height()
                      << m_placedWidth.value(child, -1);
            if (isMemberWall(child) || qobject_cast<QAbstractScrollArea *>(child))
                continue;
            const QSize hint = child->sizeHint();
            signature << hint.width() << hint.height();
            for (const Qt::Orientation axis : {Qt::Horizontal, Qt::Vertical})
                signature << int(ConstraintLayout::contentHuggingPriority(child, axis))
                          << int(ConstraintLayout::compressionResistancePriority(child, axis));
        }
    }
    return signature;
}

void ConstraintSystem::rebuild()
{
    m_refused.clear();
    m_rebuilding = true;
    while (!tryRebuild()) { }
    m_rebuilding = false;
    m_hintsDirty = false;
    m_signature = intrinsicSignature();
}

bool ConstraintSystem::tryRebuild()
{
    m_dirty = false;
    m_addition = 0;
    m_solver = std::make_unique<ConstraintSolver>();
    m_frames.clear();
    m_guideFrames.clear();
    m_external.clear();
    m_suggested.clear();
    m_members.removeAll(nullptr);
    ConstraintSolver &s = *m_solver;
    const auto newFrame = [&s] {
        return Frame {s.newVariable(), s.newVariable(), s.newVariable(), s.newVariable()};
    };
    const auto require = [this](ConstraintSolver::Variable v, Relation r, double value,
                                double strength = ConstraintSolver::Required) {
        return addToSolver({{{v, 1}}, -value}, r, strength, nullptr);
    };

    // A wall moved out from under the others leaves with a system of its own.
    for (bool detached = true; detached;) {
        detached = false;
        for (const QPointer<ConstraintLayout> &member : QList(m_members)) {
            QWidget *wall = member->parentWidget();
            QWidget *parent = wall->parentWidget();
            if ((m_host && wall == m_host) || isMemberWall(parent) || (m_host && parent == m_host))
                continue;
            m_members.removeAll(member);
            member->m_system = std::make_shared<ConstraintSystem>(wall);
            member->m_system->addMember(member);
            member->invalidate();
            detached = true;
        }
    }

    // Parents before children, so that a wall's frame is there when its children come.
    QList<ConstraintLayout *> members;
    for (const QPointer<ConstraintLayout> &member : std::as_const(m_members))
        members.append(member);
    std::stable_sort(members.begin(), members.end(), [this](auto *a, auto *b) {
        return depthBelow(a->parentWidget(), m_host) < depthBelow(b->parentWidget(), m_host);
    });

    const bool hostIsWall = isMemberWall(m_host);
    if (hostIsWall) {
        const Frame container = newFrame();
        require(container.x, Relation::Equal, 0);
        require(container.y, Relation::Equal, 0);
        m_frames.insert(m_host, container);
    }
    QList<QWidget *> children;
    for (ConstraintLayout *member : std::as_const(members)) {
        QWidget *wall = member->parentWidget();
        if (!m_frames.contains(wall)) {
            m_frames.insert(wall, newFrame());
            m_external.insert(wall, {});
        }
        for (QLayoutItem *item : std::as_const(member->m_items)) {
            if (QWidget *child = item->widget()) {
                m_frames.insert(child, newFrame());
                children.append(child);
            }
        }
        for (QObject *child : wall->children())
            if (auto *guide = qobject_cast<LayoutGuide *>(child))
                m_guideFrames.insert(guide, newFrame());
    }

    dropStaleConstraints();
    m_placedWidth.removeIf([this](const auto &entry) { return !m_frames.contains(entry.key()); });
    m_heightForWidthUsed.clear();
    for (ConstraintLayout *member : std::as_const(members))
        for (const LayoutConstraint &c : std::as_const(member->m_constraints))
            if (!addConstraintToSolver(c))
                return false;
    for (const LayoutConstraint &c : std::as_const(m_hosted))
        if (!addConstraintToSolver(c))
            return false;
    for (QWidget *child : std::as_const(children))
        if (const ViewAttachment *attached = ViewAttachments::find(child))
            for (const LayoutConstraint &c : attached->ownConstraints)
                if (!addConstraintToSolver(c))
                    return false;

    for (QWidget *child : std::as_const(children)) {
        const Frame f = m_frames.value(child);
        // A wall of the system is as large as its content makes it; a leaf asks for its hint,
        // except a scrolling view, which takes whatever size its constraints give it.
        const bool leaf = !isMemberWall(child) && !qobject_cast<QAbstractScrollArea *>(child);
        QSize hint = leaf ? child->sizeHint() : QSize(-1, -1);
        // Wrapping text is as high as it needs at the width it was given last.
        if (leaf && child->hasHeightForWidth()) {
            const int width = m_placedWidth.value(child, hint.width());
            m_heightForWidthUsed.insert(child, width);
            hint.setHeight(child->heightForWidth(width));
        }
        const QSize minimum = child->minimumSize();
        const QSize maximum = child->maximumSize();
        for (const Qt::Orientation axis : {Qt::Horizontal, Qt::Vertical}) {
            const bool horizontal = axis == Qt::Horizontal;
            const ConstraintSolver::Variable v = horizontal ? f.w : f.h;
            const int intrinsic = horizontal ? hint.width() : hint.height();
            bool fine = true;
            if (leaf && intrinsic >= 0) {
                fine = fine
                    && require(v, Relation::LessOrEqual, intrinsic,
                               strengthOf(ConstraintLayout::contentHuggingPriority(child, axis)))
                    && require(v, Relation::GreaterOrEqual, intrinsic,
                               strengthOf(
                                   ConstraintLayout::compressionResistancePriority(child, axis)));
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

    // The fitting sizes: as small as the constraints allow, pulled at a low priority. Walls that
    // the host's layout places are shrunk together, since their constraints may tie them.
    QList<ConstraintSolver::ConstraintId> pulls;
    const auto pull = [&](ConstraintSolver::Variable v) {
        ConstraintSolver::ConstraintId id = 0;
        s.addConstraint({{{v, 1}}, 0}, Relation::Equal,
                        strengthOf(LayoutPriority::fittingSizeLevel), &id);
        pulls.append(id);
    };
    QList<const QWidget *> placed = m_external.keys();
    if (hostIsWall)
        placed.append(m_host);
    for (const QWidget *wall : std::as_const(placed)) {
        pull(m_frames.value(wall).w);
        pull(m_frames.value(wall).h);
    }
    for (const QWidget *wall : std::as_const(placed)) {
        const Frame f = m_frames.value(wall);
        const QSizeF fitting(std::max(0.0, s.value(f.w)), std::max(0.0, s.value(f.h)));
        if (wall == m_host)
            m_hostFitting = fitting;
        else
            m_external.insert(wall, fitting);
    }
    for (const ConstraintSolver::ConstraintId id : std::as_const(pulls))
        s.removeConstraint(id);
    for (const QWidget *wall : std::as_const(placed)) {
        const Frame f = m_frames.value(wall);
        if (wall != m_host) {
            s.addEditVariable(f.x, strengthOf(PlacementPriority));
            s.addEditVariable(f.y, strengthOf(PlacementPriority));
        }
        s.addEditVariable(f.w, strengthOf(PlacementPriority));
        s.addEditVariable(f.h, strengthOf(PlacementPriority));
    }
    return true;
}

// A relation whose view has left the walls of this system, or is gone, goes with it.
void ConstraintSystem::dropStaleConstraints()
{
    const auto known = [this](const LayoutItem &item) {
        return item.guide() ? m_guideFrames.contains(item.guide()) : m_frames.contains(item.view());
    };
    const auto stale = [&](const LayoutConstraint &c) {
        const bool relation = c.secondAttribute != LayoutAttribute::notAnAttribute;
        if (known(c.first) && (!relation || known(c.second)))
            return false;
        qCDebug(lcBricks).noquote()
            << "constraint removed, its view left the wall:" << c.debugDescription();
        return true;
    };
    for (const QPointer<ConstraintLayout> &member : std::as_const(m_members))
        member->m_constraints.removeIf(stale);
    m_hosted.removeIf(stale);
}

std::optional<ConstraintSolver::Expression> ConstraintSystem::expressionFor(
    const LayoutItem &item, LayoutAttribute attribute, double factor) const
{
    const Frame *frame = nullptr;
    const QWidget *fontSource = nullptr;
    if (item.guide()) {
        const auto it = m_guideFrames.constFind(item.guide());
        if (it == m_guideFrames.cend())
            return std::nullopt;
        frame = &it.value();
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

bool ConstraintSystem::addConstraintToSolver(const LayoutConstraint &c)
{
    auto first = expressionFor(c.first, c.firstAttribute, 1);
    if (!first)
        return true; // a view that has left: its own constraints leave with it
    ConstraintSolver::Expression e = *first;
    if (!c.second.isNull() && c.secondAttribute != LayoutAttribute::notAnAttribute) {
        const auto second = expressionFor(c.second, c.secondAttribute, -c.multiplier);
        if (!second)
            return true;
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
bool ConstraintSystem::addToSolver(const ConstraintSolver::Expression &e, Relation relation,
                                   double strength, const LayoutConstraint *constraint)
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

// Where the window and the host's own layout have put the walls that they place.
bool ConstraintSystem::suggestPlacements()
{
    if (!m_host)
        return false;
    bool changed = false;
    const auto suggest = [&](const QWidget *wall, const QRectF &rect) {
        const auto it = m_suggested.constFind(wall);
        if (it != m_suggested.cend() && *it == rect)
            return;
        m_suggested.insert(wall, rect);
        const Frame f = m_frames.value(wall);
        if (wall != m_host) {
            m_solver->suggestValue(f.x, rect.x());
            m_solver->suggestValue(f.y, rect.y());
        }
        m_solver->suggestValue(f.w, rect.width());
        m_solver->suggestValue(f.h, rect.height());
        changed = true;
    };
    if (m_frames.contains(m_host) && isMemberWall(m_host)) {
        const QRect given = constraintLayoutOf(m_host)->geometry();
        suggest(m_host, QRectF(given.isValid() ? given : m_host->rect()));
    }
    for (auto it = m_external.cbegin(); it != m_external.cend(); ++it) {
        const QWidget *wall = it.key();
        suggest(wall, QRectF(QRect(wall->mapTo(m_host, QPoint(0, 0)), wall->size())));
    }
    return changed;
}

QRectF ConstraintSystem::absoluteFrame(const Frame &f) const
{
    return QRectF(m_solver->value(f.x), m_solver->value(f.y), m_solver->value(f.w),
                  m_solver->value(f.h));
}

// The solved top left corner of a view in the host's coordinates; the host's own is 0, 0.
QPointF ConstraintSystem::originOf(const QWidget *view) const
{
    const auto it = m_frames.constFind(view);
    if (view == m_host || it == m_frames.cend())
        return {};
    return QPointF(m_solver->value(it->x), m_solver->value(it->y));
}

void ConstraintSystem::placeChildren(ConstraintLayout *member)
{
    QWidget *wall = member->parentWidget();
    const QPointF origin = originOf(wall);
    const int originX = int(std::lround(origin.x())), originY = int(std::lround(origin.y()));
    const QPoint offset = member->geometry().topLeft();
    for (QLayoutItem *item : std::as_const(member->m_items)) {
        QWidget *child = item->widget();
        const auto it = child ? m_frames.constFind(child) : m_frames.cend();
        if (it == m_frames.cend())
            continue;
        const QRectF r = absoluteFrame(*it);
        const int left = int(std::lround(r.x())), top = int(std::lround(r.y()));
        const int width = std::max(0, int(std::lround(r.right())) - left);
        child->setGeometry(QRect(offset.x() + left - originX, offset.y() + top - originY, width,
                                 std::max(0, int(std::lround(r.bottom())) - top)));
        if (child->hasHeightForWidth()) {
            m_placedWidth.insert(child, width);
            const auto used = m_heightForWidthUsed.constFind(child);
            if (used != m_heightForWidthUsed.cend() && *used != width)
                m_heightsStale = true;
        }
    }
    for (auto it = m_guideFrames.cbegin(); it != m_guideFrames.cend(); ++it)
        if (it.key()->owningView() == wall)
            it.key()->setFrame(absoluteFrame(*it).translated(-origin));
}

void ConstraintSystem::place(ConstraintLayout *member)
{
    ensureSolved();
    if (!suggestPlacements())
        placeChildren(member);
    else
        placeAll();
    // Text that wraps got another width than the one its height was found for: solve once more
    // with the heights at those widths, and let whoever holds the host know its size changed.
    if (m_heightsStale && !m_placingAgain) {
        m_heightsStale = false;
        m_placingAgain = true;
        m_dirty = true;
        ensureSolved();
        suggestPlacements();
        placeAll();
        m_placingAgain = false;
        if (m_host)
            m_host->updateGeometry();
    }
}

// The solution moved: every wall of the system may have children to move.
void ConstraintSystem::placeAll()
{
    const QList<QPointer<ConstraintLayout>> members = m_members;
    for (const QPointer<ConstraintLayout> &each : members)
        if (each)
            placeChildren(each);
}

QSizeF ConstraintSystem::fittingSize(const ConstraintLayout *member)
{
    ensureSolved();
    const QWidget *wall = member->parentWidget();
    if (wall == m_host)
        return m_hostFitting;
    const auto external = m_external.constFind(wall);
    if (external != m_external.cend())
        return *external;
    return absoluteFrame(m_frames.value(wall)).size();
}

double ConstraintSystem::fittingHeight(const ConstraintLayout *member, double width)
{
    ensureSolved();
    const QWidget *wall = member->parentWidget();
    if (wall != m_host)
        return fittingSize(member).height();
    suggestPlacements();
    const Frame f = m_frames.value(wall);
    const QRectF suggested = m_suggested.value(wall);
    ConstraintSolver &s = *m_solver;
    s.suggestValue(f.w, width);
    s.removeEditVariable(f.h);
    ConstraintSolver::ConstraintId pull = 0;
    s.addConstraint({{{f.h, 1}}, 0}, Relation::Equal, strengthOf(LayoutPriority::fittingSizeLevel),
                    &pull);
    const double height = std::max(0.0, s.value(f.h));
    s.removeConstraint(pull);
    s.addEditVariable(f.h, strengthOf(PlacementPriority));
    s.suggestValue(f.w, suggested.width());
    s.suggestValue(f.h, suggested.height());
    return height;
}

QRectF ConstraintSystem::solvedFrame(const LayoutItem &item)
{
    ensureSolved();
    if (item.guide()) {
        const auto it = m_guideFrames.constFind(item.guide());
        return it == m_guideFrames.cend()
            ? QRectF()
            : absoluteFrame(*it).translated(-originOf(item.guide()->owningView()));
    }
    const auto it = m_frames.constFind(item.view());
    if (it == m_frames.cend() || item.view() == m_host)
        return QRectF(item.view() ? item.view()->geometry() : QRect());
    return absoluteFrame(*it).translated(-originOf(item.view()->parentWidget()));
}

Qt::Orientations ConstraintSystem::ambiguousAxes(const LayoutItem &item)
{
    ensureSolved();
    Frame f;
    if (item.guide() && m_guideFrames.contains(item.guide()))
        f = m_guideFrames.value(item.guide());
    else if (item.view() && m_frames.contains(item.view()) && item.view() != m_host)
        f = m_frames.value(item.view());
    else
        return {};
    suggestPlacements();
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
