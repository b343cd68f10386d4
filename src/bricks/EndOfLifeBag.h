#pragma once

#include <functional>
#include <optional>
#include <vector>

// A destructor made of callbacks: each closure runs, in the order added, when the bag dies.
class EndOfLifeBag
{
public:
    EndOfLifeBag() = default;
    ~EndOfLifeBag();
    EndOfLifeBag(const EndOfLifeBag &) = delete;
    EndOfLifeBag &operator=(const EndOfLifeBag &) = delete;

    void add(std::function<void()> closure);

private:
    std::optional<std::vector<std::function<void()>>> closures;
};
