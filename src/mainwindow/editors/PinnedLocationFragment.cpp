#include "PinnedLocationFragment.h"

#include "CoordinateFieldWall.h"
#include "EditorStyle.h"
#include "bricks/controls/ControlDirectives.h"
#include "bricks/controls/SingleLineLabel.h"
#include "location/PinAndStepperController.h"
#include "platform/ClipboardWriter.h"
#include "session/DataModel.h"
#include "writing/ChangeManager.h"

#include <QApplication>
#include <QEvent>
#include <QLabel>

namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;

namespace {

using TextVariable = std::shared_ptr<StraightReadWriteVariable<QString>>;

// A read-only value in a rounded frame; a long one is elided and shown whole in its tool tip.
B::Wall valueBox(const LayoutTag &box, const LayoutTag &label, const TextVariable &text)
{
    return B::Wall {B::DynamicSingleLineLabel(AnyReadOnlyVariable<QString>(text)).tag(label)}
        .tag(box)
        .style<Wall>([](Wall *wall) {
            wall->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
            wall->layerCornerRadius = CoordinateFieldWall::cornerRadius;
            wall->layerBorderWidth = 1;
        })
        .layout({pin(label, D::left, 6), pin(label, D::right, 6), pin(label, D::top, 4),
                 pin(label, D::bottom, 4)});
}

// The sign or the direction chip of a pinned coordinate.
B::CoordinateChip chip(const char *tag, const TextVariable &text)
{
    return {LayoutTag(QString::fromLatin1(tag)), AnyReadOnlyVariable<QString>(text)};
}

} // namespace

