#include "QualityOfService.h"

#include <algorithm>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// The process's own niceness, read once, before any worker has changed its thread's.
const int processNiceness = getpriority(PRIO_PROCESS, 0);

} // namespace

int ThreadQuality::nicenessOffset(QualityOfService qualityOfService)
{
    // Steps in the order of the classes, so that background reads yield to what the user waits
    // for; the raw values carry no meaning here.
    switch (qualityOfService) {
    case QualityOfService::UserInteractive:
        return 0;
    case QualityOfService::UserInitiated:
        return 1;
    case QualityOfService::Default:
        return 2;
    case QualityOfService::Utility:
        return 5;
    case QualityOfService::Background:
        return 10;
    }
    return 0;
}

void ThreadQuality::applyToCurrentThread(QualityOfService qualityOfService)
{
    setpriority(PRIO_PROCESS, pid_t(syscall(SYS_gettid)),
                std::min(19, processNiceness + nicenessOffset(qualityOfService)));
}
