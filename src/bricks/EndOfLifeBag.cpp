#include "EndOfLifeBag.h"

#include "BricksLogging.h"

EndOfLifeBag::~EndOfLifeBag()
{
    if (!closures)
        return;
    qCDebug(lcBricks) << "disposing of end of life bag";
    for (const auto &closure : *closures)
        closure();
}

void EndOfLifeBag::add(std::function<void()> closure)
{
    if (!closures)
        closures.emplace();
    closures->push_back(std::move(closure));
}
