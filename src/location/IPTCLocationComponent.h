#pragma once

#include "location/GPSCoordinateComponent.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>

// The editor of one text-valued location field of the selection (sub-location, city, region or
// country), with a menu of proposals: ExifTool's geolocation for the selection and the values
// used on other items. Like the GPS editor it compares the text in the interface with the
// text on disk. A view draws its state and forwards the user's actions. Main thread only.
class IPTCLocationComponent
{
public:
    IPTCLocationComponent(DataModel &model, QString label, QString exifToolsValueKey,
                          QString exifToolsProposedValueKey, const QString &sampleValue);
    ~IPTCLocationComponent();
    IPTCLocationComponent(const IPTCLocationComponent &) = delete;
    IPTCLocationComponent &operator=(const IPTCLocationComponent &) = delete;

    using Text = std::shared_ptr<StraightReadWriteVariable<QString>>;
    Text _currentValueInInterface;
    Text _currentValueOnDisk;
    // Emptied on each update; nothing else here writes it.
    Text _proposedValue;
    Text _placeHolderText;

    const QString label;
    const QString exifToolsValueKey;
    const QString exifToolsProposedValueKey;
    static constexpr double labelInset = 100.0;
    static constexpr double comboBoxWidth = 192.0;
    static constexpr double parameterWidth = 400.0;

    struct MenuEntry
    {
        enum class Kind { SectionHeader, Item };
        Kind kind;
        QString title;
        bool operator==(const MenuEntry &) const = default;
    };

    void configureListeners();
    void triggerInterfaceUpdate(bool updateInterfaceValue);

    // The user's actions.
    void typeText(const QString &text);
    // Choosing an entry of the menu; headers cannot be chosen.
    void chooseMenuItem(const QString &title);
    // Return, and leaving the field.
    void handleReturn();
    void executeApplyButton();
    void executeResetButton();

    // The state a view draws.
    const GPSCoordinateComponent::FieldState &field() const { return m_field; }
    const QList<MenuEntry> &menu() const { return m_menu; }
    bool comboButtonEnabled() const { return m_comboEnabled; }
    bool applyButtonEnabled() const { return m_applyEnabled; }
    ColorRole borderColor() const { return m_borderColor; }
    ColorRole textColor() const { return m_textColor; }
    // Tells the view that the state above has changed.
    std::shared_ptr<StraightVariable<int>> stateRevision;

private:
    void selectionDidChange(const QList<NodePtr> &selection);
    void addAllProposedValuesIfAnyAndDifferentFromPlaceholder();
    void addAllCurrentValuesIfAnyAndDifferentFromOwnValue();
    void addSection(const QString &header, const QString &key,
                    const std::function<bool(const QString &)> &keep);
    void configureApplyButton();
    void changeTextColor();
    void stateChanged();

    DataModel &m_model;
    std::shared_ptr<MultiNodeCombinedValuesRequest> currentValuesRequest;
    std::shared_ptr<MultiNodeCombinedValuesRequest> proposedValuesRequest;
    // Absent until the first selection, so that the first one always counts as a change.
    std::optional<QList<NodePtr>> previousSelection;
    std::shared_ptr<IPTCLocationComponent *> m_self;

    GPSCoordinateComponent::FieldState m_field;
    QList<MenuEntry> m_menu;
    bool m_comboEnabled = false;
    bool m_applyEnabled = false;
    ColorRole m_borderColor = ColorRole::SystemGray;
    ColorRole m_textColor = ColorRole::LabelColor;
};
