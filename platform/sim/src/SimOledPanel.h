#ifndef SIM_SIMOLEDPANEL_H
#define SIM_SIMOLEDPANEL_H

#include "sim/SimSet.h"
#include "zo/port/OledPanel.h"

namespace sim {

using zo::port::OLED_PANEL_INFO_COUNT;
using zo::port::OLED_PANEL_VERSION_SIZE;

class SimOledPanel : public zo::port::OledPanel, public SimObject {
  public:
    explicit SimOledPanel(SimSet& set);

    uint32_t getErrorStatus() override;
    int turnOn() override;
    int turnOff() override;

    void setLeaEnable(uint8_t enable) override;
    uint8_t getLeaEnable() override;
    void setCpcEnable(uint8_t enable) override;
    uint8_t getCpcEnable() override;
    int startAs() override;
    int getManualGainEnable() override;
    int setManualGainEnable(uint8_t enable) override;
    int setManualGainSetting(unsigned int index, unsigned int value) override;
    int getManualGainSetting(unsigned int index) override;
    int saveManualGain(uint8_t gain0, uint8_t gain1, uint8_t gain2, uint8_t gain3) override;
    int onScreenOff() override;
    int runMaintenance(uint32_t flag) override;
    int panelCycleBegin() override;
    int panelCycleEnd() override;
    // Appends the code to panelEvents, which keeps the last kPanelEventsKept codes.
    static constexpr size_t kPanelEventsKept = 1000;
    int markPanelEvent(int eventCode) override;
    int getPanelInfo(int32_t* info) override;
    int getVersion(uint8_t* version) override;
    int registerErrorCallback(zo::port::oledErrorCallback_t callback, void* user) override;

    // The panel's error bits change: the state takes the mask and the registered callback is
    // called, without the set's lock.
    bool raiseError(uint32_t mask);

  private:
    int power(const char* operation, bool on);

    zo::port::oledErrorCallback_t m_errorCallback = nullptr;
    void* m_errorUser = nullptr;
};

}  // namespace sim

#endif
