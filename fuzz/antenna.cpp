// Antenna command lines, one call per line; a line "lnb N" switches the LNB power instead, so
// that settings are read and written around a replaced antenna handle.
#include <cstdint>
#include <cstdlib>

#include "FuzzInput.h"
#include "FuzzService.h"

using sysctrlfuzz::FuzzService;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzService& fuzz = FuzzService::instance();
    fuzz.reset();
    sysctrlfuzz::FuzzInput input(data, size);
    int calls = 0;
    do {
        const std::string line = input.takeLine();
        frame::MsgIds ids = FuzzService::msgIds(++calls);
        if (line.compare(0, 4, "lnb ") == 0) {
            fuzz.service().setLnbPower(ids, FuzzService::transport(calls),
                                       static_cast<int>(std::strtol(line.c_str() + 4, nullptr, 0)));
        } else {
            fuzz.service().controlAntenna(ids, FuzzService::transport(calls), line);
        }
    } while (!input.empty());
    fuzz.expectAnswers(calls);
    return 0;
}
