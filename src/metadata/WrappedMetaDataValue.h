#pragma once

#include <QDateTime>
#include <QString>

#include <variant>

// One stored value: text, a date, a boolean, an integer, or nothing.
class WrappedMetaDataValue
{
public:
    enum class Kind { StringValue, DateValue, BoolValue, NSInteger, None };

    WrappedMetaDataValue() = default;
    static WrappedMetaDataValue string(QString value)
    {
        return WrappedMetaDataValue(std::move(value));
    }
    static WrappedMetaDataValue date(QDateTime value)
    {
        return WrappedMetaDataValue(std::move(value));
    }
    static WrappedMetaDataValue boolean(bool value) { return WrappedMetaDataValue(value); }
    static WrappedMetaDataValue integer(qint64 value) { return WrappedMetaDataValue(value); }

    Kind kind() const { return Kind(m_value.index()); }
    bool isNone() const { return kind() == Kind::None; }

    // Each accessor expects its own kind.
    const QString &stringValue() const { return std::get<QString>(m_value); }
    const QDateTime &dateValue() const { return std::get<QDateTime>(m_value); }
    bool boolValue() const { return std::get<bool>(m_value); }
    qint64 integerValue() const { return std::get<qint64>(m_value); }

    bool operator==(const WrappedMetaDataValue &other) const = default;

private:
    explicit WrappedMetaDataValue(QString v)
        : m_value(std::move(v))
    { }
    explicit WrappedMetaDataValue(QDateTime v)
        : m_value(std::move(v))
    { }
    explicit WrappedMetaDataValue(bool v)
        : m_value(v)
    { }
    explicit WrappedMetaDataValue(qint64 v)
        : m_value(v)
    { }

    std::variant<QString, QDateTime, bool, qint64, std::monostate> m_value = std::monostate();
};
