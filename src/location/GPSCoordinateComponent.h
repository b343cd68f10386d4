#pragma once

#include "bricks/Variables.h"
#include "location/Coordinate2D.h"
#include "session/Node.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>

class DataModel;
class MultiNodeCombinedValuesRequest;

// The colours the editor asks for; the view maps them onto its palette.
enum class ColorRole {
    SystemGray,
    // The chips' fill at rest: red, green and blue 0.577.
    IndicatorGray,
    BorderBlue,
    UncommittedTextColor,
    SystemRed,
    LabelColor,
};

// Adds a pin at a coordinate; the main window's content controller implements it.
class PinWorkflow
{
public:
    virtual ~PinWorkflow() = default;
    virtual void addPinUsingCurrentFlagWorkflow(Coordinate2D coordinate, bool switchToMapIfItems)
        = 0;
};

// The editor of the selection's GPS position: latitude and longitude fields that show what the
// selected files hold, take any coordinate form the parser understands and write it back. It
// keeps two pairs, the one the user sees and the one on disk; their difference decides the
// colours and whether Apply is enabled. This is the editor's logic and state; a view draws it
// and forwards the user's actions to the operations below. Main thread only.
class GPSCoordinateComponent
{
public:
    GPSCoordinateComponent(DataModel &model, QString label, QString placeholderText);
    ~GPSCoordinateComponent();
    GPSCoordinateComponent(const GPSCoordinateComponent &) = delete;
    GPSCoordinateComponent &operator=(const GPSCoordinateComponent &) = delete;

    using Text = std::shared_ptr<StraightReadWriteVariable<QString>>;

    // Normalised values have the form "%+.6f"; while the user types, the raw text.
    Text _currentLatitudeInInterface, _currentLongitudeInInterface;
    Text _currentLatitudeOnDisk, _currentLongitudeOnDisk;
    // Carried for the proposals; nothing here writes them.
    Text _proposedLatitude, _proposedLongitude;
    Text _placeholderText;
    Text _coordinateDMS, _coordinateDMM;
    // One character each: "+" or "-", "N" or "S", "E" or "W".
    Text _latitudeSign, _latitudeRef, _longitudeSign, _longitudeRef;

    const QString label;
    const QString latitudeExifKey = QStringLiteral("GPSLatitude#");
    const QString longitudeExifKey = QStringLiteral("GPSLongitude#");
    const QString latitudeRefExifKey = QStringLiteral("GPSLatitudeRef");
    const QString longitudeRefExifKey = QStringLiteral("GPSLongitudeRef");
    static constexpr double labelInset = 100.0;
    static constexpr double fieldWidth = 192.0;
    static constexpr double parameterWidth = 400.0;

    // What a view draws of one text field.
    struct FieldState
    {
        QString text;
        QString placeholder;
        bool editable = false;
        bool selectable = false;
    };

    // Listens to the selection and to the four coordinate variables; runs the selection
    // listener at once. Called once.
    void configureListeners();

    void setInterfaceCoordinates(const QString &latitude, const QString &longitude);
    // Takes the selection's combined values into the on-disk pair, and into the interface pair
    // when updateInterfaceValue is true.
    void triggerInterfaceUpdate(bool updateInterfaceValue);

    // The user's actions.
    void typeInLatitudeField(const QString &text);
    void typeInLongitudeField(const QString &text);
    // Return, and leaving the field, which does the same.
    void handleLatitudeReturn();
    void handleLongitudeReturn();
    void executeApplyButton();
    void executeAddFlagButton();
    void executeResetButton();
    void copyDMS();
    void copyDMM();

    // The state a view draws.
    const FieldState &latitudeField() const { return m_latitudeField; }
    const FieldState &longitudeField() const { return m_longitudeField; }
    ColorRole borderColor() const { return m_borderColor; }
    ColorRole indicatorBackgroundColor() const { return m_indicatorBackgroundColor; }
    ColorRole textColor() const { return m_textColor; }
    bool copyButtonsVisible() const { return m_copyButtonsVisible; }
    bool applyButtonEnabled() const { return m_applyEnabled; }
    bool addFlagButtonEnabled() const { return m_addFlagEnabled; }
    static constexpr bool resetButtonEnabled() { return true; }
    // Whether the fields have been given the values of the current selection and no later
    // update is on its way: the values land a moment after the selection itself, once read.
    bool showsCurrentSelection() const;
    // Tells the view that the field or button state above has changed.
    std::shared_ptr<StraightVariable<int>> stateRevision;

    bool isInputValid() const;
    static QString normalizeCoordinateValue(const QString &text, bool isLatitude);

    // Not owned; without one, adding a pin beeps.
    void setPinWorkflow(PinWorkflow *workflow) { m_pinWorkflow = workflow; }
    PinWorkflow *pinWorkflow() const { return m_pinWorkflow; }

private:
    struct ValidPair
    {
        double latitude;
        double longitude;
    };
    std::optional<ValidPair> parsedInterfacePair() const;

    void selectionDidChange(const QList<NodePtr> &selection);
    void setCurrentValueOnDiskTakingIntoAccountStickiness(const QString &latitude,
                                                          const QString &longitude,
                                                          bool updateInterfaceValue);
    bool applyParsedCoordinatePairIfPresent(const QString &text);
    void typeInField(bool isLatitude, const QString &text);
    void reformatField(bool isLatitude);
    void setFieldTexts(const QString &latitude, const QString &longitude);
    void updateDisplayLabels();
    void clearDisplayLabels();
    void configureApplyButton();
    void updateFieldAppearance();
    void stateChanged();

    DataModel &m_model;
    std::shared_ptr<MultiNodeCombinedValuesRequest> latitudeValuesRequest;
    std::shared_ptr<MultiNodeCombinedValuesRequest> longitudeValuesRequest;
    // Absent until the first selection, so that the first one always counts as a change.
    std::optional<QList<NodePtr>> previousSelection;
    // The selection whose values the last interface update showed.
    std::optional<QList<NodePtr>> m_shownSelection;
    // Selection updates still on their way; each chain holds a token that counts itself out
    // when the chain ends or its request is dropped.
    std::shared_ptr<int> m_updatesOnTheirWay = std::make_shared<int>(0);
    // Lets delayed blocks find out whether the component is still there.
    std::shared_ptr<GPSCoordinateComponent *> m_self;

    FieldState m_latitudeField, m_longitudeField;
    ColorRole m_borderColor = ColorRole::SystemGray;
    ColorRole m_indicatorBackgroundColor = ColorRole::IndicatorGray;
    ColorRole m_textColor = ColorRole::LabelColor;
    bool m_copyButtonsVisible = false;
    bool m_applyEnabled = false;
    bool m_addFlagEnabled = false;
    PinWorkflow *m_pinWorkflow = nullptr;
};
