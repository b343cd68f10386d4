#pragma once

// Layout rules as values: a recipe names its views by tag or capture and becomes constraints
// once the container and its children exist.

#include "LayoutConstraint.h"
#include "bricks/LayoutTag.h"
#include "bricks/ViewCaptures.h"

#include <QList>

#include <functional>
#include <memory>
#include <optional>
#include <type_traits>

enum class SmartLayoutDirectionsType {
    below,
    above,
    before,
    after,
    top,
    bottom,
    left,
    right,
    centerX,
    centerY,
    baseline,
    firstBaseline,
    lastBaseline,
};

// below, above, before and after are shorthands for attribute pairs and have no attribute.
LayoutAttribute asLayoutAttribute(SmartLayoutDirectionsType direction);

class LayoutDirective
{
public:
    virtual ~LayoutDirective() = default;
    virtual QList<LayoutConstraint> createConstraints(QWidget *containerView) const = 0;
    virtual LayoutItem subjectItem(QWidget *containerView) const = 0;
    virtual QWidget *constraintsTarget(QWidget *containerView) const { return containerView; }
};

using LayoutDirectiveRef = std::shared_ptr<const LayoutDirective>;

class ViewResolver
{
public:
    virtual ~ViewResolver() = default;
    virtual std::optional<LayoutItem> resolveItem(QWidget *relativeTo) const = 0;
    virtual QString resolverDebugDescription() const = 0;
    // Resolves or stops: a recipe that names a missing view is an error of the description.
    LayoutItem subjectItem(QWidget *relativeTo) const;
};

// A directive that only names its subject.
class ResolvingLayoutDirective
    : public LayoutDirective
    , public ViewResolver
{
public:
    QList<LayoutConstraint> createConstraints(QWidget *) const override { return {}; }
    LayoutItem subjectItem(QWidget *containerView) const override
    {
        return ViewResolver::subjectItem(containerView);
    }
};

// Anything that stands for a subject in a recipe: a tag, a capture or a directive.
class LayoutSubject
{
public:
    LayoutSubject(const LayoutTag &tag); // NOLINT(google-explicit-constructor)
    LayoutSubject(const ViewCaptureReference &capture); // NOLINT(google-explicit-constructor)
    template<typename D, typename = std::enable_if_t<std::is_base_of_v<LayoutDirective, D>>>
    LayoutSubject(const D &directive) // NOLINT(google-explicit-constructor)
        : directive(std::make_shared<D>(directive))
    { }
    LayoutDirectiveRef directive;
};

// A list of directives written in braces; nested lists flatten in order.
class LayoutDirectiveList
{
public:
    LayoutDirectiveList() = default;
    LayoutDirectiveList(std::initializer_list<LayoutDirectiveList> groups);
    template<typename D, typename = std::enable_if_t<std::is_base_of_v<LayoutDirective, D>>>
    LayoutDirectiveList(const D &directive) // NOLINT(google-explicit-constructor)
        : m_items {std::make_shared<D>(directive)}
    { }
    void append(const LayoutDirectiveList &more) { m_items += more.m_items; }
    const QList<LayoutDirectiveRef> &asLayoutDirective() const { return m_items; }

private:
    QList<LayoutDirectiveRef> m_items;
};

class RelationshipLayoutDirective : public LayoutDirective
{
public:
    RelationshipLayoutDirective(LayoutSubject subject, LayoutSubject object, double inset,
                                SmartLayoutDirectionsType subjectDirection,
                                SmartLayoutDirectionsType objectDirection,
                                float priority = LayoutPriority::required);
    QList<LayoutConstraint> createConstraints(QWidget *containerView) const override;
    LayoutItem subjectItem(QWidget *containerView) const override;

    LayoutDirectiveRef subject;
    LayoutDirectiveRef object;
    double inset;
    SmartLayoutDirectionsType subjectDirection;
    SmartLayoutDirectionsType objectDirection;
    float priority;
};

class RelationshipWithContainer : public LayoutDirective
{
public:
    RelationshipWithContainer(LayoutSubject subject, double inset,
                              SmartLayoutDirectionsType subjectDirection,
                              SmartLayoutDirectionsType containerDirection,
                              float priority = LayoutPriority::required);
    QList<LayoutConstraint> createConstraints(QWidget *containerView) const override;
    LayoutItem subjectItem(QWidget *containerView) const override;

    LayoutDirectiveRef subject;
    double inset;
    SmartLayoutDirectionsType subjectDirection;
    SmartLayoutDirectionsType containerDirection;
    float priority;
};

