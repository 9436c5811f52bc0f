#ifndef ZO_PORT_HARDWAREINFO_H
#define ZO_PORT_HARDWAREINFO_H

#include <string>

#include "zo/port/Object.h"

namespace zo {
namespace port {

// Identity of the set's hardware.
class HardwareInfo : public Object {
  public:
    HardwareInfo();
    ~HardwareInfo() override;

    // 0 on success.
    virtual int getChipId(std::string& chipId) = 0;
};

}  // namespace port
}  // namespace zo

#endif
