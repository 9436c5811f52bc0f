#include "SimOpc.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimOpc::SimOpc(SimSet& set)
    : SimObject(set, "Opc",
                {{"start", Kind::Int, {}},
                 {"stop", Kind::Int, {}},
                 {"getState", Kind::Int, {}},
                 {"getDimmingRate", Kind::Int, {}}},
                {{"running", Kind::Bool, false},
                 {"mode", Kind::Int, 0},
                 {"state", Kind::Int, 0},
                 {"dimmingRate", Kind::Int, 100}}) {}

int SimOpc::start(uint8_t mode) {
    Call call(*this, "start", {mode});
    const int status = call.result(0);
    if (status == 0) {
        state("running") = true;
        state("mode") = mode;
    }
    return status;
}

int SimOpc::stop() {
    Call call(*this, "stop");
    const int status = call.result(0);
    if (status == 0) {
        state("running") = false;
    }
    return status;
}

int SimOpc::getState() {
    Call call(*this, "getState");
    return call.result(stateAs<int>("state"));
}

int SimOpc::getDimmingRate() {
    Call call(*this, "getDimmingRate");
    return call.result(stateAs<int>("dimmingRate"));
}

}  // namespace sim
