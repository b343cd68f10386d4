#pragma once

#include "metadata/MetadataSource.h"

#include <QDateTime>
#include <QString>

#include <algorithm>
#include <vector>

// The values of one type for one path, by key and then by source. Entries are kept sorted by
// (key, source) in two parallel arrays, one of packed slots and one of values, so that a stored
// value costs its own size and four bytes; a key's sources lie next to each other.
template<typename T>
class CompactValueMap
{
public:
    // Key ids come from the store's key registry and fit in 24 bits; the source takes the rest.
    static constexpr quint32 maxKeyId = (1u << 24) - 1;

    // Stores over any former value of the same key and source.
    void set(quint32 keyId, MetadataSource source, T value)
    {
        const quint32 wanted = slot(keyId, source);
        const auto at = std::lower_bound(m_slots.begin(), m_slots.end(), wanted);
        const auto index = at - m_slots.begin();
        if (at != m_slots.end() && *at == wanted) {
            m_values[size_t(index)] = std::move(value);
            return;
        }
        if (m_slots.size() == m_slots.capacity()) {
            // Grow in small steps: a path has tens to hundreds of keys and waste adds up quickly
            // over a hundred thousand paths.
            const size_t capacity = m_slots.size() + std::max<size_t>(8, m_slots.size() / 8);
            m_slots.reserve(capacity);
            m_values.reserve(capacity);
        }
        m_slots.insert(m_slots.begin() + index, wanted);
        m_values.insert(m_values.begin() + index, std::move(value));
    }

    const T *find(quint32 keyId, MetadataSource source) const
    {
        const quint32 wanted = slot(keyId, source);
        const auto at = std::lower_bound(m_slots.begin(), m_slots.end(), wanted);
        if (at == m_slots.end() || *at != wanted)
            return nullptr;
        return &m_values[size_t(at - m_slots.begin())];
    }

    // Calls visit(source, value) for each source that has a value for the key.
    template<typename Visitor>
    void forEachSourceOfKey(quint32 keyId, Visitor &&visit) const
    {
        auto at = std::lower_bound(m_slots.begin(), m_slots.end(), slot(keyId, MetadataSource(0)));
        for (; at != m_slots.end() && (*at >> 8) == keyId; ++at)
            visit(MetadataSource(*at & 0xff), m_values[size_t(at - m_slots.begin())]);
    }

    // Calls visit(keyId) for each key that has a value from the source.
    template<typename Visitor>
    void forEachKeyOfSource(MetadataSource source, Visitor &&visit) const
    {
        for (quint32 packed : m_slots) {
            if ((packed & 0xff) == quint32(source))
                visit(packed >> 8);
        }
    }

    size_t size() const { return m_slots.size(); }

private:
    static quint32 slot(quint32 keyId, MetadataSource source)
    {
        return keyId << 8 | quint32(source);
    }

    std::vector<quint32> m_slots;
    std::vector<T> m_values;
};

// All values of one path, one map per value type. A key is meant to be stored under one type.
struct PathMetadataContainer
{
    CompactValueMap<QString> stringValues;
    CompactValueMap<QDateTime> dateValues;
    // Kept as bytes: a vector of bool has no addressable elements.
    CompactValueMap<quint8> boolValues;
    CompactValueMap<qint64> integerValues;
};
