#pragma once

#include "metadata/MetadataSource.h"

#include <memory>

// Implemented by everything that waits for a node's values; told on the main thread.
class DataIsReadyObserver
{
public:
    virtual ~DataIsReadyObserver() = default;
    virtual void update(MetadataSource source) = 0;
};

// A node never keeps an observer alive.
struct WeakDataIsReadyObserverReference
{
    std::weak_ptr<DataIsReadyObserver> observer;
};
