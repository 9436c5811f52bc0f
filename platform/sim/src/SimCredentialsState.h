#ifndef SIM_SIMCREDENTIALSSTATE_H
#define SIM_SIMCREDENTIALSSTATE_H

#include "sim/SimSet.h"
#include "zo/port/CredentialsState.h"

namespace sim {

class SimCredentialsState : public zo::port::CredentialsState, public SimObject {
  public:
    explicit SimCredentialsState(SimSet& set);

    int getCredentialsState() override;
};

}  // namespace sim

#endif
