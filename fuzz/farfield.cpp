// Far-field calls, three lines each: the version text the unit reports, the command, the data.
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
        fuzz.setState("FarField.version", sim::textOrHex(input.takeLine()));
        const std::string command = input.takeLine();
        frame::MsgIds ids = FuzzService::msgIds(++calls);
        fuzz.service().controlFarField(ids, FuzzService::transport(calls), command,
                                       input.takeLine());
    } while (!input.empty());
    fuzz.expectAnswers(calls);
    return 0;
}
