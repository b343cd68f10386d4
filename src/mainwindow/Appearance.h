#pragma once

#include <QString>

// The look the user chose in the preferences: the system's, or Palomet's own light or dark
// palette on the Fusion style, for desktops whose theme Qt does not follow.
namespace Appearance {

enum class Mode : int { system = 0, light = 1, dark = 2 };

// The user-defaults key; an unknown or damaged value reads as the system's look.
QString settingKey();
Mode storedMode();
// Applies the mode to the running application.
void apply(Mode mode);
// Applies the stored mode and follows later changes of it.
void applyStoredModeAndFollowChanges();

} // namespace Appearance
