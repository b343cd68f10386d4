#pragma once

// Push streams, for the few places that pass values on rather than keep them: a producer sends
// each value to its subscribers in the order they subscribed and remembers the latest; a mapper
// is a producer of another producer's values, transformed. A producer holds its subscribers
// weakly, so that whoever subscribed ends the subscription by dropping the subscriber. There is
// no replay: a new subscriber gets the next value, and can read the latest one. Like variables,
// streams belong to the main thread.

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class StreamType
{
public:
    virtual ~StreamType() = default;
};

class SubscriberType
{
public:
    virtual ~SubscriberType() = default;
};

template<typename T>
class Subscriber : public SubscriberType
{
public:
    explicit Subscriber(std::function<void(const T &)> nextAction)
        : nextAction(std::move(nextAction))
    { }

    const std::function<void(const T &)> nextAction;
};

class BaseStream : public StreamType
{ };

template<typename T>
class Producer : public BaseStream
{
public:
    void subscribe(const std::shared_ptr<Subscriber<T>> &subscriber)
    {
        subscribers.push_back(subscriber);
    }
    // The subscription lasts as long as the caller keeps the subscriber it is given.
    [[nodiscard]] std::shared_ptr<Subscriber<T>> subscribe(std::function<void(const T &)> next)
    {
        auto subscriber = std::make_shared<Subscriber<T>>(std::move(next));
        subscribe(subscriber);
        return subscriber;
    }

    // Subscribers added while a value is being sent get the next one.
    void send(const T &value)
    {
        latestValue = value;
        const std::vector<std::weak_ptr<Subscriber<T>>> snapshot = subscribers;
        for (const std::weak_ptr<Subscriber<T>> &weak : snapshot)
            if (const std::shared_ptr<Subscriber<T>> subscriber = weak.lock())
                subscriber->nextAction(value);
        std::erase_if(subscribers, [](const auto &weak) { return weak.expired(); });
    }

    std::vector<std::weak_ptr<Subscriber<T>>> subscribers;
    std::optional<T> latestValue;
};

template<typename T, typename U>
class Mapper : public Producer<U>
{
public:
    Mapper(std::shared_ptr<Producer<T>> source, std::function<U(const T &)> transform)
        : source(std::move(source))
        , sourceSubscriber(std::make_shared<Subscriber<T>>(
              [this, transform = std::move(transform)](const T &value) {
                  this->send(transform(value));
              }))
    {
        this->source->subscribe(sourceSubscriber);
    }
    Mapper(const Mapper &) = delete;
    Mapper &operator=(const Mapper &) = delete;

    const std::shared_ptr<Producer<T>> source;
    // Owned here and held weakly by the source: the mapping ends with the mapper.
    const std::shared_ptr<Subscriber<T>> sourceSubscriber;
};
