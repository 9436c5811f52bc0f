#ifndef SIM_SIMHARDWAREINFO_H
#define SIM_SIMHARDWAREINFO_H

#include "sim/SimSet.h"
#include "zo/port/HardwareInfo.h"

namespace sim {

class SimHardwareInfo : public zo::port::HardwareInfo, public SimObject {
  public:
    explicit SimHardwareInfo(SimSet& set);

    int getChipId(std::string& chipId) override;
};

}  // namespace sim

#endif
