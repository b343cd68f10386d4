#include "GPSLocationFragment.h"

#include "CoordinateFieldWall.h"
#include "EditorStyle.h"
#include "bricks/controls/ControlDirectives.h"
#include "location/GPSCoordinateComponent.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>

namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;

namespace {

// The field inside a coordinate frame draws no frame or background of its own.
B::UnboundTextField innerField(const LayoutTag &tag, const QString &toolTip)
{
    return B::UnboundTextField().tag(tag).style<SmartTextField>([toolTip](SmartTextField *field) {
        field->setFrame(false);
        QPalette palette = field->palette();
        palette.setBrush(QPalette::Base, Qt::transparent);
        field->setPalette(palette);
        field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        field->setToolTip(toolTip);
    });
}

} // namespace

B::FragmentWall GPSLocationFragment::directive(GPSCoordinateComponent &component)
{
    using namespace EditorStyle;
    const LayoutTag caption("gpsLocationLabel"), latitude("latitudeField"),
        latitudeInner("latitudeFieldInner"), latitudeSign("latitudeSign"),
        latitudeRef("latitudeRef"), longitude("longitudeField"),
        longitudeInner("longitudeFieldInner"), longitudeSign("longitudeSign"),
        longitudeRef("longitudeRef"), dms("coordinateDMSLabel"), dmm("coordinateDMMLabel"),
        copyDMS("copyDMSButton"), copyDMM("copyDMMButton"), apply("applyButton"),
        addFlag("addFlagButton"), reset("resetButton"), divider("divider");
    GPSCoordinateComponent *c = &component;
    const QString fieldHelp
        = tr("Decimal degrees, degrees and minutes, or degrees, minutes and seconds. A pair "
             "such as \"48.8584, 2.2945\" fills both fields.");

    return B::FragmentWall {
        B::StaticLabel(component.label).tag(caption).style<QLabel>(&makeCaption),
        B::coordinateField(innerField(latitudeInner, tr("Latitude. ") + fieldHelp), latitudeInner,
                           latitude, {latitudeSign, component._latitudeSign},
                           {latitudeRef, component._latitudeRef}),
        B::coordinateField(innerField(longitudeInner, tr("Longitude. ") + fieldHelp),
                           longitudeInner, longitude, {longitudeSign, component._longitudeSign},
                           {longitudeRef, component._longitudeRef}),
        B::DynamicSingleLineLabel(AnyReadOnlyVariable<QString>(component._coordinateDMS)).tag(dms),
        B::PushButton(QString(), [c] { c->copyDMS(); })
            .tag(copyDMS)
            .style<QAbstractButton>([](QAbstractButton *button) {
                makeIconButton(button, u"clipboard",
                               tr("Copy the position in degrees, minutes and seconds"), tr("copy"));
            }),
        B::DynamicSingleLineLabel(AnyReadOnlyVariable<QString>(component._coordinateDMM)).tag(dmm),
        B::PushButton(QString(), [c] { c->copyDMM(); })
            .tag(copyDMM)
            .style<QAbstractButton>([](QAbstractButton *button) {
                makeIconButton(button, u"clipboard",
                               tr("Copy the position in degrees and decimal minutes"), tr("copy"));
            }),
        B::PushButton(tr("Apply", "button label"), [c] { c->executeApplyButton(); })
            .tag(apply)
            .style<QAbstractButton>([](QAbstractButton *button) {
                makeTextButton(button, tr("Write this position to the selected files"),
                               tr("Apply position"));
            }),
        B::PushButton(QString(), [c] { c->executeAddFlagButton(); })
            .tag(addFlag)
            .style<QAbstractButton>([](QAbstractButton *button) {
                makeIconButton(button, u"mappin+plus",
                               tr("Add new pin at the coordinates of the current item"),
                               tr("add pin"));
            }),
        B::PushButton(QString(), [c] { c->executeResetButton(); })
            .tag(reset)
            .style<QAbstractButton>([](QAbstractButton *button) {
                makeIconButton(button, u"arrow.triangle.2.circlepath",
                               tr("Show the position stored in the files again"), tr("refresh"));
            }),
        B::HorizontalDivider().tag(divider)}
        .layout({pin(caption, D::left, horizontalMargin),
                 pin(latitude, D::top, verticalMargin),
                 after(latitude, caption, columnSpacing),
                 before(latitude, apply, columnSpacing),
                 after(reset, apply, buttonSpacing),
                 pin(reset, D::right, horizontalMargin),
                 sameCenterY({latitude, caption, apply, reset}),
                 below(longitude, latitude, rowSpacing),
                 sameFlushLeft({latitude, longitude}),
                 sameFlushRight({latitude, longitude}),
                 sameFlushRight({reset, addFlag}),
                 sameCenterY({longitude, addFlag}),
                 below(copyDMS, longitude, rowSpacing),
                 sameFlushRight({longitude, copyDMS, copyDMM}),
                 below(copyDMM, copyDMS, 0),
                 sameFlushLeft({longitude, dms, dmm}),
                 before(dms, copyDMS, buttonSpacing),
                 before(dmm, copyDMM, buttonSpacing),
                 sameCenterY({copyDMS, dms}),
                 sameCenterY({copyDMM, dmm}),
                 below(divider, copyDMM, verticalMargin),
                 pin(divider, D::left),
                 pin(divider, D::right),
                 pin(divider, D::bottom)})
        .code(CodeExecutionPhase::prepare, [c](QWidget *view, Binding *, Assembly *) {
            view->setObjectName(QStringLiteral("gpsLocationFragment"));
            new GPSLocationFragment(*c, view);
        });
}

