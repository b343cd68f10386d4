#pragma once

#include "FlatFileList.h"
#include "TextHash.h"

#include <QString>

#include <atomic>
#include <unordered_map>

enum class IncludeFiles { No, Yes };
enum class IncludeFolders { No, Yes };

// Turns source paths into nodes appended to a growing list. One scanner per scan.
class FileScanner
{
public:
    // Scans one source as the pipeline does: a folder is walked, anything else (a file, a
    // package, a path that does not exist) is one item; then everything so far is sorted.
    void scanSource(const QString &sourcePath);

    void deepScan(const QString &sourcePath, IncludeFiles includeFiles,
                  IncludeFolders includeFolders);
    void createOneFile(const QString &path, const QString &relativePath);
    void createOneFolder(const QString &path, const QString &relativePath);

    FlatFileList flatFileList;
    HierarchicalFileList hierarchicalFileList;
    SortMode firstSortMode = SortMode(0);
    SortMode secondSortMode = SortMode(0);
    // Read without a lock by the status model; a stale value only makes the status lag.
    std::atomic_int currentTotalItemsScanned = 0;
    std::atomic_bool isSorting = false;

private:
    enum class Kind { File, Folder };
    // The nodes of one folder whose reads are not queued yet. They share their folder's
    // strings, and their reads are queued together rather than one at a time.
    struct FolderBatch
    {
        void add(FileScanner &scanner, Kind kind, const QString &name, const QString &path,
                 const QString &relativePath);
        void scheduleReads();

        const Node *sibling = nullptr;
        QList<NodePtr> unscheduled;
    };

    // The first node made with each name, whose name strings later namesakes share: a name
    // such as IMG_0001.JPG comes back in folder after folder.
    std::unordered_map<QStringView, const Node *, TextHash> m_firstNodeOfName;

    void walk(const QByteArray &folder, const QString &relativeFolder, IncludeFiles includeFiles,
              IncludeFolders includeFolders, const QString &sourcePath);
};
