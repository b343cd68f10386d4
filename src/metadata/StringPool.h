#pragma once

#include <QSet>
#include <QString>

#include <mutex>

// Shares equal strings: thousands of files carry the same few keys, a path recurs with every
// key of its file, and many values repeat, so equal strings keep one buffer between them.
class StringPool
{
public:
    // The pooled string equal to text, after entering text if there was none.
    QString intern(const QString &text);

    // Forgets every pooled string. Strings in use stay alive with their holders; they are just
    // no longer shared with later arrivals.
    void removeAll();

    qsizetype count() const;

private:
    // A set serves as the map from a string to the same string: the element is the value.
    // Owned by lock: pool.
    mutable std::mutex lock;
    QSet<QString> pool;
};
