#ifndef SIM_SIMFRONTPANEL_H
#define SIM_SIMFRONTPANEL_H

#include "sim/SimSet.h"
#include "zo/port/FrontPanel.h"

namespace sim {

class SimFrontPanel : public zo::port::FrontPanel, public SimObject {
  public:
    explicit SimFrontPanel(SimSet& set);

    int showUseCase(int useCase) override;
    int hideUseCase(int useCase) override;
    int setLedState(bool on) override;
    int setLedColorState(int color, int status, int flashPwm) override;
    int setLogoLedState(bool on) override;

  private:
    int setter(const char* operation, const char* key, const json& value);
};

}  // namespace sim

#endif
