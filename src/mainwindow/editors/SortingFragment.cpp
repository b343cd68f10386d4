#include "SortingFragment.h"

#include "ContainerBound.h"
#include "EditorStyle.h"
#include "bricks/controls/ControlDirectives.h"
#include "session/DataModel.h"

#include <QComboBox>
#include <QLabel>

namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;

QList<std::pair<QString, SortMode>> SortingFragment::sortModeTitles()
{
    // One key per pair of raw values, ascending at the even one.
    const QStringList keys = {
        tr("Name and sequence"),
        tr("Path and sequence"),
        tr("File creation date"),
        tr("File modification date"),
        tr("Content creation date"),
        tr("Size"),
        tr("Name"),
        tr("Absolute path"),
        tr("City"),
        tr("Country"),
        tr("Sub-location"),
        tr("Province"),
    };
    QList<std::pair<QString, SortMode>> titles;
    for (int raw = 0; raw < sortModeCount; ++raw) {
        const QString &key = keys.at(raw / 2);
        titles.append({raw % 2 == 0 ? tr("%1, ascending").arg(key) : tr("%1, descending").arg(key),
                       static_cast<SortMode>(raw)});
    }
    return titles;
}

B::FragmentWall SortingFragment::directive(DataModel &model)
{
    using namespace EditorStyle;
    const LayoutTag firstCaption("firstSortCaption"), first("firstSortModePopUp"),
        secondCaption("secondSortCaption"), second("secondSortModePopUp");
    const auto popup = [](const std::shared_ptr<StraightReadWriteVariable<SortMode>> &variable,
                          const LayoutTag &tag, const QString &name) {
        return B::PopupButtonWithEnum<SortMode>(sortModeTitles(), variable)
            .tag(tag)
            .style<QComboBox>([name](QComboBox *box) {
                // Long titles are elided rather than widening the side.
                box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
                box->setMinimumContentsLength(12);
                box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
                box->setAccessibleName(name);
            });
    };

    return B::FragmentWall {
        B::StaticLabel(tr("Sort by:")).tag(firstCaption).style<QLabel>(&makeCaption),
        popup(model._firstSortMode, first, tr("Sort by")).style<QWidget>([](QWidget *w) {
            w->setToolTip(tr("The order of the list"));
        }),
        B::StaticLabel(tr("Then by:")).tag(secondCaption).style<QLabel>(&makeCaption),
        popup(model._secondSortMode, second, tr("Then by")).style<QWidget>([](QWidget *w) {
            w->setToolTip(tr("The order of items that the first sort mode leaves tied"));
        })}
        .layout({pin(firstCaption, D::left, horizontalMargin),
                 pin(secondCaption, D::left, horizontalMargin),
                 after(first, firstCaption, columnSpacing),
                 after(second, secondCaption, columnSpacing),
                 pin(first, D::right, horizontalMargin), pin(second, D::right, horizontalMargin),
                 pin(first, D::top, verticalMargin), below(second, first, rowSpacing),
                 pin(second, D::bottom, verticalMargin), sameCenterY({first, firstCaption}),
                 sameCenterY({second, secondCaption})})
        .code(CodeExecutionPhase::prepare, [](QWidget *view, Binding *, Assembly *) {
            view->setObjectName(QStringLiteral("sortingFragment"));
        });
}
