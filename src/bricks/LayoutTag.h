#pragma once

#include <QHashFunctions>
#include <QString>

#include <memory>

// Names a view in a layout recipe before the view exists. Copies share one identity: two tags
// with the same name are still different tags.
class LayoutTag
{
public:
    explicit LayoutTag(const QString &description)
        : d(std::make_shared<const QString>(description))
    { }

    const QString &description() const { return *d; }
    bool operator==(const LayoutTag &other) const { return d == other.d; }
    const void *identity() const { return d.get(); }

private:
    std::shared_ptr<const QString> d;
};

inline size_t qHash(const LayoutTag &tag, size_t seed = 0)
{
    return ::qHash(tag.identity(), seed);
}
