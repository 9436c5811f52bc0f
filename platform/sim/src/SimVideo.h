#ifndef SIM_SIMVIDEO_H
#define SIM_SIMVIDEO_H

#include "SimSetterDevice.h"
#include "sim/SimSet.h"
#include "zo/port/Video.h"

namespace sim {

class SimVideo : public zo::port::Video, public SimSetterDevice {
  public:
    explicit SimVideo(SimSet& set);

    int setScreenOffState(int off) override;
};

}  // namespace sim

#endif
