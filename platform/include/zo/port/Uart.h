#ifndef ZO_PORT_UART_H
#define ZO_PORT_UART_H

#include <cstdint>

#include "zo/port/Object.h"

namespace zo {
namespace port {

// The UART of an attached accessory.
class Uart : public Object {
  public:
    Uart();
    ~Uart() override;

    // frameFormat 0..3, baudRateIndex 0..8 (2400 to 115200 baud), oddParity and twoStopBits 0 or 1.
    // 0 on success.
    virtual int configure(int frameFormat, int baudRateIndex, int oddParity, int twoStopBits,
                          int flag5, int flag6) = 0;
    // Returns the number of bytes read into `buffer` (at most `capacity`), negative on error.
    virtual int read(uint8_t* buffer, int capacity, int flag) = 0;
    // Returns the number of bytes written.
    virtual int write(const uint8_t* buffer, int count, int flag) = 0;
    virtual int getMode(int which) = 0;
    virtual int setMode(int which, int mode) = 0;
};

}  // namespace port
}  // namespace zo

#endif
