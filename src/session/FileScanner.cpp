#include "FileScanner.h"

#include "StringHelpers.h"
#include "metadata/SidecarFiles.h"
#include "platform/FileAttributes.h"

#include <QFile>

#include <dirent.h>
#include <sys/stat.h>

namespace {

QString joinPath(const QString &folder, const QString &component)
{
    if (folder.isEmpty())
        return component;
    if (folder.endsWith(QLatin1Char('/')))
        return folder + component;
    return folder + QLatin1Char('/') + component;
}

// Follows links, as an existence test with a directory flag does.
bool isDirectoryFollowingLinks(const QByteArray &path)
{
    struct stat info = {};
    return ::stat(path.constData(), &info) == 0 && S_ISDIR(info.st_mode);
}

} // namespace

void FileScanner::scanSource(const QString &sourcePath)
{
    const bool isDirectory = isDirectoryFollowingLinks(QFile::encodeName(sourcePath));
    if (isDirectory && !FileAttributes::isFilePackage(sourcePath))
        deepScan(sourcePath, IncludeFiles::Yes, IncludeFolders::No);
    else
        createOneFile(sourcePath, QString());
    isSorting = true;
    flatFileList.sort(firstSortMode, secondSortMode);
}

void FileScanner::deepScan(const QString &sourcePath, IncludeFiles includeFiles,
                           IncludeFolders includeFolders)
{
    walk(QFile::encodeName(sourcePath), QString(), includeFiles, includeFolders, sourcePath);
}

// Walks the folder depth first without following links. Hidden items are not created, but
// their visible contents are, as a plain enumeration of the tree finds them.
void FileScanner::walk(const QByteArray &folder, const QString &relativeFolder,
                       IncludeFiles includeFiles, IncludeFolders includeFolders,
                       const QString &sourcePath)
{
    DIR *directory = ::opendir(folder.constData());
    if (!directory)
        return;
    // Every item of this folder is prefix + name, and its path on disk childPath + name.
    QString prefix = joinPath(sourcePath, relativeFolder);
    if (!prefix.isEmpty() && !prefix.endsWith(QLatin1Char('/')))
        prefix += QLatin1Char('/');
    QByteArray childPath = folder;
    if (!childPath.endsWith('/'))
        childPath += '/';
    const qsizetype childPathBase = childPath.size();
    FolderBatch batch;
    QList<std::pair<QString, QString>> xmpFiles;

    while (const dirent *entry = ::readdir(directory)) {
        const char *rawName = entry->d_name;
        if (rawName[0] == '.' && (rawName[1] == 0 || (rawName[1] == '.' && rawName[2] == 0)))
            continue;
        childPath.truncate(childPathBase);
        childPath += rawName;
        const QString name = QFile::decodeName(rawName);
        QString fullPath;
        fullPath.reserve(prefix.size() + name.size());
        fullPath += prefix;
        fullPath += name;

        unsigned char type = entry->d_type;
        if (type == DT_UNKNOWN) {
            struct stat info = {};
            if (::lstat(childPath.constData(), &info) == 0)
                type = S_ISDIR(info.st_mode) ? DT_DIR : (S_ISLNK(info.st_mode) ? DT_LNK : DT_REG);
        }
        const bool isRealFolder = type == DT_DIR;
        const bool hidden = rawName[0] == '.';

        // A hidden item is not created, so a hidden package is walked like any folder.
        if (isRealFolder && !hidden && FileAttributes::isFilePackage(fullPath)) {
            // A package counts as a file, and nothing inside it is listed.
            if (includeFiles == IncludeFiles::Yes)
                batch.add(*this, Kind::File, name, fullPath, relativeFolder);
            continue;
        }
        if (isRealFolder) {
            if (!hidden && includeFolders == IncludeFolders::Yes)
                batch.add(*this, Kind::Folder, name, fullPath, relativeFolder);
            // The reads keep the order in which the nodes were made.
            batch.scheduleReads();
            walk(childPath, joinPath(relativeFolder, name), includeFiles, includeFolders,
                 sourcePath);
            continue;
        }
        if (hidden)
            continue;
        // A link to a folder reports as a folder and is not descended into; a broken link is
        // a file.
        if (type == DT_LNK && isDirectoryFollowingLinks(childPath)) {
            if (FileAttributes::isFilePackage(fullPath)) {
                if (includeFiles == IncludeFiles::Yes)
                    batch.add(*this, Kind::File, name, fullPath, relativeFolder);
            } else if (includeFolders == IncludeFolders::Yes) {
                batch.add(*this, Kind::Folder, name, fullPath, relativeFolder);
            }
            continue;
        }
        if (includeFiles == IncludeFiles::Yes) {
            // An XMP file waits until the folder is known: a sidecar is not an item of its own.
            if (SidecarFiles::isXMPFile(name))
                xmpFiles.append({name, fullPath});
            else
                batch.add(*this, Kind::File, name, fullPath, relativeFolder);
        }
    }
    if (!xmpFiles.isEmpty()) {
        QStringList names;
        ::rewinddir(directory);
        while (const dirent *entry = ::readdir(directory))
            names << QFile::decodeName(entry->d_name);
        for (const auto &[name, fullPath] : std::as_const(xmpFiles)) {
            if (!SidecarFiles::isSidecarOf(name, names))
                batch.add(*this, Kind::File, name, fullPath, relativeFolder);
        }
    }
    ::closedir(directory);
    batch.scheduleReads();
}

void FileScanner::FolderBatch::add(FileScanner &scanner, Kind kind, const QString &name,
                                   const QString &path, const QString &relativePath)
{
    auto namesake = scanner.m_firstNodeOfName.find(QStringView(name));
    const NodeRelatives relatives {
        sibling, namesake == scanner.m_firstNodeOfName.end() ? nullptr : namesake->second};
    NodePtr node;
    if (kind == Kind::File)
        node = FileNode::createWithoutRead(name, path, relativePath, relatives);
    else
        node = FolderNode::createWithoutRead(name, path, relativePath, relatives);
    sibling = node.get();
    // Keyed by the node's own name, which lives as long as the scanner's list.
    if (!relatives.sameName)
        scanner.m_firstNodeOfName.emplace(QStringView(node->name), node.get());
    scanner.flatFileList.files.append(node);
    ++scanner.currentTotalItemsScanned;
    unscheduled.append(std::move(node));
}

void FileScanner::FolderBatch::scheduleReads()
{
    Node::scheduleInitialReads(unscheduled);
    unscheduled.clear();
}

void FileScanner::createOneFile(const QString &path, const QString &relativePath)
{
    flatFileList.files.append(
        FileNode::create(StringHelpers::lastPathComponent(path), path, relativePath));
    ++currentTotalItemsScanned;
}

void FileScanner::createOneFolder(const QString &path, const QString &relativePath)
{
    flatFileList.files.append(
        FolderNode::create(StringHelpers::lastPathComponent(path), path, relativePath));
    ++currentTotalItemsScanned;
}
