#include "SimVodState.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimVodState::SimVodState(SimSet& set)
    : SimObject(set, "VodState", {{"isVodEnabled", Kind::Int, {}}}, {{"enabled", Kind::Int, 1}}) {}

int SimVodState::isVodEnabled() {
    Call call(*this, "isVodEnabled");
    return call.result(stateAs<int>("enabled"));
}

}  // namespace sim
