#ifndef SIM_SIMSTATUSDISPLAY_H
#define SIM_SIMSTATUSDISPLAY_H

#include "sim/SimSet.h"
#include "zo/port/StatusDisplay.h"

namespace sim {

class SimStatusDisplay : public zo::port::StatusDisplay, public SimObject {
  public:
    explicit SimStatusDisplay(SimSet& set);

    int showStatus(int code) override;
    int hideStatus(int code) override;
};

}  // namespace sim

#endif
