#pragma once

#include <functional>
#include <memory>

// Runs only the last action of a burst, delay seconds after the last call, on the main thread.
class Debouncer
{
public:
    explicit Debouncer(double delay);
    ~Debouncer();

    void run(std::function<void()> action);
    double delay() const { return m_delay; }

private:
    struct WorkItem
    {
        std::function<void()> action;
        bool cancelled = false;
    };

    const double m_delay;
    std::shared_ptr<WorkItem> m_workItem;
};
