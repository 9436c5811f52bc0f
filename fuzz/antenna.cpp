// Antenna command lines, one call per line; a line "lnb N" switches the LNB power instead, so
// that settings are read and written around a replaced antenna handle.
#include <cstdint>
#include <cstdlib>

#include "FuzzService.h"

using sysctrlfuzz::FuzzCall;
using sysctrlfuzz::FuzzService;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return FuzzService::runCalls(data, size, [](FuzzCall& call) {
        const std::string line = call.input.takeLine();
        if (line.compare(0, 4, "lnb ") == 0) {
            call.service.setLnbPower(call.ids, call.transport,
                                     static_cast<int>(std::strtol(line.c_str() + 4, nullptr, 0)));
        } else {
            call.service.controlAntenna(call.ids, call.transport, line);
        }
        return true;
    });
}
