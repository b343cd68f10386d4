#pragma once

// The preview's tabs in the order the window holds them; the first is the waiting screen, which
// the user never chooses, so a chosen tab is the persisted preview mode plus one.
enum class PreviewTab : int { wait, items, map, vertical, combinedHorizontal };
