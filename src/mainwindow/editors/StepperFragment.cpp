#include "StepperFragment.h"

#include "ContainerBound.h"
#include "EditorStyle.h"
#include "bricks/controls/ControlDirectives.h"
#include "location/PinAndStepperController.h"
#include "session/DataModel.h"

#include <QLabel>

namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;

B::FragmentWall StepperFragment::directive(DataModel &model, PinAndStepperController &controller)
{
    using namespace EditorStyle;
    const LayoutTag caption("stepperCaption"), mode("stepperModePopUp"),
        previous("previousItemButton"), next("nextItemButton"), label("stepperLabel");
    QList<std::pair<QString, StepperMode>> modes;
    for (const StepperModeEntry &entry : stepperModeEntries())
        modes.append(
            {QCoreApplication::translate("StepperMode", entry.popupTitle, "pop up button title"),
             entry.mode});
    PinAndStepperController *c = &controller;

    return B::FragmentWall {
        B::StaticLabel(tr("Step by:")).tag(caption).style<QLabel>(&makeCaption),
        B::PopupButtonWithEnum<StepperMode>(modes, model._stepperMode)
            .tag(mode)
            .style<QWidget>([](QWidget *popup) {
                popup->setToolTip(tr("Step through single items, or through groups of items "
                                     "that share a location value"));
                popup->setAccessibleName(tr("Step by"));
            }),
        B::PushButton(QString(), [c] { c->selectItem(false); })
            .tag(previous)
            .style<QAbstractButton>([](QAbstractButton *b) {
                makeIconButton(b, u"chevron.backward", tr("Select the previous item or group"),
                               tr("previous item or group"));
            }),
        B::PushButton(QString(), [c] { c->selectItem(true); })
            .tag(next)
            .style<QAbstractButton>([](QAbstractButton *b) {
                makeIconButton(b, u"chevron.forward", tr("Select the next item or group"),
                               tr("next item or group"));
            }),
        B::DynamicSingleLineLabel(AnyReadOnlyVariable<QString>(model._stepperLabel))
            .tag(label)
            .truncateMiddle()
            // The label takes the room the row has left, not the popup.
            .horizontalContentHuggingPriority(LayoutPriority::defaultLow)}
        .layout({pin(caption, D::left, horizontalMargin), after(mode, caption, columnSpacing),
                 after(previous, mode, columnSpacing), after(next, previous, buttonSpacing),
                 after(label, next, columnSpacing), pin(label, D::right, horizontalMargin),
                 rowWithin({mode, caption, previous, next, label}, verticalMargin)})
        .code(CodeExecutionPhase::prepare, [](QWidget *view, Binding *, Assembly *) {
            view->setObjectName(QStringLiteral("filterFragment"));
        });
}
