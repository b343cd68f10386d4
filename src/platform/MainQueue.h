#pragma once

#include <functional>

// The main thread's queue: the Qt event loop. Blocks posted here run in the order posted.
namespace MainQueue {

void post(std::function<void()> block);
// Runs the block after delayMs milliseconds on the main thread.
void postAfter(int delayMs, std::function<void()> block);
bool isMainThread();
// Runs the block at once when called on the main thread, otherwise posts it.
void runOrPost(std::function<void()> block);

} // namespace MainQueue
