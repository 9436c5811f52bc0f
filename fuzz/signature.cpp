// The signature's arguments. Each call: the signing key as a line, the message as a line, the
// reserved word and the signature length as four bytes each.
#include <cstdint>

#include "FuzzInput.h"
#include "FuzzService.h"

using sysctrlfuzz::FuzzService;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzService& fuzz = FuzzService::instance();
    fuzz.reset();
    sysctrlfuzz::FuzzInput input(data, size);
    int calls = 0;
    std::vector<int> answered;  // refused calls (status not 0) answer nothing
    do {
        const std::string key = input.takeLine();
        fuzz.setState("Signer.key",
                      sim::toHex(reinterpret_cast<const uint8_t*>(key.data()), key.size()));
        const std::string message = input.takeLine();
        const unsigned int reserved = input.takeU32();
        const unsigned int length = input.takeU32();
        frame::MsgIds ids = FuzzService::msgIds(++calls);
        if (fuzz.service().getYTSignature(ids, FuzzService::transport(calls), message, reserved,
                                          length) == 0) {
            answered.push_back(calls);
        }
    } while (!input.empty());
    fuzz.expectAnswers(answered);
    return 0;
}
