#ifndef ZO_PORT_REMOTECONTROL_H
#define ZO_PORT_REMOTECONTROL_H

#include "zo/port/Object.h"

namespace zo {
namespace port {

// Remote-control and local keypad options. Every operation returns 0 on success.
class RemoteControl : public Object {
  public:
    RemoteControl();
    ~RemoteControl() override;

    virtual int setKeypadLock(int value) = 0;
    virtual int setRemoteControlCode(int code) = 0;
    virtual int setBrandSwitch(int brand) = 0;
};

}  // namespace port
}  // namespace zo

#endif
