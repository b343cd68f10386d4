#pragma once

// Build directives: plain descriptions of views and their bindings. Nothing in a directive
// touches a view until build() runs; a directive can be built any number of times.

#include "BuildDirectivesCore.h"
#include "LayoutTag.h"
#include "ViewCaptures.h"
#include "layout/ConstraintLayout.h"
#include "layout/LayoutConstraintMaker.h"
#include "layout/LayoutRecipes.h"

#include <QColor>
#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <type_traits>

class Assembly;
class BuildDirectiveList;

class BuildDirective
{
public:
    virtual ~BuildDirective() = default;
    virtual QString description() const = 0;

    QList<LayoutTag> tags;
    QList<std::shared_ptr<Decorator>> decorators;
};

using BuildDirectiveRef = std::shared_ptr<const BuildDirective>;

struct BuiltView
{
    QWidget *view = nullptr;
    std::shared_ptr<Binding> binding;
};

// A list of directives written in braces; nested lists flatten in order, so a group of
// directives can stand wherever one can.
class BuildDirectiveList
{
public:
    BuildDirectiveList() = default;
    BuildDirectiveList(std::initializer_list<BuildDirectiveList> groups);
    template<typename D, typename = std::enable_if_t<std::is_base_of_v<BuildDirective, D>>>
    BuildDirectiveList(const D &directive) // NOLINT(google-explicit-constructor)
        : m_items {std::make_shared<D>(directive)}
    { }
    void append(const BuildDirectiveList &more) { m_items += more.m_items; }
    const QList<BuildDirectiveRef> &asBuildDirective() const { return m_items; }
    qsizetype size() const { return m_items.size(); }

private:
    QList<BuildDirectiveRef> m_items;
};

// A directive with children. buildContainer may decline (give no view): the children then go
// to this directive's own parent.
class ContainerCreatingBuildDirective : public BuildDirective
{
public:
    virtual BuiltView buildContainer() const = 0;
    std::function<BuildDirectiveList()> buildDirectives;
};

class LeafCreatingBuildDirective : public BuildDirective
{
public:
    virtual BuiltView buildLeaf() const = 0;
};

// Builds the roots in order and gives the assembly of their views, bindings and code blocks.
std::shared_ptr<Assembly> build(const BuildDirectiveList &directives);

namespace DirectivePresets {
void small(QWidget *view);
void mini(QWidget *view);
void bezeled(QWidget *view);
void centered(QWidget *view);
void rightAligned(QWidget *view);
void truncateMiddle(QWidget *view);
void backgroundColor(QWidget *view, const QColor &color);
} // namespace DirectivePresets

namespace DirectiveDecorators {
std::shared_ptr<Decorator> code(CodeExecutionPhase phase,
                                std::function<void(QWidget *, Binding *, Assembly *)> closure);
std::shared_ptr<Decorator> capture(const ViewCaptureReference &reference);
std::shared_ptr<Decorator> tag(const LayoutTag &tag);
std::shared_ptr<Decorator> layout(const LayoutDirectiveList &recipe);
std::shared_ptr<Decorator> applyToSelf(std::function<void(LayoutConstraintMaker &)> closure);
std::shared_ptr<Decorator> applyToSuperView(std::function<void(LayoutConstraintMaker &)> closure);
} // namespace DirectiveDecorators

// The modifiers of every directive: each gives a copy with one more decorator or tag.
template<typename Self>
class DirectiveModifiers
{
public:
    Self code(CodeExecutionPhase codeBlockExecution,
              std::function<void(QWidget *, Binding *, Assembly *)> closure) const
    {
        return with(DirectiveDecorators::code(codeBlockExecution, std::move(closure)));
    }
    // The callback gets the view, cast to the type it asks for.
    template<typename V = QWidget>
    Self style(std::function<void(V *)> closure) const
    {
        return code(CodeExecutionPhase::buildAndLayout,
                    [closure](QWidget *view, Binding *, Assembly *) {
                        if (auto *typed = dynamic_cast<V *>(view))
                            closure(typed);
                    });
    }
    Self capture(const ViewCaptureReference &reference) const
    {
        return with(DirectiveDecorators::capture(reference));
    }
    Self tag(const LayoutTag &layoutTag) const
    {
        Self copy = with(DirectiveDecorators::tag(layoutTag));
        copy.tags.append(layoutTag);
        return copy;
    }
    // The recipe runs when the assembly is activated, once the children exist.
    Self layout(const LayoutDirectiveList &recipe) const
    {
        return with(DirectiveDecorators::layout(recipe));
    }
    Self applyToSelf(std::function<void(LayoutConstraintMaker &)> closure) const
    {
        return with(DirectiveDecorators::applyToSelf(std::move(closure)));
    }
    Self applyToSuperView(std::function<void(LayoutConstraintMaker &)> closure) const
    {
        return with(DirectiveDecorators::applyToSuperView(std::move(closure)));
    }
    Self width(double value) const
    {
        return applyToSelf([value](LayoutConstraintMaker &m) { m.width(value); });
    }
    Self height(double value) const
    {
        return applyToSelf([value](LayoutConstraintMaker &m) { m.height(value); });
    }
    Self small() const { return preset(&DirectivePresets::small); }
    Self mini() const { return preset(&DirectivePresets::mini); }
    Self bezeled() const { return preset(&DirectivePresets::bezeled); }
    Self centered() const { return preset(&DirectivePresets::centered); }
    Self rightAligned() const { return preset(&DirectivePresets::rightAligned); }
    Self truncateMiddle() const { return preset(&DirectivePresets::truncateMiddle); }
    Self backgroundColor(const QColor &color) const
    {
        return style<QWidget>(
            [color](QWidget *view) { DirectivePresets::backgroundColor(view, color); });
    }
    Self horizontalContentHuggingPriority(float priority) const
    {
        return style<QWidget>([priority](QWidget *view) {
            ConstraintLayout::setContentHuggingPriority(view, priority, Qt::Horizontal);
        });
    }

private:
    Self with(std::shared_ptr<Decorator> decorator) const
    {
        Self copy = static_cast<const Self &>(*this);
        copy.decorators.append(std::move(decorator));
        return copy;
    }
    Self preset(void (*apply)(QWidget *)) const { return style<QWidget>(apply); }
};
