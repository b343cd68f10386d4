#pragma once

#include "FlatFileList.h"

#include <QString>

#include <atomic>

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
    void walk(const QByteArray &folder, const QString &relativeFolder, IncludeFiles includeFiles,
              IncludeFolders includeFolders, const QString &sourcePath);
};
