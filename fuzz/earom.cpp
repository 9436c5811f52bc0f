// EAROM reads, writes and size queries. Each call: one byte choosing it, offset and length as
// four bytes each, and a line: the data to write, or the block the device answers a read with.
#include <cstdint>

#include "FuzzService.h"

using sysctrlfuzz::FuzzCall;
using sysctrlfuzz::FuzzService;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return FuzzService::runCalls(data, size, [](FuzzCall& call) {
        const uint8_t choice = call.input.takeByte() % 4;
        const int offset = static_cast<int>(call.input.takeU32());
        const unsigned int length = call.input.takeU32();
        const std::string text = call.input.takeLine();
        if (choice == 0) {
            call.service.writeEarom(call.ids, call.transport, offset, text);
        } else if (choice == 1) {
            call.service.getEaromSize(call.ids, call.transport);
        } else {
            if (choice == 3) {
                call.fuzz.setAnswer("FactoryManager.readEaromBlock", true,
                                    sim::json::array({sim::textOrHex(text)}));
            }
            call.service.readEarom(call.ids, call.transport, offset, length);
        }
        return true;
    });
}
