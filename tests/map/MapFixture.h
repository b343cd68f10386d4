#pragma once

#include "metadata/MetadataStorage.h"
#include "session/Node.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>

// Files in a temporary folder whose ExifTool values are put into the store as the reader leaves
// them: a photo's unsigned numbers with their references, a movie's signed pair.
class MapFixture
{
public:
    NodePtr photo(const QString &name, double latitude, double longitude)
    {
        const NodePtr node = file(name);
        store(node, QStringLiteral("GPSLatitude#"), QString::number(std::fabs(latitude), 'g', 12));
        store(node, QStringLiteral("GPSLongitude#"),
              QString::number(std::fabs(longitude), 'g', 12));
        store(node, QStringLiteral("GPSLatitudeRef"),
              latitude < 0 ? QStringLiteral("South") : QStringLiteral("North"));
        store(node, QStringLiteral("GPSLongitudeRef"),
              longitude < 0 ? QStringLiteral("West") : QStringLiteral("East"));
        return node;
    }

    NodePtr file(const QString &name)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot create %s", qPrintable(path));
        const NodePtr node = FileNode::createWithoutRead(name, path, name, {});
        MetadataStorage::shared().store(path, MetadataSource::ExifToolGeneric,
                                        QStringLiteral("retrieved"), true);
        return node;
    }

    void store(const NodePtr &node, const QString &key, const QString &value)
    {
        MetadataStorage::shared().store(node->absolutePath, MetadataSource::ExifToolGeneric, key,
                                        value);
    }

    QString path() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
};
