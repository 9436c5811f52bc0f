// OPC command lines, one call per line of the input.
#include <cstdint>

#include "FuzzService.h"

using sysctrlfuzz::FuzzCall;
using sysctrlfuzz::FuzzService;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return FuzzService::runCalls(data, size, [](FuzzCall& call) {
        call.service.controlOpc(call.ids, call.transport, call.input.takeLine());
        return true;
    });
}
