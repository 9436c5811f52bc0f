// GPIO, I2C, HDMI and shell texts. Each call: one byte choosing the operation and the device's
// status, a line of command text, and a line the device answers with.
#include <cstdint>

#include "FuzzService.h"

using sysctrlfuzz::FuzzCall;
using sysctrlfuzz::FuzzService;

namespace {

typedef int (sysctrlservice::ServiceInterface::*TextOperation)(frame::MsgIds&,
                                                               const frame::TransportInfo&,
                                                               const std::string&);
struct Surface {
    TextOperation operation;
    const char* device;  // the factory manager's operation behind it; null: none answers a text
};
const Surface kSurfaces[] = {
    {&sysctrlservice::ServiceInterface::setGpio, "FactoryManager.setGpio"},
    {&sysctrlservice::ServiceInterface::getGpio, "FactoryManager.getGpio"},
    {&sysctrlservice::ServiceInterface::controlIic, "FactoryManager.commandIic"},
    {&sysctrlservice::ServiceInterface::controlHdmi, "FactoryManager.controlHdmi"},
    {&sysctrlservice::ServiceInterface::executeZoshell, nullptr},
};
const int kSurfaceCount = sizeof kSurfaces / sizeof kSurfaces[0];

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return FuzzService::runCalls(data, size, [](FuzzCall& call) {
        const uint8_t choice = call.input.takeByte();
        const Surface& surface = kSurfaces[choice % kSurfaceCount];
        const std::string command = call.input.takeLine();
        const std::string reply = call.input.takeLine();
        if (surface.device != nullptr) {
            call.fuzz.setAnswer(surface.device, static_cast<int>(choice / kSurfaceCount % 3) - 1,
                                sim::json::array({sim::textOrHex(reply)}));
        }
        (call.service.*surface.operation)(call.ids, call.transport, command);
        return true;
    });
}
