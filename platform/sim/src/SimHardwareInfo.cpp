#include "SimHardwareInfo.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimHardwareInfo::SimHardwareInfo(SimSet& set)
    : SimObject(set, "HardwareInfo", {{"getChipId", Kind::Int, {Kind::String}}},
                {{"chipId", Kind::String, "5a4f3a00c0ffee42"}}) {}

int SimHardwareInfo::getChipId(std::string& chipId) {
    Call call(*this, "getChipId");
    chipId = call.output(stateAs<std::string>("chipId"));
    return call.result(0);
}

}  // namespace sim
