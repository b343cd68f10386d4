#include "LayoutRecipes.h"

#include "LayoutGuide.h"
#include "bricks/LayoutTagManager.h"

LayoutAttribute asLayoutAttribute(SmartLayoutDirectionsType direction)
{
    using D = SmartLayoutDirectionsType;
    switch (direction) {
    case D::top:
        return LayoutAttribute::top;
    case D::bottom:
        return LayoutAttribute::bottom;
    case D::left:
        return LayoutAttribute::left;
    case D::right:
        return LayoutAttribute::right;
    case D::centerX:
        return LayoutAttribute::centerX;
    case D::centerY:
        return LayoutAttribute::centerY;
    case D::baseline:
    case D::lastBaseline:
        return LayoutAttribute::lastBaseline;
    case D::firstBaseline:
        return LayoutAttribute::firstBaseline;
    case D::below:
    case D::above:
    case D::before:
    case D::after:
        break;
    }
    qFatal("asLayoutAttribute: below, above, before and after are shorthands without an "
           "attribute; resolve them to attribute pairs first");
}

LayoutItem ViewResolver::subjectItem(QWidget *relativeTo) const
{
    const std::optional<LayoutItem> item = resolveItem(relativeTo);
    if (!item || item->isNull())
        qFatal("could not resolve item: %s", qPrintable(resolverDebugDescription()));
    return *item;
}

LayoutSubject::LayoutSubject(const LayoutTag &tag)
    : directive(std::make_shared<LayoutRecipeNamespace::Tag>(tag))
{ }

LayoutSubject::LayoutSubject(const ViewCaptureReference &capture)
    : directive(std::make_shared<LayoutRecipeNamespace::Capture>(capture))
{ }

LayoutDirectiveList::LayoutDirectiveList(std::initializer_list<LayoutDirectiveList> groups)
{
    for (const LayoutDirectiveList &group : groups)
        m_items += group.m_items;
}

RelationshipLayoutDirective::RelationshipLayoutDirective(LayoutSubject subject,
                                                         LayoutSubject object, double inset,
                                                         SmartLayoutDirectionsType subjectDirection,
                                                         SmartLayoutDirectionsType objectDirection,
                                                         float priority)
    : subject(subject.directive)
    , object(object.directive)
    , inset(inset)
    , subjectDirection(subjectDirection)
    , objectDirection(objectDirection)
    , priority(priority)
{ }

QList<LayoutConstraint> RelationshipLayoutDirective::createConstraints(QWidget *containerView) const
{
    QList<LayoutConstraint> list = subject->createConstraints(containerView);
    list += object->createConstraints(containerView);
    LayoutConstraint c = LayoutConstraint::make(
        subject->subjectItem(containerView), asLayoutAttribute(subjectDirection),
        LayoutRelation::equal, object->subjectItem(containerView),
        asLayoutAttribute(objectDirection), 1, inset);
    c.priority = priority;
    list.append(c);
    return list;
}

LayoutItem RelationshipLayoutDirective::subjectItem(QWidget *containerView) const
{
    return subject->subjectItem(containerView);
}

RelationshipWithContainer::RelationshipWithContainer(LayoutSubject subject, double inset,
                                                     SmartLayoutDirectionsType subjectDirection,
                                                     SmartLayoutDirectionsType containerDirection,
                                                     float priority)
    : subject(subject.directive)
    , inset(inset)
    , subjectDirection(subjectDirection)
    , containerDirection(containerDirection)
    , priority(priority)
{ }

QList<LayoutConstraint> RelationshipWithContainer::createConstraints(QWidget *containerView) const
{
    QList<LayoutConstraint> list = subject->createConstraints(containerView);
    // A positive inset always points inward: on the far sides it counts backwards.
    const bool farSide = containerDirection == SmartLayoutDirectionsType::right
        || containerDirection == SmartLayoutDirectionsType::bottom;
    LayoutConstraint c = LayoutConstraint::make(
        subject->subjectItem(containerView), asLayoutAttribute(subjectDirection),
        LayoutRelation::equal, containerView, asLayoutAttribute(containerDirection), 1,
        farSide ? -inset : inset);
    c.priority = priority;
    list.append(c);
    return list;
}

