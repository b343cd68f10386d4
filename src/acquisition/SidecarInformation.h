#pragma once

#include <QString>

// The location in a file's XMP sidecar, read through the ExifTool worker as part of the file's
// embedded read. The sidecar's own values go under their own keys ("SidecarCity",
// "SidecarGPSLatitude#", ...) for the info pane. Where the file holds no value of its own, the
// sidecar's stands in under the file's keys, so that the columns, the statuses, the map and the
// editors see it (the position only as a whole); where both hold one and they differ, a
// divergence flag is set for the statuses and their tool tips. Worker's thread, before the
// statuses are decided.
namespace SidecarInformation {

// Does nothing when the file has no sidecar. fileIsQuickTime: the file keeps its position as
// one signed pair without references.
void storeSidecarValues(const QString &path, bool fileIsQuickTime);

// The flags, "1" when set, at the generic ExifTool source.
inline constexpr const char *gpsDivergentFlag = "SidecarGPSDivergent";
// The name of the sidecar read, at the generic ExifTool source; absent without one.
inline constexpr const char *sidecarNameKey = "SidecarName";

} // namespace SidecarInformation
