#pragma once

class QComboBox;
class QFormLayout;

// The preferences of XMP sidecars: "Write locations to" and the form of a new sidecar's name,
// two rows of a preferences form. Each choice is stored at once under the keys that
// SidecarFiles reads, so the next write follows it.
struct SidecarPreferences
{
    QComboBox *writeLocationsToPopup = nullptr;
    QComboBox *sidecarNamingPopup = nullptr;

    // Adds the two rows to form; the popups are children of form's parent widget.
    static SidecarPreferences addRows(QFormLayout *form);
};
