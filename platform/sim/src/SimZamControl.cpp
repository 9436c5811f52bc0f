#include "SimZamControl.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimZamControl::SimZamControl(SimSet& set)
    : SimSetterDevice(set, "ZamControl",
                      {{"setBootEnvDbtable", Kind::Int, {}},
                       {"setComEnabled", Kind::Int, {}},
                       {"setUartState", Kind::Int, {}},
                       {"setGpioStatus", Kind::Int, {}}},
                      {{"bootEnvDbtable", Kind::Int, 0},
                       {"comEnabled", Kind::Int, 0},
                       {"uartState", Kind::Int, 0},
                       {"gpio", Kind::Any, json::object()}}) {}

int SimZamControl::setBootEnvDbtable(int value) {
    return store("setBootEnvDbtable", "bootEnvDbtable", {value});
}

int SimZamControl::setComEnabled(int value) {
    return store("setComEnabled", "comEnabled", {value});
}

int SimZamControl::setUartState(int value) {
    return store("setUartState", "uartState", {value});
}

int SimZamControl::setGpioStatus(int gpio, int value) {
    Call call(*this, "setGpioStatus", {gpio, value});
    const int status = call.result(0);
    if (status == 0) {
        state("gpio")[std::to_string(gpio)] = value;
    }
    return status;
}

}  // namespace sim
