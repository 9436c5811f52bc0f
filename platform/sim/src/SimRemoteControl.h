#ifndef SIM_SIMREMOTECONTROL_H
#define SIM_SIMREMOTECONTROL_H

#include "SimSetterDevice.h"
#include "sim/SimSet.h"
#include "zo/port/RemoteControl.h"

namespace sim {

class SimRemoteControl : public zo::port::RemoteControl, public SimSetterDevice {
  public:
    explicit SimRemoteControl(SimSet& set);

    int setKeypadLock(int value) override;
    int setRemoteControlCode(int code) override;
    int setBrandSwitch(int brand) override;
};

}  // namespace sim

#endif
