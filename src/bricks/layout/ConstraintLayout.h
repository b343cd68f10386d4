#pragma once

#include "LayoutConstraint.h"

#include <QLayout>
#include <QList>
#include <QRectF>

#include <memory>

class ConstraintSystem;

// A layout that places a wall's children by the constraints installed on the wall, solved
// together with each child's size hint as its intrinsic size: a child resists growing beyond its
// hint with its hugging priority and shrinking below it with its compression resistance.
// Children follow every resize through the solver's edit variables. Walls whose constraints
// relate each other's views share one ConstraintSystem.
class ConstraintLayout : public QLayout
{
    Q_OBJECT

public:
    explicit ConstraintLayout(QWidget *parent);
    ~ConstraintLayout() override;

    // Installs constraints, whatever view they were given to: a constraint of a view on itself
    // (its size) stays with the view and also becomes its minimum and maximum size, so that a Qt
    // layout respects it too; a relation between views goes to the container that holds them
    // all, which solves it together with every wall in between. A relation that no wall can
    // hold stops the program, as any error of a description does.
    static void installConstraints(QWidget *target, const QList<LayoutConstraint> &constraints);
    // The constraints a view holds: its own and, for a wall, those relating its views.
    static QList<LayoutConstraint> constraintsOf(QWidget *view);
    // Whether constraints between views inside the view can be given a constraint layout there.
    static bool canHoldConstraints(const QWidget *view);
    static ConstraintLayout *installOn(QWidget *view);

    static void setContentHuggingPriority(QWidget *view, float priority, Qt::Orientation axis);
    static void setCompressionResistancePriority(QWidget *view, float priority,
                                                 Qt::Orientation axis);
    static float contentHuggingPriority(const QWidget *view, Qt::Orientation axis);
    static float compressionResistancePriority(const QWidget *view, Qt::Orientation axis);

    const QList<LayoutConstraint> &constraints() const { return m_constraints; }
    ConstraintSystem &system() const { return *m_system; }

    // The axes on which the child's position or size could move without any constraint
    // getting worse: the constraints leave it free.
    Qt::Orientations ambiguousAxes(const LayoutItem &item);
    // Where the child was placed, before rounding to whole pixels.
    QRectF solvedFrame(const LayoutItem &item);
    // The least height of the wall at the given width.
    int fittingHeight(int width) const;

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
    friend class ConstraintSystem;

    QList<QLayoutItem *> m_items;
    QList<LayoutConstraint> m_constraints;
    std::shared_ptr<ConstraintSystem> m_system;
};
