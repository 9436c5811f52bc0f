// OPC command lines, one call per line of the input.
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
        frame::MsgIds ids = FuzzService::msgIds(++calls);
        fuzz.service().controlOpc(ids, FuzzService::transport(calls), input.takeLine());
    } while (!input.empty());
    fuzz.expectAnswers(calls);
    return 0;
}
