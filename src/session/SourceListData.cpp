#include "SourceListData.h"

#include "platform/AlertPresenter.h"
#include "platform/UserDefaults.h"

#include <QCoreApplication>

#include <algorithm>

StoredStringList::StoredStringList(QString storageKey, UserDefaults &defaults)
    : storageKey(std::move(storageKey))
    , defaults(defaults)
{ }

QStringList StoredStringList::value() const
{
    const QVariant stored = defaults.objectForKey(storageKey);
    if (stored.typeId() == QMetaType::QStringList)
        return stored.toStringList();
    if (stored.typeId() != QMetaType::QVariantList)
        return {};
    QStringList list;
    for (const QVariant &item : stored.toList()) {
        if (item.typeId() != QMetaType::QString)
            return {};
        list.append(item.toString());
    }
    return list;
}

void StoredStringList::write(const QStringList &list)
{
    defaults.setObject(list, storageKey);
    defaults.synchronize();
}

void StoredStringList::deleteAt(int row)
{
    QStringList list = value();
    if (row < 0 || row >= list.size())
        return;
    list.removeAt(row);
    write(list);
}

void StoredStringList::deleteAll()
{
    write({});
}

void StoredStringList::move(const QList<int> &rows, int toRow)
{
    QStringList list = value();
    QList<int> sorted = rows;
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    QStringList moved;
    int above = 0;
    for (auto it = sorted.crbegin(); it != sorted.crend(); ++it) {
        if (*it < 0 || *it >= list.size())
            continue;
        moved.prepend(list.takeAt(*it));
        if (*it < toRow)
            ++above;
    }
    const int target = std::clamp(toRow - above, 0, int(list.size()));
    for (int i = 0; i < moved.size(); ++i)
        list.insert(target + i, moved.at(i));
    write(list);
}

SourceListData::SourceListData(UserDefaults &defaults, std::function<void()> willAddPaths)
    : StoredStringList(QStringLiteral("brisk_sources"), defaults)
    , willAddPaths(std::move(willAddPaths))
{ }

bool SourceListData::validatePath(const QString &path, const QStringList &list) const
{
    if (list.contains(path))
        return false;
    // A file inside a listed folder is refused; a folder holding a listed file is not.
    QString parent = path;
    for (;;) {
        const qsizetype slash = parent.lastIndexOf(QLatin1Char('/'));
        if (slash <= 0)
            break;
        parent.truncate(slash);
        if (list.contains(parent))
            return false;
    }
    return true;
}

void SourceListData::add(const QStringList &paths, bool interactive)
{
    QStringList list = value();
    bool refused = false;
    for (const QString &path : paths) {
        if (validatePath(path, list))
            list.append(path);
        else
            refused = true;
    }
    if (refused && interactive) {
        AlertPresenter::show(
            {QCoreApplication::translate("SourceList", "Some files could not be added."),
             QCoreApplication::translate(
                 "SourceList",
                 "You cannot add files that are located in folders that are already in the list. "
                 "This would compromise the \"subfolders and their contents\" feature"),
             {QCoreApplication::translate("SourceList", "OK")},
             {}});
    }
    write(list);
    if (willAddPaths)
        willAddPaths();
}

ColumnListData::ColumnListData(UserDefaults &defaults)
    : StoredStringList(QStringLiteral("brisk_columns"), defaults)
{ }

void ColumnListData::add(const QString &columnId)
{
    QStringList list = value();
    list.append(columnId);
    write(list);
}