B::FragmentWall PinnedLocationFragment::directive(DataModel &model,
                                                  PinAndStepperController &controller)
{
    using namespace EditorStyle;
    const LayoutTag pinCaption("pinCaption"), pinLabel("pinLabel"), previous("previousPinButton"),
        next("nextPinButton"), center("centerPinButton"), remove("deletePinButton"),
        positionCaption("pinnedPositionCaption"), latitude("pinnedLatitudeWall"),
        latitudeText("pinnedLatitudeLabel"), longitude("pinnedLongitudeWall"),
        longitudeText("pinnedLongitudeLabel"), dms("pinnedCoordinateDMSLabel"),
        dmm("pinnedCoordinateDMMLabel"), copyDMS("copyPinnedDMSButton"),
        copyDMM("copyPinnedDMMButton"), applyGPS("applyGPSButton");
    DataModel *m = &model;
    PinAndStepperController *c = &controller;

    struct Row
    {
        QString caption;
        QString name;
        TextVariable text;
        void (*apply)();
        QString applyTag;
    };
    const QList<Row> rows = {
        {tr("Sub-Location:"), tr("sub-location"), model._pinnedSublocationName,
         &ChangeManager::applyCurrentPinnedSubLocationToCurrentSelection,
         QStringLiteral("applySublocationButton")},
        {tr("City:"), tr("city"), model._pinnedLocationCity,
         &ChangeManager::applyCurrentPinnedCityToCurrentSelection,
         QStringLiteral("applyCityButton")},
        {tr("Province:"), tr("province"), model._pinnedLocationRegion,
         &ChangeManager::applyCurrentPinnedRegionToCurrentSelection,
         QStringLiteral("applyProvinceButton")},
        {tr("Country:"), tr("country"), model._pinnedLocationCountry,
         &ChangeManager::applyCurrentPinnedCountryToCurrentSelection,
         QStringLiteral("applyCountryButton")},
    };

    const auto iconButton = [](const LayoutTag &tag, std::function<void()> action,
                               const char16_t *symbol, QString toolTip, QString name) {
        return B::PushButton(QString(), std::move(action))
            .tag(tag)
            .style<QAbstractButton>([symbol, toolTip, name](QAbstractButton *b) {
                makeIconButton(b, QStringView(symbol), toolTip, name);
            });
    };
    const auto applyButton
        = [](const LayoutTag &tag, std::function<void()> action, const QString &what) {
              return B::PushButton(tr("Apply", "button label"), std::move(action))
                  .tag(tag)
                  .style<QAbstractButton>([what](QAbstractButton *b) {
                      makeTextButton(b, tr("Write the pin's %1 to the selected files").arg(what),
                                     tr("Apply pinned %1").arg(what));
                  });
          };

    BuildDirectiveList children {
        B::StaticLabel(tr("Pin:")).tag(pinCaption).style<QLabel>(&makeCaption),
        B::DynamicSingleLineLabel(AnyReadOnlyVariable<QString>(model._currentPinName))
            .tag(pinLabel)
            .style<SingleLineLabel>([](SingleLineLabel *label) {
                QFont font = label->font();
                font.setBold(true);
                label->setFont(font);
            }),
        iconButton(
            previous, [c] { c->selectPreviousPin(); }, u"chevron.backward",
            tr("Show the previous pin"), tr("previous pin")),
        iconButton(
            next, [c] { c->selectNextPin(); }, u"chevron.forward", tr("Show the next pin"),
            tr("next pin")),
        iconButton(
            center, [c] { c->centerMapOnCurrentPin(true); }, u"scope",
            tr("Center map on selected pin"), tr("target current pin")),
        iconButton(
            remove, [m] { m->deleteCurrentPin(); }, u"trash", tr("Delete selected pin"),
            tr("delete current pin")),
        B::StaticLabel(tr("Position:")).tag(positionCaption).style<QLabel>(&makeCaption),
        B::coordinateField(
            B::DynamicSingleLineLabel(AnyReadOnlyVariable<QString>(model._pinnedLatitudeString))
                .tag(latitudeText),
            latitudeText, latitude, chip("pinnedLatitudeSign", model._pinnedLatitudeSign),
            chip("pinnedLatitudeRef", model._pinnedLatitudeRef)),
        B::coordinateField(
            B::DynamicSingleLineLabel(AnyReadOnlyVariable<QString>(model._pinnedLongitudeString))
                .tag(longitudeText),
            longitudeText, longitude, chip("pinnedLongitudeSign", model._pinnedLongitudeSign),
            chip("pinnedLongitudeRef", model._pinnedLongitudeRef)),
        applyButton(applyGPS, &ChangeManager::applyCurrentPinnedGPSToCurrentSelection,
                    tr("position")),
        B::DynamicSingleLineLabel(AnyReadOnlyVariable<QString>(model._pinnedCoordinateDMS))
            .tag(dms),
        iconButton(
            copyDMS, [m] { ClipboardWriter::setText(m->_pinnedCoordinateDMS->value()); },
            u"clipboard", tr("Copy the pin's position in degrees, minutes and seconds"),
            tr("copy")),
        B::DynamicSingleLineLabel(AnyReadOnlyVariable<QString>(model._pinnedCoordinateDMM))
            .tag(dmm),
        iconButton(
            copyDMM, [m] { ClipboardWriter::setText(m->_pinnedCoordinateDMM->value()); },
            u"clipboard", tr("Copy the pin's position in degrees and decimal minutes"), tr("copy")),
    };

    LayoutDirectiveList recipe {
        pin(pinCaption, D::left, horizontalMargin),
        pin(pinLabel, D::top, verticalMargin),
        after(pinLabel, pinCaption, columnSpacing),
        before(pinLabel, previous, columnSpacing),
        after(next, previous, buttonSpacing),
        after(center, next, buttonSpacing),
        after(remove, center, buttonSpacing),
        pin(remove, D::right, horizontalMargin),
        sameCenterY({pinLabel, pinCaption, previous, next, center, remove}),
        pin(previous, D::top, verticalMargin),
        pin(positionCaption, D::left, horizontalMargin),
        below(latitude, previous, rowSpacing),
        after(latitude, positionCaption, columnSpacing),
        before(latitude, applyGPS, columnSpacing),
        before(applyGPS, remove, buttonSpacing),
        sameCenterY({latitude, positionCaption, applyGPS}),
        below(longitude, latitude, rowSpacing),
        sameFlushLeft({latitude, longitude, pinLabel, dms, dmm}),
        sameFlushRight({latitude, longitude, copyDMS, copyDMM}),
        below(copyDMS, longitude, rowSpacing),
        below(copyDMM, copyDMS, 0),
        before(dms, copyDMS, buttonSpacing),
        before(dmm, copyDMM, buttonSpacing),
        sameCenterY({copyDMS, dms}),
        sameCenterY({copyDMM, dmm}),
    };
    LayoutTag above = copyDMM;
    for (const Row &row : rows) {
        const LayoutTag caption(row.applyTag + QStringLiteral("Caption")),
            box(row.applyTag + QStringLiteral("Box")),
            label(row.applyTag + QStringLiteral("Label")), apply(row.applyTag);
        children.append(B::StaticLabel(row.caption).tag(caption).style<QLabel>(&makeCaption));
        children.append(valueBox(box, label, row.text));
        children.append(applyButton(apply, row.apply, row.name));
        recipe.append({pin(caption, D::left, horizontalMargin), below(box, above, rowSpacing),
                       after(box, caption, columnSpacing), before(box, apply, columnSpacing),
                       before(apply, remove, buttonSpacing), sameCenterY({box, caption, apply})});
        above = box;
    }
    recipe.append(pin(above, D::bottom, verticalMargin));

    return B::FragmentWall {children}.layout(recipe).code(
        CodeExecutionPhase::prepare, [m, c](QWidget *view, Binding *, Assembly *) {
            view->setObjectName(QStringLiteral("pinnedGpsLocationFragment"));
            new PinnedLocationFragment(*m, *c, view);
        });
}