GPSLocationFragment::GPSLocationFragment(GPSCoordinateComponent &component, QWidget *fragment)
    : QObject(fragment)
    , m_component(component)
    , m_fragment(fragment)
{
    const auto find = [fragment](const char *name) {
        QWidget *child = fragment->findChild<QWidget *>(QLatin1String(name));
        if (!child)
            qFatal("GPSLocationFragment: the fragment has no view \"%s\"", name);
        return child;
    };
    m_latitudeWall = qobject_cast<CoordinateFieldWall *>(find("latitudeField"));
    m_longitudeWall = qobject_cast<CoordinateFieldWall *>(find("longitudeField"));
    m_latitudeField = qobject_cast<SmartTextField *>(find("latitudeFieldInner"));
    m_longitudeField = qobject_cast<SmartTextField *>(find("longitudeFieldInner"));
    m_copyDMSButton = find("copyDMSButton");
    m_copyDMMButton = find("copyDMMButton");
    m_applyButton = find("applyButton");
    m_addFlagButton = find("addFlagButton");
    connectField(m_latitudeField, true);
    connectField(m_longitudeField, false);
    // Reading order for Tab: the two fields, then the buttons.
    QWidget::setTabOrder(m_latitudeField, m_longitudeField);
    fragment->installEventFilter(this);

    const QPointer<GPSLocationFragment> self = this;
    component.stateRevision->addHotListener([self](int) {
        if (self)
            self->sync();
    });
}

void GPSLocationFragment::connectField(SmartTextField *field, bool isLatitude)
{
    GPSCoordinateComponent *c = &m_component;
    field->textChangedAction = [c, isLatitude](const QString &text) {
        if (isLatitude)
            c->typeInLatitudeField(text);
        else
            c->typeInLongitudeField(text);
    };
    // Return, and leaving the field, commit it.
    field->returnKeyActionFunction = [c, isLatitude](const QString &) {
        if (isLatitude)
            c->handleLatitudeReturn();
        else
            c->handleLongitudeReturn();
    };
    field->callsReturnKeyFunctionOnResigningFirstResponder = true;
    field->installEventFilter(this);
}

bool GPSLocationFragment::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape
        && (watched == m_latitudeField || watched == m_longitudeField)) {
        // Escape gives up the edit: the fields show what the files hold.
        m_component.executeResetButton();
        return true;
    }
    if (watched == m_fragment
        && (event->type() == QEvent::PaletteChange
            || event->type() == QEvent::ApplicationPaletteChange))
        sync();
    return false;
}

namespace {

void syncField(SmartTextField *field, const GPSCoordinateComponent::FieldState &state)
{
    if (!field)
        return;
    if (field->text() != state.text)
        field->setText(state.text);
    if (field->placeholderText() != state.placeholder)
        field->setPlaceholderText(state.placeholder);
    field->setEnabled(state.editable);
}

} // namespace

void GPSLocationFragment::sync()
{
    if (!m_fragment)
        return;
    const GPSCoordinateComponent &c = m_component;
    syncField(m_latitudeField, c.latitudeField());
    syncField(m_longitudeField, c.longitudeField());

    const QPalette palette = QApplication::palette(m_fragment);
    const QColor frame = EditorStyle::color(c.borderColor(), palette);
    const QColor chip = EditorStyle::color(c.indicatorBackgroundColor(), palette);
    const QColor text = EditorStyle::color(c.textColor(), palette);
    const bool chips = !c._currentLatitudeInInterface->value().isEmpty()
        || !c._currentLongitudeInInterface->value().isEmpty();
    for (CoordinateFieldWall *wall : {m_latitudeWall.data(), m_longitudeWall.data()}) {
        if (!wall)
            continue;
        wall->setFrameColor(frame);
        wall->setChipColor(chip);
        wall->setShowsChips(chips);
    }
    for (SmartTextField *field : {m_latitudeField.data(), m_longitudeField.data()}) {
        if (field)
            EditorStyle::setTextColor(field, text);
    }
    for (QWidget *button : {m_copyDMSButton.data(), m_copyDMMButton.data()}) {
        if (button)
            button->setVisible(c.copyButtonsVisible());
    }
    if (m_applyButton)
        m_applyButton->setEnabled(c.applyButtonEnabled());
    if (m_addFlagButton)
        m_addFlagButton->setEnabled(c.addFlagButtonEnabled());
}
