#pragma once

#include "metadata/MetadataStorage.h"
#include "metadata/TagManager.h"
#include "session/FlatFileList.h"
#include "session/OutputEngine.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

// Real files in a temporary folder, with their values put into the store as a reader leaves
// them: the values first, then the source's "retrieved" marker.
class OutputFixture
{
public:
    NodePtr file(const QString &name)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot create %s", qPrintable(path));
        return FileNode::create(name, path, name);
    }

    template<typename Value>
    void store(const NodePtr &node, const QString &key, const Value &value)
    {
        const MetadataSource source
            = TagManager::shared().sourceForKey(key).value_or(MetadataSource::ExifToolGeneric);
        store(node, source, key, value);
    }

    template<typename Value>
    void store(const NodePtr &node, MetadataSource source, const QString &key, const Value &value)
    {
        MetadataStorage &storage = MetadataStorage::shared();
        storage.store(node->absolutePath, source, key, value);
        storage.store(node->absolutePath, source, QStringLiteral("retrieved"), true);
    }

    QString path() const { return m_dir.path(); }

    static FlatFileListPtr list(const QList<NodePtr> &nodes)
    {
        return std::make_shared<FlatFileList>(nodes);
    }

    // Runs one operation to its end on the calling thread and answers what the engine holds.
    template<typename Operation>
    static std::optional<QString> run(const DataModelSnapshot &snapshot, FlatFileListPtr list,
                                      bool cancelFirst = false)
    {
        auto engine = OutputEngine::create(nullptr);
        auto operation = std::make_shared<Operation>(snapshot, engine, std::move(list));
        if (cancelFirst)
            operation->cancel();
        operation->main();
        return engine->currentOutputString();
    }

private:
    QTemporaryDir m_dir;
};
