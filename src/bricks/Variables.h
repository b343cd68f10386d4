#pragma once

// Observable cells. A hot listener is called at once with the current value, a cold one only on
// the next change. Listeners run synchronously, in the order they were added, on the setter's
// thread; there is no removal and no equality test. Variables are not thread-safe: they belong to
// the main thread, and background code hops there before it sets one.

#include "KVOResponder.h"
#include "platform/UserDefaults.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QStringList>
#include <QVariant>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

template<typename T>
using VariableListener = std::function<void(const T &)>;

template<typename T>
class ReadOnlyVariableType
{
public:
    using ValueType = T;
    virtual ~ReadOnlyVariableType() = default;
    virtual T value() const = 0;
    virtual void addHotListener(VariableListener<T> listener) = 0;
    virtual void addColdListener(VariableListener<T> listener) = 0;
};

template<typename T>
class ReadWriteVariableType : public ReadOnlyVariableType<T>
{
public:
    virtual void setValue(const T &value) = 0;
};

// The ordered, only-growing list of listeners, and the notification pass over a snapshot of it.
template<typename T>
class ChangeListeners
{
public:
    void add(VariableListener<T> listener) { m_listeners.push_back(std::move(listener)); }
    // Listeners added during the pass join from the next pass; a nested pass runs at once.
    void notify(const T &value) const
    {
        const std::vector<VariableListener<T>> snapshot = m_listeners;
        const T delivered = value;
        for (const VariableListener<T> &listener : snapshot)
            listener(delivered);
    }
    size_t size() const { return m_listeners.size(); }

private:
    std::vector<VariableListener<T>> m_listeners;
};

// In-memory variable; every write notifies, also when the value is unchanged.
template<typename T>
class StraightVariable : public ReadWriteVariableType<T>
{
public:
    explicit StraightVariable(T initialValue = T())
        : privateValue(std::move(initialValue))
    { }

    T value() const override { return privateValue; }
    const T &ref() const { return privateValue; }
    void setValue(const T &value) override
    {
        privateValue = value;
        internalValueChanged(privateValue);
    }
    void addHotListener(VariableListener<T> listener) override
    {
        changeListeners.add(listener);
        listener(privateValue);
    }
    void addColdListener(VariableListener<T> listener) override
    {
        changeListeners.add(std::move(listener));
    }

protected:
    void internalValueChanged(const T &value) { changeListeners.notify(value); }

    ChangeListeners<T> changeListeners;
    T privateValue;
};

// The form kept in a field named with a leading underscore, whose owner offers the plain name.
template<typename T>
class StraightReadWriteVariable : public StraightVariable<T>
{
public:
    explicit StraightReadWriteVariable(T wrappedValue = T())
        : StraightVariable<T>(std::move(wrappedValue))
    { }
    T wrappedValue() const { return this->value(); }
    void setWrappedValue(const T &value) { this->setValue(value); }
};

// A straight variable over an enumeration, also readable and writable by its raw value.
template<typename T>
class RawRepresentableStraightVariable : public StraightVariable<T>
{
public:
    using StraightVariable<T>::StraightVariable;
    int rawValue() const { return static_cast<int>(this->value()); }
    void setRawValue(int raw) { this->setValue(static_cast<T>(raw)); }
};

