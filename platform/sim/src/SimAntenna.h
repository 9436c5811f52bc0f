#ifndef SIM_SIMANTENNA_H
#define SIM_SIMANTENNA_H

#include "sim/SimSet.h"
#include "zo/port/Antenna.h"

namespace sim {

class SimAntenna : public zo::port::Antenna, public SimObject {
  public:
    explicit SimAntenna(SimSet& set);

    int getSatelliteParams(zo::port::SatelliteAntennaParams& params) override;
    int setSatelliteParams(const zo::port::SatelliteAntennaParams& params) override;
    int getTerrestrialParams(zo::port::TerrestrialAntennaParams& params) override;
    int setTerrestrialParams(const zo::port::TerrestrialAntennaParams& params) override;
    int setLnbPower(int value) override;

  private:
    // One satellite on a single LNB.
    static json defaultSatellite();
};

}  // namespace sim

#endif
