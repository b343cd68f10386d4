#pragma once

#include <QHashFunctions>
#include <QString>

// What a view shows for one value: the text, "still being read", or "the file has none".
// Ordered Waiting < NotPresent < Present, Present values by plain string order.
class DisplayStringWrapper
{
public:
    enum class Kind { Waiting = 0, NotPresent = 1, Present = 2 };

    static DisplayStringWrapper present(QString text) { return {Kind::Present, std::move(text)}; }
    static DisplayStringWrapper waiting() { return {Kind::Waiting, {}}; }
    static DisplayStringWrapper notPresent() { return {Kind::NotPresent, {}}; }

    Kind kind() const { return m_kind; }
    bool isPresent() const { return m_kind == Kind::Present; }
    const QString &text() const { return m_text; }

    bool operator==(const DisplayStringWrapper &other) const
    {
        return m_kind == other.m_kind && m_text == other.m_text;
    }
    bool operator<(const DisplayStringWrapper &other) const
    {
        if (m_kind != other.m_kind)
            return m_kind < other.m_kind;
        return m_kind == Kind::Present && m_text < other.m_text;
    }

private:
    DisplayStringWrapper(Kind kind, QString text)
        : m_kind(kind)
        , m_text(std::move(text))
    { }

    Kind m_kind;
    QString m_text;
};

inline size_t qHash(const DisplayStringWrapper &wrapper, size_t seed = 0)
{
    return qHashMulti(seed, int(wrapper.kind()), wrapper.text());
}
