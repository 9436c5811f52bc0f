// Far-field calls, three lines each: the version text the unit reports, the command, the data.
#include <cstdint>

#include "FuzzService.h"

using sysctrlfuzz::FuzzCall;
using sysctrlfuzz::FuzzService;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return FuzzService::runCalls(data, size, [](FuzzCall& call) {
        call.fuzz.setState("FarField.version", sim::textOrHex(call.input.takeLine()));
        const std::string command = call.input.takeLine();
        call.service.controlFarField(call.ids, call.transport, command, call.input.takeLine());
        return true;
    });
}
