#ifndef SIM_SIMVODSTATE_H
#define SIM_SIMVODSTATE_H

#include "sim/SimSet.h"
#include "zo/port/VodState.h"

namespace sim {

class SimVodState : public zo::port::VodState, public SimObject {
  public:
    explicit SimVodState(SimSet& set);

    int isVodEnabled() override;
};

}  // namespace sim

#endif
