// The signature's arguments. Each call: the signing key as a line, the message as a line, the
// reserved word and the signature length as four bytes each.
#include <cstdint>

#include "FuzzService.h"

using sysctrlfuzz::FuzzCall;
using sysctrlfuzz::FuzzService;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return FuzzService::runCalls(data, size, [](FuzzCall& call) {
        const std::string key = call.input.takeLine();
        call.fuzz.setState("Signer.key",
                           sim::toHex(reinterpret_cast<const uint8_t*>(key.data()), key.size()));
        const std::string message = call.input.takeLine();
        const unsigned int reserved = call.input.takeU32();
        const unsigned int length = call.input.takeU32();
        // A refused call (status not 0) answers nothing.
        return call.service.getYTSignature(call.ids, call.transport, message, reserved, length) ==
               0;
    });
}
