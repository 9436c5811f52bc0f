#include "SimClock.h"

#include <algorithm>
#include <cstring>

#include "zo/host/Host.h"

namespace sim {

SimClock::SimClock(SimSet& set)
    : SimObject(set, "clock", {{"getUtcTime", Kind::UInt, {}}}, {{"utcTime", Kind::Any, nullptr}},
                false) {}

uint64_t SimClock::getUtcTime() {
    Call call(*this, "getUtcTime");
    const json& fixed = state("utcTime");
    const uint64_t own = fixed.is_number() ? fixed.get<uint64_t>() : zo::host::systemUtcTime();
    return call.result(own);
}

}  // namespace sim
