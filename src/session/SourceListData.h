#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class UserDefaults;

// An ordered list of strings kept in the user defaults; the stored list is the only copy, so
// every operation reads it, changes it and writes it back.
class StoredStringList
{
public:
    StoredStringList(QString storageKey, UserDefaults &defaults);
    virtual ~StoredStringList() = default;

    const QString storageKey;

    QStringList value() const;
    void deleteAt(int row);
    void deleteAll();
    // Takes the rows out in order and puts them back as a block at the target row.
    void move(const QList<int> &rows, int toRow);
    // Stores the whole list as given, as the preview table does when the user moves a column.
    void write(const QStringList &list);

protected:
    UserDefaults &defaults;
};

// The files and folders to process.
class SourceListData : public StoredStringList
{
public:
    SourceListData(UserDefaults &defaults, std::function<void()> willAddPaths);

    // Refuses a path already listed or inside a listed folder; with interactive, says so once.
    void add(const QStringList &paths, bool interactive);
    bool validatePath(const QString &path, const QStringList &list) const;

private:
    std::function<void()> willAddPaths;
};

// The output columns, in order.
class ColumnListData : public StoredStringList
{
public:
    explicit ColumnListData(UserDefaults &defaults);
    void add(const QString &columnId);
};
