#ifndef ZO_PORT_FARFIELD_H
#define ZO_PORT_FARFIELD_H

#include <cstdint>
#include <string>

#include "zo/port/Object.h"

namespace zo {
namespace port {

// The far-field microphone unit. Operations returning int return 0 on success unless noted.
class FarField : public Object {
  public:
    FarField();
    ~FarField() override;

    virtual int reinit() = 0;
    virtual int upgrade() = 0;
    // Returns the progress of an upgrade.
    virtual int getUpgradeProgress() = 0;
    virtual std::string getVersion() = 0;
    virtual int setMute(bool mute) = 0;
    virtual int setPower(bool on) = 0;
    virtual int setMode(const char* mode) = 0;
    virtual int setLed(bool on) = 0;
    // Returns the switch status.
    virtual int getSwitchStatus() = 0;
    virtual int getTriggerDuration(uint32_t* first, uint32_t* second) = 0;
    virtual int getMicMeter(int32_t* first, int32_t* second) = 0;
    virtual int setLedColor(int first, int second) = 0;
};

}  // namespace port
}  // namespace zo

#endif
