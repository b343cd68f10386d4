#include "StringPool.h"

QString StringPool::intern(const QString &text)
{
    std::lock_guard guard(lock);
    const auto found = pool.constFind(text);
    if (found != pool.cend())
        return *found;
    pool.insert(text);
    return text;
}

void StringPool::removeAll()
{
    std::lock_guard guard(lock);
    pool = {};
}

qsizetype StringPool::count() const
{
    std::lock_guard guard(lock);
    return pool.size();
}
