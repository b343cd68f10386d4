#include "ParameterSide.h"

#include "EditorStyle.h"
#include "GPSLocationFragment.h"
#include "LocationFieldFragment.h"
#include "OutputSettingsFragment.h"
#include "PinnedLocationFragment.h"
#include "ProcessFragment.h"
#include "SortingFragment.h"
#include "StepperFragment.h"
#include "location/IPTCLocationComponent.h"
#include "session/DataModel.h"

namespace B = BuildDirectivesNamespace;

BuildDirectiveList ParameterSide::fragments(DataModel &model, std::shared_ptr<OutputEngine> engine,
                                            PinAndStepperController &controller)
{
    BuildDirectiveList list {
        ProcessFragment::directive(model),
        SortingFragment::directive(model),
        StepperFragment::directive(model, controller),
        GPSLocationFragment::directive(*model.gpsCoordinateComponent),
    };
    for (IPTCLocationComponent *component :
         {model.sublocationComponent.get(), model.cityComponent.get(), model.regionComponent.get(),
          model.countryComponent.get()})
        list.append(LocationFieldFragment::directive(
            *component, LocationFieldFragment::nameOf(component->exifToolsValueKey)));
    list.append(PinnedLocationFragment::directive(model, controller));
    list.append(OutputSettingsFragment::directive(model, std::move(engine)));
    return list;
}

BuildDirectiveList ParameterSide::directive(DataModel &model, std::shared_ptr<OutputEngine> engine,
                                            PinAndStepperController &controller)
{
    return B::FragmentStack {fragments(model, std::move(engine), controller)}.code(
        CodeExecutionPhase::prepare, [](QWidget *view, Binding *, Assembly *) {
            view->setObjectName(QStringLiteral("parameterStackView"));
            EditorStyle::alignCaptionColumns(view);
        });
}
