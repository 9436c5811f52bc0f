// UART calls, three lines each: the bytes waiting on the line, the command, the Base64 data.
#include <cstdint>

#include "FuzzService.h"

using sysctrlfuzz::FuzzCall;
using sysctrlfuzz::FuzzService;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return FuzzService::runCalls(data, size, [](FuzzCall& call) {
        const std::string waiting = call.input.takeLine();
        call.fuzz.setState(
            "Uart.rxData",
            sim::toHex(reinterpret_cast<const uint8_t*>(waiting.data()), waiting.size()));
        const std::string command = call.input.takeLine();
        call.service.controlUart(call.ids, call.transport, command, call.input.takeLine());
        return true;
    });
}
