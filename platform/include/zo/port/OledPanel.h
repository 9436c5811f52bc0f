#ifndef ZO_PORT_OLEDPANEL_H
#define ZO_PORT_OLEDPANEL_H

#include <cstddef>
#include <cstdint>

#include "zo/port/Event.h"

namespace zo {
namespace port {

// Size of the record that OledPanel::getVersion fills.
const size_t OLED_PANEL_VERSION_SIZE = 22;
// Number of values that OledPanel::getPanelInfo fills.
const size_t OLED_PANEL_INFO_COUNT = 5;

// Called on the panel's callback thread when its error bits change.
typedef void (*oledErrorCallback_t)(uint32_t errorMask, void* user);

// The OLED panel: power, factory tuning, maintenance runs, information and errors. Its events are
// of class EVENT_CLASS_OLED_PANEL.
class OledPanel : public EventSubject {
  public:
    OledPanel();
    ~OledPanel() override;

    virtual uint32_t getErrorStatus() = 0;
    virtual int turnOn() = 0;
    virtual int turnOff() = 0;

    virtual void setLeaEnable(uint8_t enable) = 0;
    virtual uint8_t getLeaEnable() = 0;
    virtual void setCpcEnable(uint8_t enable) = 0;
    virtual uint8_t getCpcEnable() = 0;
    virtual int startAs() = 0;
    virtual int getManualGainEnable() = 0;
    virtual int setManualGainEnable(uint8_t enable) = 0;
    virtual int setManualGainSetting(unsigned int index, unsigned int value) = 0;
    virtual int getManualGainSetting(unsigned int index) = 0;
    virtual int saveManualGain(uint8_t gain0, uint8_t gain1, uint8_t gain2, uint8_t gain3) = 0;

    virtual int onScreenOff() = 0;
    // Runs a maintenance step as the flag asks; returns the run's result bits.
    virtual int runMaintenance(uint32_t flag) = 0;
    virtual int panelCycleBegin() = 0;
    virtual int panelCycleEnd() = 0;
    // Records a panel-care event with the panel.
    virtual int markPanelEvent(int eventCode) = 0;

    // Fills OLED_PANEL_INFO_COUNT values.
    virtual int getPanelInfo(int32_t* info) = 0;
    // Fills the OLED_PANEL_VERSION_SIZE-byte version record; 0 on success.
    virtual int getVersion(uint8_t* version) = 0;

    // Registers the one function called when the error bits change.
    virtual int registerErrorCallback(oledErrorCallback_t callback, void* user) = 0;
};

}  // namespace port
}  // namespace zo

#endif
