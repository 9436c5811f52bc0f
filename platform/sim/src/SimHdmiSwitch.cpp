#include "SimHdmiSwitch.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimHdmiSwitch::SimHdmiSwitch(SimSet& set)
    : SimObject(set, "HdmiSwitch", {{"getSignalInfo", Kind::Int, {Kind::UInt}}},
                {{"signalFlags", Kind::UInt, 3}}) {}

int SimHdmiSwitch::getSignalInfo(uint32_t* flags) {
    Call call(*this, "getSignalInfo");
    const uint32_t value = call.output(stateAs<unsigned int>("signalFlags"));
    if (flags != nullptr) {
        *flags = value;
    }
    return call.result(0);
}

}  // namespace sim
