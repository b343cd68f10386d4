#pragma once

#include "bricks/walls/WallDirectives.h"
#include "location/IPTCLocationComponent.h"

#include <QObject>
#include <QPointer>

class FakeComboBoxButtonBrick;
class SmartTextField;

// One location field of the parameter side (sub-location, city, province or country): the
// caption, the field with its border, the button at its end that offers the proposals and the
// values of other items, Apply and reset. The fragment draws what IPTCLocationComponent decides
// and hands the user's typing, choices, Return, Escape and clicks to it. Main thread only.
class LocationFieldFragment : public QObject
{
    Q_OBJECT

public:
    // The fragment for a parameter stack; its views are named after `name` ("city" gives
    // "cityFragment", "cityField", "cityComboButton", "cityApplyButton", "cityResetButton").
    static BuildDirectivesNamespace::FragmentWall directive(IPTCLocationComponent &component,
                                                            const QString &name);
    // The name of each of the model's four editors, as directive() takes it.
    static QString nameOf(const QString &exifToolsValueKey);

    LocationFieldFragment(IPTCLocationComponent &component, const QString &name, QWidget *fragment);

    void sync();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void rebuildMenu();
    void openMenu();

    IPTCLocationComponent &m_component;
    QPointer<QWidget> m_fragment;
    QPointer<SmartTextField> m_field;
    QPointer<FakeComboBoxButtonBrick> m_comboButton;
    QPointer<QWidget> m_applyButton;
    QList<IPTCLocationComponent::MenuEntry> m_shownMenu;
    bool m_menuBuilt = false;
};
