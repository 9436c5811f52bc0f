#ifndef ZO_PORT_ZAMCONTROL_H
#define ZO_PORT_ZAMCONTROL_H

#include "zo/port/Object.h"

namespace zo {
namespace port {

// Boot and hardware options of the hardware-interface layer. 0 means success.
class ZamControl : public Object {
  public:
    ZamControl();
    ~ZamControl() override;

    virtual int setBootEnvDbtable(int value) = 0;
    virtual int setComEnabled(int value) = 0;
    virtual int setUartState(int value) = 0;
    virtual int setGpioStatus(int gpio, int value) = 0;
};

}  // namespace port
}  // namespace zo

#endif
