#include "MainContentViewing.h"

#include <atomic>

namespace {
std::atomic<MainContentViewing *> s_view = nullptr;
}

MainContentViewing *MainContentViewing::installed()
{
    return s_view.load();
}

void MainContentViewing::install(MainContentViewing *view)
{
    s_view.store(view);
}
