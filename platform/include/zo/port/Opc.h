#ifndef ZO_PORT_OPC_H
#define ZO_PORT_OPC_H

#include <cstdint>

#include "zo/port/Object.h"

namespace zo {
namespace port {

// The optical panel compensation unit.
class Opc : public Object {
  public:
    Opc();
    ~Opc() override;

    // 0 when done.
    virtual int start(uint8_t mode) = 0;
    virtual int stop() = 0;
    virtual int getState() = 0;
    virtual int getDimmingRate() = 0;
};

}  // namespace port
}  // namespace zo

#endif
