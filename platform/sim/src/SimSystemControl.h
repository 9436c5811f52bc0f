#ifndef SIM_SIMSYSTEMCONTROL_H
#define SIM_SIMSYSTEMCONTROL_H

#include "SimSetterDevice.h"
#include "sim/SimSet.h"
#include "zo/port/SystemControl.h"

namespace sim {

class SimSystemControl : public zo::port::SystemControl, public SimSetterDevice {
  public:
    explicit SimSystemControl(SimSet& set);

    int setPanelPower(int value) override;
    int restartByStc() override;
};

}  // namespace sim

#endif
