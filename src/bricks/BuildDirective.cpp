#include "BuildDirective.h"

#include "AccessibilityIdentifierExecutable.h"
#include "ApplyToSelfAutoLayoutDecorator.h"
#include "ApplyToSuperViewAutoLayoutDecorator.h"
#include "Assembly.h"
#include "CodeBlockDecorator.h"
#include "LayoutTagManager.h"
#include "StandardCodeBlockExecutable.h"
#include "ViewAttachments.h"
#include "ViewTree.h"
#include "controls/SingleLineLabel.h"
#include "walls/ScrollWall.h"
#include "walls/Wall.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

BuildDirectiveList::BuildDirectiveList(std::initializer_list<BuildDirectiveList> groups)
{
    qCDebug(lcBricksBuild) << "results builder - buildBlock(" << groups.size() << "values )";
    for (const BuildDirectiveList &group : groups)
        m_items += group.m_items;
}

namespace {

using BindingsByTag = QHash<LayoutTag, std::shared_ptr<Binding>>;
using BindingsByView = QHash<QWidget *, std::shared_ptr<Binding>>;

void placeContainer(QWidget *parent, QWidget *view)
{
    if (auto *scroll = qobject_cast<ScrollWall *>(parent)) {
        if (!qobject_cast<ClipWall *>(view))
            qFatal("ScrollView Directive needs to have ClipView Directive as first child");
        // The clip view is the visible area; the scroll area keeps it flush with its edges.
        scroll->setContentView(view);
        return;
    }
    if (qobject_cast<ClipWall *>(parent)) {
        auto *scroll = qobject_cast<ScrollWall *>(parent->parentWidget());
        if (!scroll)
            qFatal("clip view is not inside of scroll view! ");
        // Left, right and top follow the clip view; the height is the document's own, so it
        // grows downward and scrolls.
        scroll->setDocumentView(view);
        return;
    }
    ViewTree::addSubview(parent, view);
}

void applyTagsAndDecorators(const BuildDirective &directive, QWidget *view,
                            const std::shared_ptr<Binding> &binding, QList<CodeBlock> &codeBlocks,
                            BindingsByTag &bindingsByTag, BindingsByView &bindingsByView)
{
    qCDebug(lcBricksBuild) << "bindings by view";
    bindingsByView.insert(view, binding);
    LayoutTagManager &tags = LayoutTagManager::shared();
    for (const LayoutTag &tag : directive.tags) {
        tags.addTag(view, tag);
        view->setObjectName(tag.description());
    }
    for (const std::shared_ptr<Decorator> &decorator : directive.decorators)
        decorator->apply(view, bindingsByView.value(view), nullptr,
                         CodeExecutionPhase::buildAndLayout, codeBlocks);
    qCDebug(lcBricksBuild) << "tags and decorators applied";
    const QList<LayoutTag> viewTags = tags.layoutTags(view);
    if (!viewTags.isEmpty())
        bindingsByTag.insert(viewTags.first(), binding);
}

QWidget *buildNode(const BuildDirective &directive, QList<CodeBlock> &codeBlocks,
                   BindingsByTag &bindingsByTag, BindingsByView &bindingsByView, QWidget *parent)
{
    qCDebug(lcBricksBuild).noquote() << "[BuildDirective] buildNode" << directive.description();
    const auto *container = dynamic_cast<const ContainerCreatingBuildDirective *>(&directive);
    if (!container) {
        const auto *leaf = dynamic_cast<const LeafCreatingBuildDirective *>(&directive);
        if (!leaf)
            qFatal("cannot build view because directive is neither leaf nor container creating");
        qCDebug(lcBricksBuild).noquote() << "trying to build leaf" << directive.description();
        const BuiltView built = leaf->buildLeaf();
        qCDebug(lcBricksBuild) << "leaf built";
        if (parent)
            ViewTree::addSubview(parent, built.view);
        applyTagsAndDecorators(directive, built.view, built.binding, codeBlocks, bindingsByTag,
                               bindingsByView);
        return built.view;
    }

    qCDebug(lcBricksBuild) << "trying to build container";
    const BuiltView built = container->buildContainer();
    qCDebug(lcBricksBuild) << "built container:" << built.view
                           << "- if nil, a condition was not met";
    if (parent && built.view)
        placeContainer(parent, built.view);
    if (built.view)
        applyTagsAndDecorators(directive, built.view, built.binding, codeBlocks, bindingsByTag,
                               bindingsByView);

    qCDebug(lcBricksBuild).noquote() << "new build drirectives for" << directive.description();
    const BuildDirectiveList children
        = container->buildDirectives ? container->buildDirectives() : BuildDirectiveList();
    qCDebug(lcBricksBuild) << "child directives";
    // A container that declined passes its children on to its own parent.
    QWidget *childParent = built.view ? built.view : parent;
    for (const BuildDirectiveRef &child : children.asBuildDirective()) {
        if (!childParent)
            qFatal("[BuildDirective].buildNode child views have no parent!");
        buildNode(*child, codeBlocks, bindingsByTag, bindingsByView, childParent);
    }
    qCDebug(lcBricksBuild) << "buildnode [end]";
    return built.view;
}

} // namespace