PinnedLocationFragment::PinnedLocationFragment(DataModel &model,
                                               PinAndStepperController &controller,
                                               QWidget *fragment)
    : QObject(fragment)
    , m_model(model)
    , m_controller(controller)
    , m_fragment(fragment)
{
    const auto find = [fragment](const QString &name) {
        QWidget *child = fragment->findChild<QWidget *>(name);
        if (!child)
            qFatal("PinnedLocationFragment: the fragment has no view \"%s\"", qPrintable(name));
        return child;
    };
    m_latitudeWall
        = qobject_cast<CoordinateFieldWall *>(find(QStringLiteral("pinnedLatitudeWall")));
    m_longitudeWall
        = qobject_cast<CoordinateFieldWall *>(find(QStringLiteral("pinnedLongitudeWall")));
    m_previousButton = find(QStringLiteral("previousPinButton"));
    m_nextButton = find(QStringLiteral("nextPinButton"));
    m_centerButton = find(QStringLiteral("centerPinButton"));
    m_deleteButton = find(QStringLiteral("deletePinButton"));
    m_copyDMSButton = find(QStringLiteral("copyPinnedDMSButton"));
    m_copyDMMButton = find(QStringLiteral("copyPinnedDMMButton"));
    m_applyGPSButton = find(QStringLiteral("applyGPSButton"));
    const QList<std::pair<TextVariable, QString>> values = {
        {model._pinnedSublocationName, QStringLiteral("applySublocationButton")},
        {model._pinnedLocationCity, QStringLiteral("applyCityButton")},
        {model._pinnedLocationRegion, QStringLiteral("applyProvinceButton")},
        {model._pinnedLocationCountry, QStringLiteral("applyCountryButton")},
    };
    for (const auto &[text, applyName] : values)
        m_values.append({text, find(applyName + QStringLiteral("Label")), find(applyName)});
    fragment->installEventFilter(this);

    const QPointer<PinnedLocationFragment> self = this;
    const auto resync = [self](const auto &) {
        if (self)
            self->sync();
    };
    controller.previousNextPinEnabled->addColdListener(resync);
    controller.centerAndDeletePinEnabled->addColdListener(resync);
    controller.pinnedCopyButtonsVisible->addColdListener(resync);
    model._selectedNodes->addColdListener(resync);
    for (const TextVariable &text :
         {model._pinnedLatitudeString, model._pinnedLongitudeString, model._pinnedSublocationName,
          model._pinnedLocationCity, model._pinnedLocationRegion, model._pinnedLocationCountry})
        text->addColdListener(resync);
    sync();
}

bool PinnedLocationFragment::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_fragment
        && (event->type() == QEvent::PaletteChange
            || event->type() == QEvent::ApplicationPaletteChange))
        sync();
    return false;
}

void PinnedLocationFragment::sync()
{
    if (!m_fragment)
        return;
    const QPalette palette = QApplication::palette(m_fragment);
    const bool hasPosition = !m_model._pinnedLatitudeString->value().isEmpty()
        || !m_model._pinnedLongitudeString->value().isEmpty();
    for (CoordinateFieldWall *wall : {m_latitudeWall.data(), m_longitudeWall.data()}) {
        if (!wall)
            continue;
        wall->setFrameColor(EditorStyle::color(ColorRole::SystemGray, palette));
        wall->setChipColor(EditorStyle::color(ColorRole::IndicatorGray, palette));
        wall->setShowsChips(hasPosition);
    }
    const auto enable = [](QWidget *widget, bool enabled) {
        if (widget)
            widget->setEnabled(enabled);
    };
    const bool stepping = m_controller.previousNextPinEnabled->value();
    const bool hasPin = m_controller.centerAndDeletePinEnabled->value();
    enable(m_previousButton, stepping);
    enable(m_nextButton, stepping);
    enable(m_centerButton, hasPin);
    enable(m_deleteButton, hasPin);
    for (QWidget *copy : {m_copyDMSButton.data(), m_copyDMMButton.data()}) {
        if (copy)
            copy->setVisible(m_controller.pinnedCopyButtonsVisible->value());
    }
    // An empty value would write nothing, so its button is off; so are all without a selection.
    const bool selection = !m_model.selectedNodes().isEmpty();
    enable(m_applyGPSButton,
           selection && !m_model._pinnedLatitudeString->value().isEmpty()
               && !m_model._pinnedLongitudeString->value().isEmpty());
    for (const Value &value : std::as_const(m_values)) {
        const QString text = value.text->value();
        enable(value.applyButton, selection && !text.isEmpty());
        if (auto *box = value.label ? value.label->parentWidget() : nullptr) {
            auto *wall = qobject_cast<Wall *>(box);
            if (wall
                && wall->layerBorderColor != EditorStyle::color(ColorRole::SystemGray, palette)) {
                wall->layerBorderColor = EditorStyle::color(ColorRole::SystemGray, palette);
                wall->updateLayerBorder();
            }
        }
        if (value.label)
            value.label->setToolTip(text);
    }
}