// Converters for the plain stored kinds; a wrongly typed entry has no value. A number stored as
// text, or a flag stored as a number, is of the wrong type.
namespace DefaultsConverters {
inline std::function<std::optional<bool>(const QVariant &)> toBool()
{
    return [](const QVariant &v) -> std::optional<bool> {
        if (v.typeId() != QMetaType::Bool)
            return std::nullopt;
        return v.toBool();
    };
}
inline bool isNumber(const QVariant &v)
{
    switch (v.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}
inline std::function<std::optional<int>(const QVariant &)> toInt()
{
    return [](const QVariant &v) -> std::optional<int> {
        if (!isNumber(v))
            return std::nullopt;
        const double d = v.toDouble();
        if (d != std::floor(d) || d < std::numeric_limits<int>::min()
            || d > std::numeric_limits<int>::max())
            return std::nullopt;
        return int(d);
    };
}
inline std::function<std::optional<double>(const QVariant &)> toDouble()
{
    return [](const QVariant &v) -> std::optional<double> {
        if (!isNumber(v))
            return std::nullopt;
        return v.toDouble();
    };
}
inline std::function<std::optional<QStringList>(const QVariant &)> toStringList()
{
    return [](const QVariant &v) -> std::optional<QStringList> {
        if (v.typeId() == QMetaType::QStringList)
            return v.toStringList();
        if (v.typeId() != QMetaType::QVariantList)
            return std::nullopt;
        QStringList list;
        for (const QVariant &item : v.toList()) {
            if (item.typeId() != QMetaType::QString)
                return std::nullopt;
            list.append(item.toString());
        }
        return list;
    };
}
} // namespace DefaultsConverters

// A value persisted in the user defaults. Writes go to the store; listeners run only when the
// store reports the key changed, whoever changed it. A stored value that the converter cannot
// read (the preferences file was damaged or written by something else) reads as the default
// that the variable registered: what is on disk never stops the program.
template<typename T>
class UserDefaultsVariable
    : public ReadWriteVariableType<T>
    , public std::enable_shared_from_this<UserDefaultsVariable<T>>
{
public:
    // Gives no value for a stored object of the wrong type.
    using Converter = std::function<std::optional<T>(const QVariant &)>;

    UserDefaultsVariable(const QString &storageKey, const T &initialValue, Converter converter,
                         UserDefaults &store = UserDefaults::standard())
        : UserDefaultsVariable(storageKey, initialValue, std::move(converter), store,
                               RegistersLater {})
    {
        defaultValue(initialValue);
        startObserving();
    }

    const QString &key() const { return storageKey; }
    const T &registeredDefault() const { return m_registeredDefault; }

    T value() const override
    {
        const QVariant object = store.objectForKey(storageKey);
        if (!object.isValid())
            return m_registeredDefault;
        return converter(object).value_or(m_registeredDefault);
    }
    void setValue(const T &value) override
    {
        store.setObject(QVariant::fromValue(value), storageKey);
        store.synchronize();
    }
    void addHotListener(VariableListener<T> listener) override
    {
        changeListeners.add(listener);
        listener(value());
    }
    void addColdListener(VariableListener<T> listener) override
    {
        changeListeners.add(std::move(listener));
    }

protected:
    // For subclasses, which register their own form of the default and then start observing.
    struct RegistersLater
    { };
    UserDefaultsVariable(const QString &storageKey, const T &initialValue, Converter converter,
                         UserDefaults &store, RegistersLater)
        : storageKey(storageKey)
        , converter(std::move(converter))
        , store(store)
        , m_registeredDefault(initialValue)
    { }

    void defaultValue(const T &initialValue)
    {
        store.registerDefaults({{storageKey, QVariant::fromValue(initialValue)}});
    }

    void startObserving()
    {
        internalKVOResponder = std::make_unique<KVOResponder>(
            storageKey, store, false,
            [this](const QVariant &, const QString &) { changeListeners.notify(this->value()); });
    }

    const QString storageKey;
    const Converter converter;
    UserDefaults &store;
    ChangeListeners<T> changeListeners;

private:
    // Owned by the variable so that the observation ends when the variable does.
    std::unique_ptr<KVOResponder> internalKVOResponder;
    const T m_registeredDefault;
};

// A persisted enumeration, stored as its integer raw value.
template<typename T>
class RawRepresentableUserDefaultsVariable : public UserDefaultsVariable<T>
{
public:
    RawRepresentableUserDefaultsVariable(const QString &storageKey, T initialValue,
                                         std::function<bool(int)> isValidRawValue,
                                         UserDefaults &store = UserDefaults::standard())
        : UserDefaultsVariable<T>(storageKey, initialValue, nullptr, store,
                                  typename UserDefaultsVariable<T>::RegistersLater {})
        , m_isValidRawValue(std::move(isValidRawValue))
    {
        this->store.registerDefaults({{storageKey, static_cast<int>(initialValue)}});
        this->startObserving();
    }