std::shared_ptr<Assembly> build(const BuildDirectiveList &directives)
{
    qCDebug(lcBricksBuild) << "[BuildDirective] build [start]";
    QList<CodeBlock> codeBlocks;
    BindingsByTag bindingsByTag;
    BindingsByView bindingsByView;
    QList<QWidget *> views;
    for (const BuildDirectiveRef &directive : directives.asBuildDirective()) {
        if (QWidget *view
            = buildNode(*directive, codeBlocks, bindingsByTag, bindingsByView, nullptr))
            views.append(view);
    }
    qCDebug(lcBricksBuild) << "[BuildDirective] build [end]";
    return std::make_shared<Assembly>(views, bindingsByTag, bindingsByView, codeBlocks);
}

namespace {

// Stores the view under its key and names it by the key for people and assistive tools.
class ViewCaptureExecutable : public CodeBlockExecutable
{
public:
    explicit ViewCaptureExecutable(ViewCaptureReference reference)
        : reference(std::move(reference))
    { }
    void execute(QWidget *view, Binding *, Assembly *) override
    {
        if (reference.captures)
            reference.captures->capturedViews.insert(reference.key, view);
        view->setObjectName(reference.key);
        ViewAttachments::of(view).accessibilityIdentifier = reference.key;
        view->setAccessibleName(reference.key);
    }
    const ViewCaptureReference reference;
};

// Turns a recipe into constraints on its target once the container's children exist.
class LayoutRecipeExecutable : public CodeBlockExecutable
{
public:
    explicit LayoutRecipeExecutable(LayoutDirectiveList recipe)
        : recipe(std::move(recipe))
    { }
    void execute(QWidget *view, Binding *, Assembly *) override
    {
        for (const LayoutDirectiveRef &directive : recipe.asLayoutDirective())
            ConstraintLayout::installConstraints(directive->constraintsTarget(view),
                                                 directive->createConstraints(view));
    }
    const LayoutDirectiveList recipe;
};

} // namespace

namespace DirectiveDecorators {

std::shared_ptr<Decorator> code(CodeExecutionPhase phase,
                                std::function<void(QWidget *, Binding *, Assembly *)> closure)
{
    return std::make_shared<CodeBlockDecorator>(
        std::make_shared<StandardCodeBlockExecutable>(std::move(closure)), phase);
}

std::shared_ptr<Decorator> capture(const ViewCaptureReference &reference)
{
    return std::make_shared<CodeBlockDecorator>(std::make_shared<ViewCaptureExecutable>(reference),
                                                CodeExecutionPhase::buildAndLayout);
}

std::shared_ptr<Decorator> tag(const LayoutTag &tag)
{
    qCDebug(lcBricksBuild).noquote() << "setTag '" + tag.description() + "'";
    return std::make_shared<CodeBlockDecorator>(
        std::make_shared<AccessibilityIdentifierExecutable>(tag), CodeExecutionPhase::activate);
}

std::shared_ptr<Decorator> layout(const LayoutDirectiveList &recipe)
{
    return std::make_shared<CodeBlockDecorator>(std::make_shared<LayoutRecipeExecutable>(recipe),
                                                CodeExecutionPhase::prepare);
}

std::shared_ptr<Decorator> applyToSelf(std::function<void(LayoutConstraintMaker &)> closure)
{
    return std::make_shared<ApplyToSelfAutoLayoutDecorator>(std::move(closure));
}

std::shared_ptr<Decorator> applyToSuperView(std::function<void(LayoutConstraintMaker &)> closure)
{
    return std::make_shared<ApplyToSuperViewAutoLayoutDecorator>(std::move(closure));
}

} // namespace DirectiveDecorators

namespace DirectivePresets {

namespace {
void scaleFont(QWidget *view, double factor)
{
    QFont font = view->font();
    font.setPointSizeF(font.pointSizeF() * factor);
    view->setFont(font);
}
void setAlignment(QWidget *view, Qt::Alignment horizontal)
{
    if (auto *label = qobject_cast<QLabel *>(view))
        label->setAlignment(horizontal | Qt::AlignVCenter);
    else if (auto *field = qobject_cast<QLineEdit *>(view))
        field->setAlignment(horizontal | Qt::AlignVCenter);
    else if (auto *single = qobject_cast<SingleLineLabel *>(view))
        single->setTextAlignment(horizontal | Qt::AlignVCenter);
}
} // namespace

void small(QWidget *view)
{
    scaleFont(view, 11.0 / 13.0);
}

void mini(QWidget *view)
{
    scaleFont(view, 9.0 / 13.0);
}

void bezeled(QWidget *view)
{
    if (auto *label = qobject_cast<QLabel *>(view))
        label->setFrameShape(QFrame::StyledPanel);
    else if (auto *field = qobject_cast<QLineEdit *>(view))
        field->setFrame(true);
}

void centered(QWidget *view)
{
    setAlignment(view, Qt::AlignHCenter);
}

void rightAligned(QWidget *view)
{
    setAlignment(view, Qt::AlignRight);
}

void truncateMiddle(QWidget *view)
{
    if (auto *single = qobject_cast<SingleLineLabel *>(view))
        single->setLineBreakMode(Qt::ElideMiddle);
}

void backgroundColor(QWidget *view, const QColor &color)
{
    if (auto *wall = qobject_cast<Wall *>(view)) {
        wall->setBackgroundColor(color);
        return;
    }
    QPalette palette = view->palette();
    palette.setColor(view->backgroundRole(), color);
    view->setPalette(palette);
    view->setAutoFillBackground(true);
}

} // namespace DirectivePresets
