#ifndef SIM_SIMHDMISWITCH_H
#define SIM_SIMHDMISWITCH_H

#include "sim/SimSet.h"
#include "zo/port/HdmiSwitch.h"

namespace sim {

class SimHdmiSwitch : public zo::port::HdmiSwitch, public SimObject {
  public:
    explicit SimHdmiSwitch(SimSet& set);

    int getSignalInfo(uint32_t* flags) override;
};

}  // namespace sim

#endif
