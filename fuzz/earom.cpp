// EAROM reads, writes and size queries. Each call: one byte choosing it, offset and length as
// four bytes each, and a line: the data to write, or the block the device answers a read with.
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
        const uint8_t choice = input.takeByte() % 4;
        const int offset = static_cast<int>(input.takeU32());
        const unsigned int length = input.takeU32();
        const std::string text = input.takeLine();
        frame::MsgIds ids = FuzzService::msgIds(++calls);
        const frame::TransportInfo transport = FuzzService::transport(calls);
        if (choice == 0) {
            fuzz.service().writeEarom(ids, transport, offset, text);
        } else if (choice == 1) {
            fuzz.service().getEaromSize(ids, transport);
        } else {
            if (choice == 3) {
                fuzz.setAnswer("FactoryManager.readEaromBlock", true,
                               sim::json::array({sim::textOrHex(text)}));
            }
            fuzz.service().readEarom(ids, transport, offset, length);
        }
    } while (!input.empty());
    fuzz.expectAnswers(calls);
    return 0;
}