class ConstantValueLayoutDirective : public LayoutDirective
{
public:
    ConstantValueLayoutDirective(LayoutSubject subject, LayoutAttribute attribute,
                                 LayoutRelation relatedBy, double value,
                                 float priority = LayoutPriority::required);
    QList<LayoutConstraint> createConstraints(QWidget *containerView) const override;
    LayoutItem subjectItem(QWidget *containerView) const override;

    LayoutDirectiveRef subject;
    LayoutAttribute attribute;
    LayoutRelation relatedBy;
    double value;
    float priority;
};

class RelativeValueLayoutDirective : public LayoutDirective
{
public:
    RelativeValueLayoutDirective(LayoutSubject subject, LayoutSubject object,
                                 LayoutAttribute attribute,
                                 LayoutRelation relatedBy = LayoutRelation::equal);
    QList<LayoutConstraint> createConstraints(QWidget *containerView) const override;
    LayoutItem subjectItem(QWidget *containerView) const override;

    LayoutDirectiveRef subject;
    LayoutDirectiveRef object;
    LayoutAttribute attribute;
    LayoutRelation relatedBy;
};

class SubjectFirstLayoutDirectiveList : public LayoutDirective
{
public:
    explicit SubjectFirstLayoutDirectiveList(QList<LayoutDirectiveRef> array)
        : array(std::move(array))
    { }
    QList<LayoutConstraint> createConstraints(QWidget *containerView) const override;
    LayoutItem subjectItem(QWidget *containerView) const override;

    QList<LayoutDirectiveRef> array;
};

namespace LayoutRecipeNamespace {

// The first view with the tag in the container's subtree, else a guide with that tag.
class Tag : public ResolvingLayoutDirective
{
public:
    explicit Tag(const LayoutTag &tag)
        : tag(tag)
    { }
    std::optional<LayoutItem> resolveItem(QWidget *relativeTo) const override;
    QString resolverDebugDescription() const override;

    LayoutTag tag;
};

class Capture : public ResolvingLayoutDirective
{
public:
    explicit Capture(const ViewCaptureReference &reference)
        : reference(reference)
    { }
    std::optional<LayoutItem> resolveItem(QWidget *relativeTo) const override;
    QString resolverDebugDescription() const override;

    ViewCaptureReference reference;
};

// Runs a recipe inside another view, found by the resolver, as its container.
class Block : public LayoutDirective
{
public:
    Block(LayoutSubject resolver, std::function<LayoutDirectiveList()> layoutDirectives);
    QList<LayoutConstraint> createConstraints(QWidget *containerView) const override;
    LayoutItem subjectItem(QWidget *containerView) const override;
    QWidget *constraintsTarget(QWidget *containerView) const override;

    std::shared_ptr<const ViewResolver> resolver;
    std::function<LayoutDirectiveList()> layoutDirectives;

private:
    QWidget *resolvedView(QWidget *containerView) const;
};

// Readable constructors for the usual relations.
RelationshipWithContainer pin(LayoutSubject subject, SmartLayoutDirectionsType side,
                              double inset = 0, float priority = LayoutPriority::required);
LayoutDirectiveList pinEdges(const LayoutSubject &subject, double inset = 0);
RelationshipLayoutDirective below(LayoutSubject subject, LayoutSubject object, double spacing = 0,
                                  float priority = LayoutPriority::required);
RelationshipLayoutDirective above(LayoutSubject subject, LayoutSubject object, double spacing = 0,
                                  float priority = LayoutPriority::required);
RelationshipLayoutDirective before(LayoutSubject subject, LayoutSubject object, double spacing = 0,
                                   float priority = LayoutPriority::required);
RelationshipLayoutDirective after(LayoutSubject subject, LayoutSubject object, double spacing = 0,
                                  float priority = LayoutPriority::required);
ConstantValueLayoutDirective width(LayoutSubject subject, double value,
                                   LayoutRelation relation = LayoutRelation::equal,
                                   float priority = LayoutPriority::required);
ConstantValueLayoutDirective height(LayoutSubject subject, double value,
                                    LayoutRelation relation = LayoutRelation::equal,
                                    float priority = LayoutPriority::required);
RelativeValueLayoutDirective sameWidth(LayoutSubject subject, LayoutSubject object);
// Each further item related to the first on the shared attribute.
SubjectFirstLayoutDirectiveList sameCenterY(const QList<LayoutSubject> &items);
SubjectFirstLayoutDirectiveList sameFlushLeft(const QList<LayoutSubject> &items);
SubjectFirstLayoutDirectiveList sameFlushRight(const QList<LayoutSubject> &items);

} // namespace LayoutRecipeNamespace
