#ifndef SIM_SIMSHELL_H
#define SIM_SIMSHELL_H

#include "sim/SimSet.h"

namespace sim {

// The platform calls around the port objects.

class SimShell : public SimObject {
  public:
    explicit SimShell(SimSet& set);

    // Runs nothing: the result is 0 unless a script says otherwise.
    int execute(const char* command, size_t length, int mode, int flags);
};

}  // namespace sim

#endif
