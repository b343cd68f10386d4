#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

// File-system facts that Qt does not offer directly.
namespace FileAttributes {

// An extended attribute of the file (following links), absent when unset or unreadable.
std::optional<QByteArray> extendedAttribute(const QString &path, const char *name);

// The freedesktop tags of a file ("user.xdg.tags", comma-separated), absent when unset.
std::optional<QStringList> tags(const QString &path);

// The birth time where the file system records it (statx), without following a link.
std::optional<QDateTime> creationDate(const QString &path);

// Folders with these extensions are shown as one file, as bundles are on other systems.
bool isFilePackage(const QString &path);

} // namespace FileAttributes
