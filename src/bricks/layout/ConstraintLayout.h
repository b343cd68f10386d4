#pragma once

#include "ConstraintSolver.h"
#include "LayoutConstraint.h"

#include <QHash>
#include <QLayout>
#include <QList>
#include <QRectF>
#include <QSet>

#include <memory>

class LayoutGuide;

// A layout that places a wall's children by the constraints installed on the wall, solved
// together with each child's size hint as its intrinsic size: a child resists growing beyond its
// hint with its hugging priority and shrinking below it with its compression resistance.
// Children follow every resize through the solver's edit variables.
class ConstraintLayout : public QLayout
{
    Q_OBJECT

public:
    explicit ConstraintLayout(QWidget *parent);
    ~ConstraintLayout() override;

    // Adds constraints to a view as the view's own. Size constraints of a view on itself also
    // become its minimum and maximum size, so that any Qt layout respects them; constraints
    // between views need a ConstraintLayout on the target, which is installed when it has no
    // layout yet.
    static void installConstraints(QWidget *target, const QList<LayoutConstraint> &constraints);
    // Every constraint installed on the view, wherever it is kept.
    static QList<LayoutConstraint> constraintsOf(QWidget *view);
    // Constraints installed on a view whose Qt layout cannot hold them.
    static bool hasStrayConstraints(QWidget *view);

    static void setContentHuggingPriority(QWidget *view, float priority, Qt::Orientation axis);
    static void setCompressionResistancePriority(QWidget *view, float priority,
                                                 Qt::Orientation axis);
    static float contentHuggingPriority(const QWidget *view, Qt::Orientation axis);
    static float compressionResistancePriority(const QWidget *view, Qt::Orientation axis);

    void addConstraints(const QList<LayoutConstraint> &constraints);
    const QList<LayoutConstraint> &constraints() const { return m_constraints; }

    // The axes on which the child's position or size could move without any constraint
    // getting worse: the constraints leave it free.
    Qt::Orientations ambiguousAxes(const LayoutItem &item);
    QRectF solvedFrame(const LayoutItem &item);
    int ignoredConstraintCount();

    void addItem(QLayoutItem *item) override;
    QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;
    int count() const override;
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    void setGeometry(const QRect &rect) override;
    void invalidate() override;
    Qt::Orientations expandingDirections() const override;

private:
    struct Frame
    {
        ConstraintSolver::Variable x, y, w, h;
    };

    void ensureSolved() const;
    void rebuild() const;
    std::optional<ConstraintSolver::Expression> expressionFor(const LayoutItem &item,
                                                              LayoutAttribute attribute,
                                                              double factor) const;
    bool tryRebuild() const;
    QList<int> intrinsicSignature() const;
    bool addConstraintToSolver(const LayoutConstraint &constraint) const;
    bool addToSolver(const ConstraintSolver::Expression &e, ConstraintSolver::Relation relation,
                     double strength, const LayoutConstraint *constraint) const;

    QList<QLayoutItem *> m_items;
    QList<LayoutConstraint> m_constraints;

    // The solved state, rebuilt after any change of children, constraints or size hints.
    mutable std::unique_ptr<ConstraintSolver> m_solver;
    mutable Frame m_container {};
    mutable QHash<QWidget *, Frame> m_frames;
    mutable QHash<LayoutGuide *, Frame> m_guideFrames;
    mutable QSizeF m_fittingSize;
    mutable QSizeF m_suggested {-1, -1};
    mutable int m_ignored = 0;
    mutable int m_addition = 0;
    mutable QSet<int> m_refused;
    mutable bool m_dirty = true;
    mutable bool m_hintsDirty = true;
    mutable QList<int> m_signature;
};
