#ifndef ZO_PORT_HDMISWITCH_H
#define ZO_PORT_HDMISWITCH_H

#include <cstdint>

#include "zo/port/Object.h"

namespace zo {
namespace port {

// Signal flags of HdmiSwitch::getSignalInfo.
const uint32_t HDMISWITCH_SYNC_OK = 0x1;
const uint32_t HDMISWITCH_CLOCK_OK = 0x2;

// The HDMI input switch.
class HdmiSwitch : public Object {
  public:
    HdmiSwitch();
    ~HdmiSwitch() override;

    // Fills the signal flags; 0 on success.
    virtual int getSignalInfo(uint32_t* flags) = 0;
};

}  // namespace port
}  // namespace zo

#endif
