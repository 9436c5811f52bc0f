#ifndef ZO_PORT_SYSTEMCONTROL_H
#define ZO_PORT_SYSTEMCONTROL_H

#include "zo/port/Object.h"

namespace zo {
namespace port {

// Panel power and system restart through the standby controller. 0 means success.
class SystemControl : public Object {
  public:
    SystemControl();
    ~SystemControl() override;

    virtual int setPanelPower(int value) = 0;
    virtual int restartByStc() = 0;
};

}  // namespace port
}  // namespace zo

#endif
