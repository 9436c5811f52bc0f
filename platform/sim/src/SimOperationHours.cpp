#include "SimOperationHours.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimOperationHours::SimOperationHours(SimSet& set)
    : SimObject(set, "OperationHours",
                {{"getOperationTime", Kind::Int, {Kind::UInt}},
                 {"getOperationTimeText", Kind::Int, {Kind::String}},
                 {"clearOperationTime", Kind::Int, {}}},
                {{"times", Kind::IntList, json::array({1200, 345, 67, 89, 10})},
                 {"text", Kind::String, "1200h"}}) {}

int SimOperationHours::getOperationTime(int index, uint32_t& value) {
    Call call(*this, "getOperationTime", {index});
    const json& times = state("times");
    if (index < 0 || static_cast<size_t>(index) >= times.size()) {
        return call.result(-1);
    }
    value = call.output(toUInt(times[static_cast<size_t>(index)]));
    return call.result(0);
}

int SimOperationHours::getOperationTimeText(std::string& text) {
    Call call(*this, "getOperationTimeText");
    text = call.output(stateAs<std::string>("text"));
    return call.result(0);
}

int SimOperationHours::clearOperationTime(int index) {
    Call call(*this, "clearOperationTime", {index});
    json& times = state("times");
    const bool inside = index >= 0 && static_cast<size_t>(index) < times.size();
    const int status = call.result(inside ? 0 : -1);
    if (status == 0 && inside) {
        times[static_cast<size_t>(index)] = 0;
    }
    return status;
}

}  // namespace sim
