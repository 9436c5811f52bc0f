#ifndef SIM_SIMFARFIELD_H
#define SIM_SIMFARFIELD_H

#include "sim/SimSet.h"
#include "zo/port/FarField.h"

namespace sim {

class SimFarField : public zo::port::FarField, public SimObject {
  public:
    explicit SimFarField(SimSet& set);

    int reinit() override;
    int upgrade() override;
    int getUpgradeProgress() override;
    std::string getVersion() override;
    int setMute(bool mute) override;
    int setPower(bool on) override;
    int setMode(const char* mode) override;
    int setLed(bool on) override;
    int getSwitchStatus() override;
    int getTriggerDuration(uint32_t* first, uint32_t* second) override;
    int getMicMeter(int32_t* first, int32_t* second) override;
    int setLedColor(int first, int second) override;

  private:
    int flag(const char* operation, const char* key, bool on);
};

}  // namespace sim

#endif
