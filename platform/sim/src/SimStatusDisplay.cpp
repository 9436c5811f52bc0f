#include "SimStatusDisplay.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimStatusDisplay::SimStatusDisplay(SimSet& set)
    : SimObject(set, "StatusDisplay",
                {{"showStatus", Kind::Int, {}}, {"hideStatus", Kind::Int, {}}},
                {{"shown", Kind::IntList, json::array()}}) {}

int SimStatusDisplay::showStatus(int code) {
    Call call(*this, "showStatus", {code});
    const int status = call.result(0);
    json& shown = state("shown");
    if (status == 0 && std::find(shown.begin(), shown.end(), json(code)) == shown.end()) {
        shown.push_back(code);
    }
    return status;
}

int SimStatusDisplay::hideStatus(int code) {
    Call call(*this, "hideStatus", {code});
    const int status = call.result(0);
    json& shown = state("shown");
    if (status == 0) {
        shown.erase(std::remove(shown.begin(), shown.end(), json(code)), shown.end());
    }
    return status;
}

}  // namespace sim
