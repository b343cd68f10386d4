#pragma once

// The container directives of a description.

#include "FragmentWall.h"
#include "FragmentWallBinding.h"
#include "bricks/BuildDirective.h"

#include <QMap>
#include <QStringList>

#include <optional>

namespace BuildDirectivesNamespace {

template<typename Self>
class ContainerDirective
    : public ContainerCreatingBuildDirective
    , public DirectiveModifiers<Self>
{
public:
    ContainerDirective() { setChildren({}); }
    ContainerDirective(std::initializer_list<BuildDirectiveList> children)
    {
        setChildren(BuildDirectiveList(children));
    }
    explicit ContainerDirective(const BuildDirectiveList &children) { setChildren(children); }

protected:
    void setChildren(const BuildDirectiveList &children)
    {
        buildDirectives = [children] {
            return children;
        };
    }
};

// The plain container: children placed by the constraints of its layout recipe.
class Wall : public ContainerDirective<Wall>
{
public:
    using ContainerDirective::ContainerDirective;
    QString description() const override { return QStringLiteral("Wall"); }
    BuiltView buildContainer() const override;
};

// Groups children without a view of its own: they go to the group's parent.
class Group : public ContainerDirective<Group>
{
public:
    using ContainerDirective::ContainerDirective;
    QString description() const override { return QStringLiteral("Group"); }
    BuiltView buildContainer() const override { return {}; }
};

// A wall that is only built when the condition holds; otherwise its children join its parent.
class WallIf : public ContainerDirective<WallIf>
{
public:
    WallIf(bool condition, std::initializer_list<BuildDirectiveList> children)
        : ContainerDirective(children)
        , condition(condition)
    { }
    QString description() const override { return QStringLiteral("WallIf"); }
    BuiltView buildContainer() const override;
    bool condition;
};

class FragmentStack : public ContainerDirective<FragmentStack>
{
public:
    using ContainerDirective::ContainerDirective;
    QString description() const override { return QStringLiteral("FragmentStack"); }
    BuiltView buildContainer() const override;
};

class FragmentWall : public ContainerDirective<FragmentWall>
{
public:
    FragmentWall(std::initializer_list<BuildDirectiveList> children);
    QString description() const override { return QStringLiteral("FragmentWall"); }
    BuiltView buildContainer() const override;
};

// A fragment that hides itself from its stack while an expression over defaults keys holds.
class HideableFragment : public ContainerDirective<HideableFragment>
{
public:
    HideableFragment(QStringList storageKeys,
                     std::function<bool(const QStringList &)> shouldHideExpression,
                     std::initializer_list<BuildDirectiveList> children);
    QString description() const override { return QStringLiteral("HideableFragmentWall"); }
    BuiltView buildContainer() const override;
    QStringList storageKeys;
    std::function<bool(const QStringList &)> shouldHideExpression;
};

// A fragment shown or hidden by a variable.
template<typename T>
class DynamicFragmentWall : public ContainerDirective<DynamicFragmentWall<T>>
{
public:
    static DynamicFragmentWall hideWhen(AnyReadOnlyVariable<T> variable,
                                        std::function<bool(const T &)> shouldHide,
                                        std::initializer_list<BuildDirectiveList> children)
    {
        return DynamicFragmentWall(std::move(variable), std::move(shouldHide), children);
    }
    static DynamicFragmentWall showWhen(AnyReadOnlyVariable<T> variable,
                                        std::function<bool(const T &)> shouldShow,
                                        std::initializer_list<BuildDirectiveList> children)
    {
        return DynamicFragmentWall(
            std::move(variable), [shouldShow](const T &v) { return !shouldShow(v); }, children);
    }

    QString description() const override { return QStringLiteral("DynamicFragmentWall"); }
    BuiltView buildContainer() const override
    {
        qCDebug(lcBricksBuild) << "DynamicFragmentWall building container";
        auto *wall = new ::FragmentWall;
        return {wall, std::make_shared<FragmentWallBinding<T>>(wall, variable, shouldHideClosure)};
    }

