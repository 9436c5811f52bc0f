// UART calls, three lines each: the bytes waiting on the line, the command, the Base64 data.
#include <cstdint>

#include "FuzzInput.h"
#include "FuzzService.h"

using sysctrlfuzz::FuzzService;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzService& fuzz = FuzzService::instance();
    fuzz.reset();
    sysctrlfuzz::FuzzInput input(data, size);
    int calls = 0;
    do {
        const std::string waiting = input.takeLine();
        fuzz.setState("Uart.rxData",
                      sim::toHex(reinterpret_cast<const uint8_t*>(waiting.data()), waiting.size()));
        const std::string command = input.takeLine();
        frame::MsgIds ids = FuzzService::msgIds(++calls);
        fuzz.service().controlUart(ids, FuzzService::transport(calls), command, input.takeLine());
    } while (!input.empty());
    fuzz.expectAnswers(calls);
    return 0;
}
