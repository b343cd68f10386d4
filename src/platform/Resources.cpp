#include "Resources.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace Resources {

QString directory()
{
    static const QString found = [] {
        QStringList candidates;
        if (QCoreApplication::instance()) {
            const QString appDir = QCoreApplication::applicationDirPath();
            candidates << appDir + QStringLiteral("/resources")
                       << appDir + QStringLiteral("/../share/palomet");
        }
        candidates << QStringLiteral(PALOMET_BUILD_RESOURCE_DIR);
        for (const QString &candidate : std::as_const(candidates)) {
            if (QFileInfo(candidate).isDir())
                return QDir(candidate).canonicalPath();
        }
        return QString(QStringLiteral(PALOMET_BUILD_RESOURCE_DIR));
    }();
    return found;
}

QString path(const QString &relativePath)
{
    return directory() + QLatin1Char('/') + relativePath;
}

} // namespace Resources