    std::function<bool(const T &)> shouldHideClosure;
    AnyReadOnlyVariable<T> variable;

private:
    DynamicFragmentWall(AnyReadOnlyVariable<T> variable, std::function<bool(const T &)> shouldHide,
                        std::initializer_list<BuildDirectiveList> children)
        : ContainerDirective<DynamicFragmentWall<T>>(children)
        , shouldHideClosure(std::move(shouldHide))
        , variable(std::move(variable))
    {
        this->decorators.append(fragmentInstallation());
    }
    static std::shared_ptr<Decorator> fragmentInstallation();
};

// A scroll area; its first child must be a ClipView, whose child is the scrolled document.
class ScrollView : public ContainerDirective<ScrollView>
{
public:
    using ContainerDirective::ContainerDirective;
    QString description() const override { return QStringLiteral("ScrollView"); }
    BuiltView buildContainer() const override;
};

class ClipView : public ContainerDirective<ClipView>
{
public:
    using ContainerDirective::ContainerDirective;
    QString description() const override { return QStringLiteral("ClipView"); }
    BuiltView buildContainer() const override;
};

using CellPlacement = std::pair<std::optional<Qt::Alignment>, std::optional<Qt::Alignment>>;

class GridRow : public ContainerDirective<GridRow>
{
public:
    using ContainerDirective::ContainerDirective;
    QString description() const override { return QStringLiteral("GridRow"); }
    BuiltView buildContainer() const override;
    // Horizontal and vertical placement of the cells of some columns of this row.
    GridRow cellPlacements(QMap<int, CellPlacement> placements) const;
};

struct CellMerge
{
    std::pair<int, int> horizontalRange; // first column, count
    std::pair<int, int> verticalRange; // first row, count
};

class GridWall : public ContainerDirective<GridWall>
{
public:
    using ContainerDirective::ContainerDirective;
    QString description() const override { return QStringLiteral("GridWall"); }
    BuiltView buildContainer() const override;
    GridWall cellMerges(QList<CellMerge> merges) const;
    GridWall rowPlacements(QMap<int, Qt::Alignment> placements) const;
    GridWall rowHeights(QMap<int, int> heights) const;
    GridWall spacing(int horizontal, int vertical) const;
};

class TabWall : public ContainerDirective<TabWall>
{
public:
    using ContainerDirective::ContainerDirective;
    QString description() const override { return QStringLiteral("TabWall"); }
    BuiltView buildContainer() const override;
    // Shows the page that the variable names and hides the tab bar.
    TabWall showingTab(AnyReadOnlyVariable<int> index) const;
    AnyReadOnlyVariable<int> shownTab;
};

// One page of a TabWall.
class Tab : public ContainerDirective<Tab>
{
public:
    Tab(const QString &title, std::initializer_list<BuildDirectiveList> children)
        : ContainerDirective(children)
        , title(title)
    { }
    QString description() const override { return QStringLiteral("Tab '%1'").arg(title); }
    BuiltView buildContainer() const override;
    QString title;
};

class WallWithIntrinsicSize : public ContainerDirective<WallWithIntrinsicSize>
{
public:
    WallWithIntrinsicSize(QSize size, std::initializer_list<BuildDirectiveList> children = {})
        : ContainerDirective(children)
        , size(size)
    { }
    QString description() const override { return QStringLiteral("WallWithInstrinsicSize"); }
    BuiltView buildContainer() const override;
    QSize size;
};

// Panes one above the other, with dividers that follow the window's rules: the last pane is
// the info pane, which alone collapses, keeps its height when the window's changes, and is
// dragged between its minimum and maximum height.
class SplitView : public ContainerDirective<SplitView>
{
public:
    using ContainerDirective::ContainerDirective;
    QString description() const override { return QStringLiteral("SplitView"); }
    BuiltView buildContainer() const override;
};

// Places a widget made elsewhere (a table, a map, a preview) as a leaf of the description. It
// takes part in its wall's constraints like any brick: its size hint is its intrinsic size,
// held by priorities from its size policy, and recipes name it by tag or capture. What is
// inside it stays its own: the layout validator looks at it only from outside. Building the
// description again moves the widget to the new place.
class EmbeddedControl
    : public LeafCreatingBuildDirective
    , public DirectiveModifiers<EmbeddedControl>
{
public:
    explicit EmbeddedControl(QWidget *embeddedControl)
        : embeddedControl(embeddedControl)
    { }
    QString description() const override;
    BuiltView buildLeaf() const override;
    QPointer<QWidget> embeddedControl;
};

std::shared_ptr<Decorator> fragmentInstallationDecorator();

template<typename T>
std::shared_ptr<Decorator> DynamicFragmentWall<T>::fragmentInstallation()
{
    return fragmentInstallationDecorator();
}

} // namespace BuildDirectivesNamespace