LayoutItem RelationshipWithContainer::subjectItem(QWidget *containerView) const
{
    return subject->subjectItem(containerView);
}

ConstantValueLayoutDirective::ConstantValueLayoutDirective(LayoutSubject subject,
                                                           LayoutAttribute attribute,
                                                           LayoutRelation relatedBy, double value,
                                                           float priority)
    : subject(subject.directive)
    , attribute(attribute)
    , relatedBy(relatedBy)
    , value(value)
    , priority(priority)
{ }

QList<LayoutConstraint> ConstantValueLayoutDirective::createConstraints(
    QWidget *containerView) const
{
    QList<LayoutConstraint> list = subject->createConstraints(containerView);
    LayoutConstraint c
        = LayoutConstraint::make(subject->subjectItem(containerView), attribute, relatedBy, {},
                                 LayoutAttribute::notAnAttribute, 1, value);
    c.priority = priority;
    list.append(c);
    return list;
}

LayoutItem ConstantValueLayoutDirective::subjectItem(QWidget *containerView) const
{
    return subject->subjectItem(containerView);
}

RelativeValueLayoutDirective::RelativeValueLayoutDirective(LayoutSubject subject,
                                                           LayoutSubject object,
                                                           LayoutAttribute attribute,
                                                           LayoutRelation relatedBy)
    : subject(subject.directive)
    , object(object.directive)
    , attribute(attribute)
    , relatedBy(relatedBy)
{ }

QList<LayoutConstraint> RelativeValueLayoutDirective::createConstraints(
    QWidget *containerView) const
{
    QList<LayoutConstraint> list = subject->createConstraints(containerView);
    list += object->createConstraints(containerView);
    list.append(LayoutConstraint::make(subject->subjectItem(containerView), attribute, relatedBy,
                                       object->subjectItem(containerView), attribute, 1, 0));
    return list;
}

LayoutItem RelativeValueLayoutDirective::subjectItem(QWidget *containerView) const
{
    return subject->subjectItem(containerView);
}

QList<LayoutConstraint> SubjectFirstLayoutDirectiveList::createConstraints(
    QWidget *containerView) const
{
    QList<LayoutConstraint> list;
    for (const LayoutDirectiveRef &directive : array)
        list += directive->createConstraints(containerView);
    return list;
}

LayoutItem SubjectFirstLayoutDirectiveList::subjectItem(QWidget *containerView) const
{
    if (array.isEmpty())
        qFatal("could not resolve item: an empty directive list has no subject");
    return array.first()->subjectItem(containerView);
}

