// Builds and activates a pane of 500 rows (label, text field, button), each row's controls placed
// by constraints and the rows stacked by the pane, then lays it out at two widths. With
// BRICKS_BENCH_CHAIN set, the rows are instead chained to each other by constraints in one wall,
// the case the constraint solver handles in quadratic time.

#include "bricks/Assembly.h"
#include "bricks/ViewTree.h"
#include "bricks/controls/ControlDirectives.h"
#include "bricks/walls/WallDirectives.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>

#include <cstdio>

namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;

namespace {

constexpr int Rows = 500;

B::Wall row(int index, const std::shared_ptr<StraightVariable<QString>> &text)
{
    const LayoutTag label("label"), field("field"), button("button");
    return B::Wall {B::StaticLabel(QStringLiteral("Row %1:").arg(index)).tag(label),
                    B::StringInputField(text).tag(field), B::PushButton("Apply", [] {}).tag(button)}
        .layout({pin(label, D::left, 8), after(field, label, 8), after(button, field, 8),
                 pin(button, D::right, 8), pin(field, D::top, 4), pin(field, D::bottom, 4),
                 sameCenterY({field, label, button})});
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    std::vector<std::shared_ptr<StraightVariable<QString>>> texts;
    for (int i = 0; i < Rows; ++i)
        texts.push_back(
            std::make_shared<StraightVariable<QString>>(QStringLiteral("value %1").arg(i)));

    // A first, untimed build warms up fonts and styles.
    {
        auto warm = build({row(0, texts[0])});
        warm->activate();
        delete warm->view();
    }

    QElapsedTimer timer;
    timer.start();
    const bool chained = qEnvironmentVariableIsSet("BRICKS_BENCH_CHAIN");
    BuildDirectiveList rows;
    LayoutDirectiveList placement;
    QList<LayoutTag> tags;
    for (int i = 0; i < Rows; ++i) {
        tags.append(LayoutTag(QStringLiteral("row%1").arg(i)));
        rows.append(row(i, texts[size_t(i)]).tag(tags[i]));
        placement.append({pin(tags[i], D::left), pin(tags[i], D::right)});
        placement.append(i == 0 ? LayoutDirectiveList(pin(tags[i], D::top))
                                : LayoutDirectiveList(below(tags[i], tags[i - 1], 2)));
    }
    placement.append(pin(tags.last(), D::bottom));
    auto assembly
        = chained ? build({B::Wall(rows).layout(placement)}) : build({B::FragmentStack(rows)});
    const double built = timer.nsecsElapsed() / 1e6;
    assembly->activate();
    const double activated = timer.nsecsElapsed() / 1e6;

    QWidget *pane = assembly->view();
    const int height = pane->sizeHint().height();
    pane->resize(800, height);
    ViewTree::layoutSubtreeIfNeeded(pane);
    const double first = timer.nsecsElapsed() / 1e6;
    pane->resize(520, height);
    ViewTree::layoutSubtreeIfNeeded(pane);
    const double total = timer.nsecsElapsed() / 1e6;

    // The layout must be real: the last row's field ends 8 + button width before the edge.
    auto *lastField = pane->findChildren<QLineEdit *>().last();
    std::printf("rows %d, pane %dx%d, last field at x=%d width=%d\n", Rows, pane->width(),
                pane->height(), lastField->x(), lastField->width());
    std::printf("build %.1f ms, activate %.1f ms, layout at 800 %.1f ms, layout at 520 %.1f ms\n",
                built, activated - built, first - activated, total - first);
    std::printf("RESULT bricks_build_and_layout_ms=%.1f\n", total);
    delete pane;
    return 0;
}