    // A raw value that names no case reads as the registered default.
    T value() const override
    {
        const std::optional<int> raw
            = DefaultsConverters::toInt()(this->store.objectForKey(this->storageKey));
        if (!raw || !m_isValidRawValue(*raw))
            return this->registeredDefault();
        return static_cast<T>(*raw);
    }
    void setValue(const T &value) override
    {
        this->store.setObject(static_cast<int>(value), this->storageKey);
    }

private:
    std::function<bool(int)> m_isValidRawValue;
};

// JSON forms for the codable variables. Record types add overloads of their own.
inline QJsonValue toJson(const QString &v)
{
    return v;
}
inline QJsonValue toJson(const QStringList &v)
{
    return QJsonArray::fromStringList(v);
}
inline QJsonValue toJson(int v)
{
    return v;
}
inline QJsonValue toJson(double v)
{
    return v;
}
inline QJsonValue toJson(bool v)
{
    return v;
}
inline bool fromJson(const QJsonValue &j, QString &v)
{
    if (!j.isString())
        return false;
    v = j.toString();
    return true;
}
inline bool fromJson(const QJsonValue &j, QStringList &v)
{
    if (!j.isArray())
        return false;
    v.clear();
    for (const QJsonValue &item : j.toArray()) {
        if (!item.isString())
            return false;
        v.append(item.toString());
    }
    return true;
}
inline bool fromJson(const QJsonValue &j, int &v)
{
    if (!j.isDouble())
        return false;
    v = j.toInt();
    return true;
}
inline bool fromJson(const QJsonValue &j, double &v)
{
    if (!j.isDouble())
        return false;
    v = j.toDouble();
    return true;
}
inline bool fromJson(const QJsonValue &j, bool &v)
{
    if (!j.isBool())
        return false;
    v = j.toBool();
    return true;
}

namespace VariablesDetail {
// JSON text of one value; a document must be an object or array, so the value is wrapped.
template<typename T>
QString encode(const T &value)
{
    QJsonArray wrapper;
    wrapper.append(toJson(value));
    return QString::fromUtf8(QJsonDocument(wrapper).toJson(QJsonDocument::Compact));
}
template<typename T>
std::optional<T> decode(const QString &text)
{
    if (text.isNull())
        return std::nullopt;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isArray()
        || document.array().size() != 1)
        return std::nullopt;
    T value {};
    if (!fromJson(document.array().first(), value))
        return std::nullopt;
    return value;
}
} // namespace VariablesDetail

// A value persisted as JSON text; text that does not decode reads as nilValue.
template<typename T>
class CodableUserDefaultsVariable : public UserDefaultsVariable<T>
{
public:
    CodableUserDefaultsVariable(const QString &storageKey, const T &initialValue, T nilValue,
                                UserDefaults &store = UserDefaults::standard())
        : UserDefaultsVariable<T>(storageKey, initialValue, nullptr, store,
                                  typename UserDefaultsVariable<T>::RegistersLater {})
        , nilValue(std::move(nilValue))
    {
        this->store.registerDefaults({{storageKey, VariablesDetail::encode(initialValue)}});
        this->startObserving();
    }

    T value() const override
    {
        return VariablesDetail::decode<T>(this->store.stringForKey(this->storageKey))
            .value_or(nilValue);
    }
    void setValue(const T &value) override
    {
        this->store.setObject(VariablesDetail::encode(value), this->storageKey);
    }

private:
    const T nilValue;
};

// A persisted optional value; a missing or undecodable text reads as absent.
template<typename T>
class NillableCodableUserDefaultsVariable : public UserDefaultsVariable<std::optional<T>>
{
public:
    NillableCodableUserDefaultsVariable(const QString &storageKey,
                                        const std::optional<T> &initialValue,
                                        UserDefaults &store = UserDefaults::standard())
        : UserDefaultsVariable<std::optional<T>>(
            storageKey, initialValue, nullptr, store,
            typename UserDefaultsVariable<std::optional<T>>::RegistersLater {})
    {
        this->store.registerDefaults({{storageKey, encodeOptional(initialValue)}});
        this->startObserving();
    }

