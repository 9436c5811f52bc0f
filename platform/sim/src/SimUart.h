#ifndef SIM_SIMUART_H
#define SIM_SIMUART_H

#include "sim/SimSet.h"
#include "zo/port/Uart.h"

namespace sim {

class SimUart : public zo::port::Uart, public SimObject {
  public:
    explicit SimUart(SimSet& set);

    int configure(int frameFormat, int baudRateIndex, int oddParity, int twoStopBits, int flag5,
                  int flag6) override;
    // Hands out what is waiting in rxData, at most `capacity` bytes.
    int read(uint8_t* buffer, int capacity, int flag) override;
    // Appends what was written to txData, which keeps the last kTxDataKept bytes: a line written
    // to for days would otherwise grow by every write (and each write copies all of it).
    static constexpr size_t kTxDataKept = 64 * 1024;
    int write(const uint8_t* buffer, int count, int flag) override;
    int getMode(int which) override;
    // Any successful setMode completes the switch: getMode answers 1 afterwards.
    int setMode(int which, int mode) override;
};

}  // namespace sim

#endif