namespace LayoutRecipeNamespace {

std::optional<LayoutItem> Tag::resolveItem(QWidget *relativeTo) const
{
    if (QWidget *view = LayoutTagManager::shared().firstView(tag, relativeTo))
        return LayoutItem(view);
    if (LayoutGuide *guide = LayoutGuide::taggedLayoutGuide(relativeTo, tag))
        return LayoutItem(guide);
    return std::nullopt;
}

QString Tag::resolverDebugDescription() const
{
    return QStringLiteral("Tag '%1'").arg(tag.description());
}

std::optional<LayoutItem> Capture::resolveItem(QWidget *) const
{
    if (!reference.captures)
        return std::nullopt;
    QWidget *view = reference.captures->capturedViews.value(reference.key);
    if (!view)
        return std::nullopt;
    return LayoutItem(view);
}

QString Capture::resolverDebugDescription() const
{
    return QStringLiteral("ViewCaptureReference '%1'").arg(reference.key);
}

Block::Block(LayoutSubject resolver, std::function<LayoutDirectiveList()> layoutDirectives)
    : resolver(std::dynamic_pointer_cast<const ViewResolver>(resolver.directive))
    , layoutDirectives(std::move(layoutDirectives))
{
    if (!this->resolver)
        qFatal("Block directive requires a resolver of a view");
}

QWidget *Block::resolvedView(QWidget *containerView) const
{
    const LayoutItem item = resolver->subjectItem(containerView);
    if (!item.view())
        qFatal("Block directive requires a view, not a layout guide: %s",
               qPrintable(resolver->resolverDebugDescription()));
    return item.view();
}

QList<LayoutConstraint> Block::createConstraints(QWidget *containerView) const
{
    QWidget *view = resolvedView(containerView);
    QList<LayoutConstraint> list;
    const LayoutDirectiveList recipe = layoutDirectives();
    for (const LayoutDirectiveRef &directive : recipe.asLayoutDirective())
        list += directive->createConstraints(view);
    return list;
}

LayoutItem Block::subjectItem(QWidget *containerView) const
{
    return resolvedView(containerView);
}

QWidget *Block::constraintsTarget(QWidget *containerView) const
{
    return resolvedView(containerView);
}

using D = SmartLayoutDirectionsType;

RelationshipWithContainer pin(LayoutSubject subject, SmartLayoutDirectionsType side, double inset,
                              float priority)
{
    return RelationshipWithContainer(subject, inset, side, side, priority);
}

LayoutDirectiveList pinEdges(const LayoutSubject &subject, double inset)
{
    return {pin(subject, D::left, inset), pin(subject, D::right, inset),
            pin(subject, D::top, inset), pin(subject, D::bottom, inset)};
}

RelationshipLayoutDirective below(LayoutSubject subject, LayoutSubject object, double spacing,
                                  float priority)
{
    return RelationshipLayoutDirective(subject, object, spacing, D::top, D::bottom, priority);
}

RelationshipLayoutDirective above(LayoutSubject subject, LayoutSubject object, double spacing,
                                  float priority)
{
    return RelationshipLayoutDirective(subject, object, -spacing, D::bottom, D::top, priority);
}

RelationshipLayoutDirective before(LayoutSubject subject, LayoutSubject object, double spacing,
                                   float priority)
{
    return RelationshipLayoutDirective(subject, object, -spacing, D::right, D::left, priority);
}

RelationshipLayoutDirective after(LayoutSubject subject, LayoutSubject object, double spacing,
                                  float priority)
{
    return RelationshipLayoutDirective(subject, object, spacing, D::left, D::right, priority);
}

ConstantValueLayoutDirective width(LayoutSubject subject, double value, LayoutRelation relation,
                                   float priority)
{
    return ConstantValueLayoutDirective(subject, LayoutAttribute::width, relation, value, priority);
}

ConstantValueLayoutDirective height(LayoutSubject subject, double value, LayoutRelation relation,
                                    float priority)
{
    return ConstantValueLayoutDirective(subject, LayoutAttribute::height, relation, value,
                                        priority);
}

RelativeValueLayoutDirective sameWidth(LayoutSubject subject, LayoutSubject object)
{
    return RelativeValueLayoutDirective(subject, object, LayoutAttribute::width);
}

namespace {
SubjectFirstLayoutDirectiveList same(const QList<LayoutSubject> &items,
                                     SmartLayoutDirectionsType direction)
{
    QList<LayoutDirectiveRef> array;
    if (items.isEmpty())
        return SubjectFirstLayoutDirectiveList(array);
    array.append(items.first().directive);
    for (qsizetype i = 1; i < items.size(); ++i)
        array.append(std::make_shared<RelationshipLayoutDirective>(items[i], items.first(), 0,
                                                                   direction, direction));
    return SubjectFirstLayoutDirectiveList(array);
}
} // namespace

SubjectFirstLayoutDirectiveList sameCenterY(const QList<LayoutSubject> &items)
{
    return same(items, D::centerY);
}

SubjectFirstLayoutDirectiveList sameFlushLeft(const QList<LayoutSubject> &items)
{
    return same(items, D::left);
}

SubjectFirstLayoutDirectiveList sameFlushRight(const QList<LayoutSubject> &items)
{
    return same(items, D::right);
}

} // namespace LayoutRecipeNamespace
