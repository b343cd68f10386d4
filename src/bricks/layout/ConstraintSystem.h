#pragma once

#include "ConstraintSolver.h"
#include "LayoutConstraint.h"

#include <QHash>
#include <QList>
#include <QPointer>
#include <QRectF>
#include <QSet>
#include <QSizeF>

#include <memory>
#include <optional>

class ConstraintLayout;
class LayoutGuide;

// One solver for the walls whose constraints depend on each other. Each wall starts with a
// system of its own; a constraint that relates views of different walls joins their systems into
// the system of the container that holds both (the host), so that it is solved together with
// everything it touches. Positions are kept in the host's coordinates. A member wall is placed
// either by another member (its frame is solved) or, when the host is not a wall but a container
// with a Qt layout of its own (a stack of fragments), by that layout (its frame is fixed to where
// the layout put it). Main thread only.
class ConstraintSystem : public std::enable_shared_from_this<ConstraintSystem>
{
public:
    explicit ConstraintSystem(QWidget *host);

    QWidget *host() const { return m_host; }

    // Gives a relation between views to the container that holds them all, and joins the walls
    // between that container and the views into its system. A relation that no wall could hold
    // is an error of the description and stops the program.
    static void holdConstraint(const LayoutConstraint &constraint);

    void addMember(ConstraintLayout *member);
    void removeMember(ConstraintLayout *member);
    // The children, the constraints or the sizes asked for have changed.
    void markDirty() { m_dirty = true; }
    void markHintsDirty() { m_hintsDirty = true; }

    // What a member wall asks for: its fitting size, and its children placed.
    QSizeF fittingSize(const ConstraintLayout *member);
    double fittingHeight(const ConstraintLayout *member, double width);
    void place(ConstraintLayout *member);

    // For the validator: where an item was placed, relative to the view that holds it, and the
    // axes along which nothing decides it.
    QRectF solvedFrame(const LayoutItem &item);
    Qt::Orientations ambiguousAxes(const LayoutItem &item);

private:
    struct Frame
    {
        ConstraintSolver::Variable x, y, w, h;
    };

    // The one of two systems whose host holds the other's, having taken the other in.
    static std::shared_ptr<ConstraintSystem> joined(std::shared_ptr<ConstraintSystem> a,
                                                    std::shared_ptr<ConstraintSystem> b);
    void checkStructure() const;
    bool isMemberWall(const QWidget *view) const;

    void ensureSolved();
    void rebuild();
    bool tryRebuild();
    void dropStaleConstraints();
    QList<int> intrinsicSignature() const;
    std::optional<ConstraintSolver::Expression> expressionFor(const LayoutItem &item,
                                                              LayoutAttribute attribute,
                                                              double factor) const;
    bool addConstraintToSolver(const LayoutConstraint &constraint);
    bool addToSolver(const ConstraintSolver::Expression &e, ConstraintSolver::Relation relation,
                     double strength, const LayoutConstraint *constraint);
    bool suggestPlacements();
    void placeChildren(ConstraintLayout *member);
    void placeAll();
    QRectF absoluteFrame(const Frame &frame) const;
    QPointF originOf(const QWidget *view) const;

    QPointer<QWidget> m_host;
    QList<QPointer<ConstraintLayout>> m_members;
    // Relations held by a host that is not a wall itself.
    QList<LayoutConstraint> m_hosted;

    // The solved state, rebuilt after any change of members, children, constraints or hints.
    std::unique_ptr<ConstraintSolver> m_solver;
    QHash<const QWidget *, Frame> m_frames;
    QHash<LayoutGuide *, Frame> m_guideFrames;
    // Member walls placed by the host's own Qt layout, and their fitting sizes.
    QHash<const QWidget *, QSizeF> m_external;
    QSizeF m_hostFitting;
    QHash<const QWidget *, QRectF> m_suggested;
    QSet<int> m_refused;
    int m_addition = 0;
    bool m_dirty = true;
    bool m_hintsDirty = true;
    bool m_rebuilding = false;
    // Widths of children whose height depends on their width: the one each was last placed at,
    // and the one the solution found its height for.
    QHash<const QWidget *, int> m_placedWidth;
    QHash<const QWidget *, int> m_heightForWidthUsed;
    bool m_heightsStale = false;
    bool m_placingAgain = false;
    QList<int> m_signature;
};