    std::optional<T> value() const override
    {
        const QString text = this->store.stringForKey(this->storageKey);
        if (text == QLatin1String("[null]"))
            return std::nullopt;
        return VariablesDetail::decode<T>(text);
    }
    void setValue(const std::optional<T> &value) override
    {
        this->store.setObject(encodeOptional(value), this->storageKey);
    }

private:
    static QString encodeOptional(const std::optional<T> &value)
    {
        return value ? VariablesDetail::encode(*value) : QStringLiteral("[null]");
    }
};

// A read-only variable computed from two others at every read; it notifies once for each
// notification of either source, without comparing results.
template<typename T, typename A, typename B>
class CombinedVariable : public ReadOnlyVariableType<T>
{
public:
    using Expression = std::function<T(const A &, const B &)>;

    CombinedVariable(std::shared_ptr<A> firstVariable, std::shared_ptr<B> secondVariable,
                     Expression expression)
        : state(std::make_shared<State>(
            State {{}, std::move(firstVariable), std::move(secondVariable), std::move(expression)}))
    {
        std::weak_ptr<State> weakState = state;
        auto reaction = [weakState](const auto &) {
            if (auto s = weakState.lock())
                s->changeListeners.notify(s->expression(*s->first, *s->second));
        };
        state->first->addColdListener(reaction);
        state->second->addColdListener(reaction);
    }

    T value() const override { return state->expression(*state->first, *state->second); }
    void addHotListener(VariableListener<T> listener) override
    {
        state->changeListeners.add(listener);
        listener(value());
    }
    void addColdListener(VariableListener<T> listener) override
    {
        state->changeListeners.add(std::move(listener));
    }

private:
    // Shared with the sources' listeners, which reach it weakly so that no cycle keeps it alive.
    struct State
    {
        ChangeListeners<T> changeListeners;
        std::shared_ptr<A> first;
        std::shared_ptr<B> second;
        Expression expression;
    };
    std::shared_ptr<State> state;
};

// Type-erasing holders: they forward to the variable they were built from and hold it strongly.
template<typename T>
struct AnyReadOnlyVariable
{
    AnyReadOnlyVariable() = default;
    template<typename V>
    AnyReadOnlyVariable(std::shared_ptr<V> variable) // NOLINT(google-explicit-constructor)
        : _value_getter([variable] { return variable->value(); })
        , _addHotListener([variable](VariableListener<T> l) { variable->addHotListener(l); })
        , _addColdListener([variable](VariableListener<T> l) { variable->addColdListener(l); })
    { }

    T value() const { return _value_getter(); }
    void addHotListener(VariableListener<T> listener) const { _addHotListener(listener); }
    void addColdListener(VariableListener<T> listener) const { _addColdListener(listener); }
    bool isValid() const { return bool(_value_getter); }

    std::function<T()> _value_getter;
    std::function<void(VariableListener<T>)> _addHotListener;
    std::function<void(VariableListener<T>)> _addColdListener;
};

template<typename T>
class AnyReadWriteVariable : public ReadWriteVariableType<T>
{
public:
    template<typename V>
    explicit AnyReadWriteVariable(std::shared_ptr<V> variable)
        : _value_getter([variable] { return variable->value(); })
        , _value_setter([variable](const T &v) { variable->setValue(v); })
        , _addHotListener([variable](VariableListener<T> l) { variable->addHotListener(l); })
        , _addColdListener([variable](VariableListener<T> l) { variable->addColdListener(l); })
    { }

    T value() const override { return _value_getter(); }
    void setValue(const T &value) override { _value_setter(value); }
    void addHotListener(VariableListener<T> listener) override { _addHotListener(listener); }
    void addColdListener(VariableListener<T> listener) override { _addColdListener(listener); }

private:
    std::function<T()> _value_getter;
    std::function<void(const T &)> _value_setter;
    std::function<void(VariableListener<T>)> _addHotListener;
    std::function<void(VariableListener<T>)> _addColdListener;
};
