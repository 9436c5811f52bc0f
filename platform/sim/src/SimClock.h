#ifndef SIM_SIMCLOCK_H
#define SIM_SIMCLOCK_H

#include "sim/SimSet.h"

namespace sim {

class SimClock : public SimObject {
  public:
    explicit SimClock(SimSet& set);

    // The state's utcTime when set, else the system's time.
    uint64_t getUtcTime();
};

}  // namespace sim

#endif
