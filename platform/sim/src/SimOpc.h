#ifndef SIM_SIMOPC_H
#define SIM_SIMOPC_H

#include "sim/SimSet.h"
#include "zo/port/Opc.h"

namespace sim {

class SimOpc : public zo::port::Opc, public SimObject {
  public:
    explicit SimOpc(SimSet& set);

    int start(uint8_t mode) override;
    int stop() override;
    int getState() override;
    int getDimmingRate() override;
};

}  // namespace sim

#endif
