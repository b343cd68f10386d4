#pragma once

#include <QString>

// The application's resource folder: the workers, ExifTool and the map's web files.
namespace Resources {

// "resources" next to the executable in the build tree, share/palomet when installed, and
// for tests the build tree's folder.
QString directory();
QString path(const QString &relativePath);

} // namespace Resources
