#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

class LayoutGuide;

// The numbering follows the usual constraint attribute numbers: left 1, right 2, top 3, ...
enum class LayoutAttribute {
    notAnAttribute = 0,
    left = 1,
    right = 2,
    top = 3,
    bottom = 4,
    leading = 5,
    trailing = 6,
    width = 7,
    height = 8,
    centerX = 9,
    centerY = 10,
    lastBaseline = 11,
    firstBaseline = 12,
};

enum class LayoutRelation { lessThanOrEqual = -1, equal = 0, greaterThanOrEqual = 1 };

namespace LayoutPriority {
constexpr float required = 1000;
constexpr float defaultHigh = 750;
constexpr float defaultLow = 250;
constexpr float fittingSizeLevel = 50;
} // namespace LayoutPriority

// What a constraint can be about: a view, or a layout guide of a view.
class LayoutItem
{
public:
    LayoutItem() = default;
    LayoutItem(QWidget *view) // NOLINT(google-explicit-constructor)
        : m_view(view)
    { }
    LayoutItem(LayoutGuide *guide); // NOLINT(google-explicit-constructor)

    bool isNull() const { return !m_view && !m_guide; }
    QWidget *view() const { return m_view; }
    LayoutGuide *guide() const { return m_guide; }
    // The view that holds the item's constraints: a view's superview or itself, a guide's owner.
    QWidget *owningView() const;
    QWidget *constraintTarget() const { return owningView(); }
    bool operator==(const LayoutItem &other) const
    {
        return m_view == other.m_view && m_guide == other.m_guide;
    }
    QString debugName() const;

private:
    QPointer<QWidget> m_view;
    LayoutGuide *m_guide = nullptr;
};

// first.firstAttribute (relation) second.secondAttribute * multiplier + constant
struct LayoutConstraint
{
    LayoutItem first;
    LayoutAttribute firstAttribute = LayoutAttribute::notAnAttribute;
    LayoutRelation relation = LayoutRelation::equal;
    LayoutItem second;
    LayoutAttribute secondAttribute = LayoutAttribute::notAnAttribute;
    double multiplier = 1;
    double constant = 0;
    float priority = LayoutPriority::required;

    static LayoutConstraint make(LayoutItem item, LayoutAttribute attribute,
                                 LayoutRelation relatedBy, LayoutItem toItem,
                                 LayoutAttribute toAttribute, double multiplier, double constant)
    {
        return {item, attribute, relatedBy, toItem, toAttribute, multiplier, constant};
    }
    QString debugDescription() const;
};
