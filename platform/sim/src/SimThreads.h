#ifndef SIM_SIMTHREADS_H
#define SIM_SIMTHREADS_H

#include "sim/SimSet.h"
#include "zo/Thread.h"

namespace sim {

class SimThreads : public SimObject {
  public:
    explicit SimThreads(SimSet& set);

    // Starts the thread unless a script makes the call fail.
    int create(zo::thread::Entry entry, void* argument, int priority, const char* name);
    // Journals the pause and returns at once, so that nothing waits for it.
    void sleep(unsigned int milliseconds);
};

}  // namespace sim

#endif
