#pragma once

// Quality-of-service classes. Linux threads of one process share one scheduler class, so a
// class becomes its threads' niceness: the process's own for interactive work, up to ten steps
// nicer for background work.
enum class QualityOfService : int {
    UserInteractive = 33,
    UserInitiated = 25,
    Utility = 17,
    Background = 9,
    Default = -1,
};

namespace ThreadQuality {

// How much nicer than the process a thread of the class runs.
int nicenessOffset(QualityOfService qualityOfService);
// Sets the calling thread's niceness for the class. New threads inherit their creator's, so
// each worker sets its own; a failure leaves the inherited value.
void applyToCurrentThread(QualityOfService qualityOfService);

} // namespace ThreadQuality
