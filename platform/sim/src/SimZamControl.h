#ifndef SIM_SIMZAMCONTROL_H
#define SIM_SIMZAMCONTROL_H

#include "SimSetterDevice.h"
#include "sim/SimSet.h"
#include "zo/port/ZamControl.h"

namespace sim {

class SimZamControl : public zo::port::ZamControl, public SimSetterDevice {
  public:
    explicit SimZamControl(SimSet& set);

    int setBootEnvDbtable(int value) override;
    int setComEnabled(int value) override;
    int setUartState(int value) override;
    int setGpioStatus(int gpio, int value) override;
};

}  // namespace sim

#endif
