#include "WallDirectives.h"

#include "BriskSplitView.h"
#include "BriskSplitViewDelegate.h"
#include "FragmentStackView.h"
#include "GridWall.h"
#include "HideableFragmentWall.h"
#include "ScrollWall.h"
#include "TabWall.h"
#include "Wall.h"
#include "WallWithInstrinsicSize.h"
#include "bricks/CodeBlockDecorator.h"
#include "bricks/ViewAttachments.h"
#include "bricks/controls/BrickBinding.h"

#include <QGridLayout>

namespace BuildDirectivesNamespace {

namespace {

// Puts a fragment into its stack's arrangement and tells it where it stands.
class FragmentInstallationExecutable : public CodeBlockExecutable
{
public:
    void execute(QWidget *view, Binding *, Assembly *) override
    {
        auto *stack = qobject_cast<FragmentStackView *>(view->parentWidget());
        auto *fragment = qobject_cast<::FragmentWall *>(view);
        if (!stack || !fragment)
            return;
        if (!stack->arrangedSubviews().contains(fragment))
            stack->addArrangedSubview(fragment);
        fragment->install(stack);
    }
};

class GridRowInstallationExecutable : public CodeBlockExecutable
{
public:
    explicit GridRowInstallationExecutable(QMap<int, CellPlacement> cellPlacements)
        : cellPlacements(std::move(cellPlacements))
    { }
    void execute(QWidget *view, Binding *, Assembly *) override
    {
        auto *marker = qobject_cast<GridRowMarker *>(view);
        auto *grid = marker ? qobject_cast<::GridWall *>(marker->parentWidget()) : nullptr;
        if (!grid)
            return;
        for (auto it = cellPlacements.cbegin(); it != cellPlacements.cend(); ++it) {
            QLayoutItem *item = grid->gridLayout()->itemAtPosition(marker->row, it.key());
            if (!item)
                continue;
            Qt::Alignment alignment;
            if (it.value().first)
                alignment |= *it.value().first;
            if (it.value().second)
                alignment |= *it.value().second;
            item->setAlignment(alignment);
        }
        grid->gridLayout()->invalidate();
    }
    const QMap<int, CellPlacement> cellPlacements;
};

class GridWallInstallationExecutable : public CodeBlockExecutable
{
public:
    void execute(QWidget *view, Binding *, Assembly *) override
    {
        auto *grid = qobject_cast<::GridWall *>(view);
        if (!grid)
            return;
        QGridLayout *layout = grid->gridLayout();
        for (const CellMerge &merge : cellMerges) {
            QLayoutItem *item
                = layout->itemAtPosition(merge.verticalRange.first, merge.horizontalRange.first);
            QWidget *cell = item ? item->widget() : nullptr;
            if (!cell)
                continue;
            // Cells covered by the merge give way to the merged one.
            for (int r = 0; r < merge.verticalRange.second; ++r) {
                for (int c = 0; c < merge.horizontalRange.second; ++c) {
                    QLayoutItem *covered = layout->itemAtPosition(merge.verticalRange.first + r,
                                                                  merge.horizontalRange.first + c);
                    if (covered && covered->widget() && covered->widget() != cell)
                        covered->widget()->hide();
                }
            }
            layout->removeWidget(cell);
            layout->addWidget(cell, merge.verticalRange.first, merge.horizontalRange.first,
                              merge.verticalRange.second, merge.horizontalRange.second);
        }
        for (auto it = rowPlacements.cbegin(); it != rowPlacements.cend(); ++it) {
            for (int c = 0; c < layout->columnCount(); ++c)
                if (QLayoutItem *item = layout->itemAtPosition(it.key(), c))
                    item->setAlignment(it.value());
        }
        for (auto it = rowHeights.cbegin(); it != rowHeights.cend(); ++it)
            layout->setRowMinimumHeight(it.key(), it.value());
        layout->invalidate();
    }
    QList<CellMerge> cellMerges;
    QMap<int, Qt::Alignment> rowPlacements;
    QMap<int, int> rowHeights;
};

} // namespace

std::shared_ptr<Decorator> fragmentInstallationDecorator()
{
    return std::make_shared<CodeBlockDecorator>(std::make_shared<FragmentInstallationExecutable>(),
                                                CodeExecutionPhase::buildAndLayout);
}

BuiltView Wall::buildContainer() const
{
    return {new ::Wall, std::make_shared<NullBinding>()};
}

BuiltView WallIf::buildContainer() const
{
    if (!condition)
        return {};
    return {new ::Wall, std::make_shared<NullBinding>()};
}

BuiltView FragmentStack::buildContainer() const
{
    return {new FragmentStackView, std::make_shared<NullBinding>()};
}

FragmentWall::FragmentWall(std::initializer_list<BuildDirectiveList> children)
    : ContainerDirective(children)
{
    decorators.append(fragmentInstallationDecorator());
}

BuiltView FragmentWall::buildContainer() const
{
    return {new ::FragmentWall, std::make_shared<NullBinding>()};
}

HideableFragment::HideableFragment(QStringList storageKeys,
                                   std::function<bool(const QStringList &)> shouldHideExpression,
                                   std::initializer_list<BuildDirectiveList> children)
    : ContainerDirective(children)
    , storageKeys(std::move(storageKeys))
    , shouldHideExpression(std::move(shouldHideExpression))
{
    decorators.append(fragmentInstallationDecorator());
}

BuiltView HideableFragment::buildContainer() const
{
    return {new HideableFragmentWall(storageKeys, shouldHideExpression),
            std::make_shared<NullBinding>()};
}

BuiltView ScrollView::buildContainer() const
{
    return {new ScrollWall, std::make_shared<NullBinding>()};
}

BuiltView ClipView::buildContainer() const
{
    return {new ClipWall, std::make_shared<NullBinding>()};
}

BuiltView GridRow::buildContainer() const
{
    return {new GridRowMarker, std::make_shared<NullBinding>()};
}

GridRow GridRow::cellPlacements(QMap<int, CellPlacement> placements) const
{
    GridRow copy = *this;
    copy.decorators.append(std::make_shared<CodeBlockDecorator>(
        std::make_shared<GridRowInstallationExecutable>(std::move(placements)),
        CodeExecutionPhase::prepare));
    return copy;
}

BuiltView GridWall::buildContainer() const
{
    return {new ::GridWall, std::make_shared<NullBinding>()};
}

namespace {
GridWall withGridExecutable(const GridWall &grid,
                            const std::function<void(GridWallInstallationExecutable &)> &fill)
{
    auto executable = std::make_shared<GridWallInstallationExecutable>();
    fill(*executable);
    GridWall copy = grid;
    copy.decorators.append(
        std::make_shared<CodeBlockDecorator>(executable, CodeExecutionPhase::prepare));
    return copy;
}
} // namespace

GridWall GridWall::cellMerges(QList<CellMerge> merges) const
{
    return withGridExecutable(*this, [&](auto &e) { e.cellMerges = merges; });
}

GridWall GridWall::rowPlacements(QMap<int, Qt::Alignment> placements) const
{
    return withGridExecutable(*this, [&](auto &e) { e.rowPlacements = placements; });
}

GridWall GridWall::rowHeights(QMap<int, int> heights) const
{
    return withGridExecutable(*this, [&](auto &e) { e.rowHeights = heights; });
}

GridWall GridWall::spacing(int horizontal, int vertical) const
{
    return style<::GridWall>([horizontal, vertical](::GridWall *grid) {
        grid->gridLayout()->setHorizontalSpacing(horizontal);
        grid->gridLayout()->setVerticalSpacing(vertical);
    });
}

namespace {
class TabWallBinding : public ReadOnlyBinding<::TabWall, int>
{
public:
    using ReadOnlyBinding::ReadOnlyBinding;

protected:
    Presenter presenter() const override
    {
        return [](::TabWall *tabs, const int &index) {
            tabs->showTab(index);
        };
    }
};
} // namespace

BuiltView TabWall::buildContainer() const
{
    auto *tabs = new ::TabWall;
    if (!shownTab.isValid())
        return {tabs, std::make_shared<NullBinding>()};
    tabs->setTabBarHidden(true);
    return {tabs, std::make_shared<TabWallBinding>(tabs, shownTab)};
}

TabWall TabWall::showingTab(AnyReadOnlyVariable<int> index) const
{
    TabWall copy = *this;
    copy.shownTab = std::move(index);
    return copy;
}

BuiltView Tab::buildContainer() const
{
    auto *page = new ::Wall;
    ::TabWall::setTabTitle(page, title);
    return {page, std::make_shared<NullBinding>()};
}

BuiltView SplitView::buildContainer() const
{
    auto *split = new BriskSplitView(Qt::Vertical);
    split->setDelegate(std::make_unique<BriskSplitViewDelegate>());
    return {split, std::make_shared<NullBinding>()};
}

QString EmbeddedControl::description() const
{
    return embeddedControl
        ? QStringLiteral("EmbeddedControl %1")
              .arg(QString::fromLatin1(embeddedControl->metaObject()->className()))
        : QStringLiteral("EmbeddedControl");
}

BuiltView EmbeddedControl::buildLeaf() const
{
    if (!embeddedControl)
        qFatal("EmbeddedControl: the widget to embed no longer exists");
    ViewAttachments::of(embeddedControl).embedded = true;
    return {embeddedControl, std::make_shared<NullBinding>()};
}

BuiltView WallWithIntrinsicSize::buildContainer() const
{
    return {new WallWithInstrinsicSize(size), std::make_shared<NullBinding>()};
}

} // namespace BuildDirectivesNamespace
