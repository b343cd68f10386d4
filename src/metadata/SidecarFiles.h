#pragma once

#include <QString>
#include <QStringList>

// XMP sidecars: the small files beside a photo (mostly a RAW file) that hold its metadata
// instead of the photo itself. Two naming forms are in use: "name.ext.xmp" (written by
// darktable and digiKam) and "name.xmp" (written by Lightroom and others). An existing sidecar is
// read and written whatever its form, "name.ext.xmp" first when both exist; a new one takes the
// form the user chose. Stateless; any thread.
class SidecarFiles
{
public:
    SidecarFiles() = delete;

    // "Write locations to": the file itself, an XMP sidecar, or both. The index of the choice,
    // stored under writeLocationsToKey.
    enum class Destination { file = 0, sidecar = 1, both = 2 };
    // The form of a new sidecar, stored under sidecarNamingKey.
    enum class Naming { withExtension = 0, withoutExtension = 1 };
    static const QString writeLocationsToKey; // "writeLocationsTo"
    static const QString sidecarNamingKey; // "sidecarNaming"

    // The settings as the user defaults hold them.
    static Destination destination();
    static Naming naming();

    static bool isXMPFile(const QString &path);
    // The sidecar of a file that exists now, "name.ext.xmp" before "name.xmp"; empty if none.
    static QString existingSidecar(const QString &path);
    // The existing sidecar, else the path of a new one in the given form.
    static QString sidecarPath(const QString &path, Naming naming);
    // Types that ExifTool reads but cannot write, whose metadata can only go to a sidecar.
    static bool exifToolCannotWrite(const QString &path);

    // The files a location edit of path writes, in order: the file, its sidecar or both. A type
    // ExifTool cannot write gets its sidecar whatever the setting; an XMP file is its own.
    static QStringList writeTargets(const QString &path, Destination destination, Naming naming);
    static QStringList writeTargets(const QString &path);

    // Whether an XMP file is the sidecar of a file beside it (so not an item of its own):
    // "name.ext.xmp" beside "name.ext", or "name.xmp" beside any "name.ext" but another XMP.
    // siblingNames are the names in the same folder.
    static bool isSidecarOf(const QString &xmpName, const QStringList &siblingNames);
};
