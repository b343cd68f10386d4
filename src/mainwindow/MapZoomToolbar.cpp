#include "MapZoomToolbar.h"

#include "MapSymbols.h"
#include "location/PinAndStepperController.h"
#include "map/MapDelegate.h"
#include "session/DataModel.h"

#include <QPointer>
#include <QToolButton>

using namespace Qt::StringLiterals;

MapZoomToolbar::MapZoomToolbar(DataModel &model, MapDelegate &delegate, QWidget *parent)
    : MapFloatingBar(parent)
    , m_model(model)
{
    addZoomButtons(delegate);
    m_previousPin = addButton(MapSymbols::icon(u"chevron.backward"_s, {}, u"go-previous"_s),
                              tr("previous pin"), tr("Previous pin"), u"prevPinButton"_s);
    m_nextPin = addButton(MapSymbols::icon(u"chevron.forward"_s, {}, u"go-next"_s), tr("next pin"),
                          tr("Next pin"), u"nextPinButton"_s);
    m_online = addButton(MapSymbols::globe(), tr("Online Map"),
                         tr("Show OpenStreetMap's map, loaded from the internet; when off, the "
                            "map shows country shapes only"),
                         u"onlineMapButton"_s);
    m_online->setCheckable(true);
    connect(m_previousPin, &QToolButton::clicked, this, [this] {
        if (m_pins)
            m_pins->selectPreviousPin();
        else
            m_model.selectPreviousPin();
    });
    connect(m_nextPin, &QToolButton::clicked, this, [this] {
        if (m_pins)
            m_pins->selectNextPin();
        else
            m_model.selectNextPin();
    });
    connect(m_online, &QToolButton::toggled, this, &MapZoomToolbar::onlineToggled);

    // The model outlives the bar.
    QPointer<MapZoomToolbar> self(this);
    m_model._pins->addColdListener([self](const QList<Pin> &) {
        if (self)
            self->updatePinButtons();
    });
    updatePinButtons();
}

void MapZoomToolbar::updatePinButtons()
{
    const bool stepping = m_model._pins->ref().size() >= 2;
    m_previousPin->setEnabled(stepping);
    m_nextPin->setEnabled(stepping);
}
