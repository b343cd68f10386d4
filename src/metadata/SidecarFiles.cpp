#include "SidecarFiles.h"

#include "platform/UserDefaults.h"

#include <QFileInfo>
#include <QSet>

using namespace Qt::StringLiterals;

const QString SidecarFiles::writeLocationsToKey = u"writeLocationsTo"_s;
const QString SidecarFiles::sidecarNamingKey = u"sidecarNaming"_s;

namespace {

int storedChoice(const QString &key, int count)
{
    bool ok = false;
    const int value = UserDefaults::standard().objectForKey(key).toInt(&ok);
    // A damaged or foreign preference reads as the default.
    return ok && value >= 0 && value < count ? value : 0;
}

} // namespace

SidecarFiles::Destination SidecarFiles::destination()
{
    return Destination(storedChoice(writeLocationsToKey, 3));
}

SidecarFiles::Naming SidecarFiles::naming()
{
    return Naming(storedChoice(sidecarNamingKey, 2));
}

bool SidecarFiles::isXMPFile(const QString &path)
{
    return path.endsWith(u".xmp"_s, Qt::CaseInsensitive);
}

QString SidecarFiles::existingSidecar(const QString &path)
{
    if (isXMPFile(path))
        return QString();
    const QFileInfo info(path);
    for (const QString &candidate :
         {path + u".xmp"_s, info.path() + u'/' + info.completeBaseName() + u".xmp"_s}) {
        if (QFileInfo(candidate).isFile())
            return candidate;
    }
    // Sidecars written on other systems may spell the extension in capitals.
    for (const QString &candidate :
         {path + u".XMP"_s, info.path() + u'/' + info.completeBaseName() + u".XMP"_s}) {
        if (QFileInfo(candidate).isFile())
            return candidate;
    }
    return QString();
}

QString SidecarFiles::sidecarPath(const QString &path, Naming naming)
{
    const QString existing = existingSidecar(path);
    if (!existing.isEmpty())
        return existing;
    if (naming == Naming::withExtension)
        return path + u".xmp"_s;
    const QFileInfo info(path);
    return info.path() + u'/' + info.completeBaseName() + u".xmp"_s;
}

bool SidecarFiles::exifToolCannotWrite(const QString &path)
{
    // The RAW types the bundled ExifTool reads but cannot write (tst_SidecarFiles asks it).
    static const QSet<QString> readOnly
        = {u"3fr"_s, u"ari"_s, u"bay"_s, u"dcr"_s, u"k25"_s, u"kdc"_s, u"srf"_s, u"r3d"_s};
    return readOnly.contains(QFileInfo(path).suffix().toLower());
}

QStringList SidecarFiles::writeTargets(const QString &path, Destination destination, Naming naming)
{
    if (isXMPFile(path))
        return {path};
    if (exifToolCannotWrite(path))
        return {sidecarPath(path, naming)};
    switch (destination) {
    case Destination::file:
        return {path};
    case Destination::sidecar:
        return {sidecarPath(path, naming)};
    case Destination::both:
        return {path, sidecarPath(path, naming)};
    }
    return {path};
}

QStringList SidecarFiles::writeTargets(const QString &path)
{
    return writeTargets(path, destination(), naming());
}

bool SidecarFiles::isSidecarOf(const QString &xmpName, const QStringList &siblingNames)
{
    if (!isXMPFile(xmpName))
        return false;
    const QString stem = xmpName.chopped(4);
    for (const QString &sibling : siblingNames) {
        if (sibling == xmpName || isXMPFile(sibling))
            continue;
        if (sibling == stem)
            return true;
        if (sibling.startsWith(stem + u'.') && !sibling.sliced(stem.size() + 1).contains(u'.'))
            return true;
    }
    return false;
}
