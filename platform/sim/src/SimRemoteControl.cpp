#include "SimRemoteControl.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimRemoteControl::SimRemoteControl(SimSet& set)
    : SimSetterDevice(set, "RemoteControl",
                      {{"setKeypadLock", Kind::Int, {}},
                       {"setRemoteControlCode", Kind::Int, {}},
                       {"setBrandSwitch", Kind::Int, {}}},
                      {{"keypadLock", Kind::Int, 0},
                       {"remoteControlCode", Kind::Int, 0},
                       {"brand", Kind::Int, 0}}) {}

int SimRemoteControl::setKeypadLock(int value) {
    return store("setKeypadLock", "keypadLock", {value});
}

int SimRemoteControl::setRemoteControlCode(int code) {
    return store("setRemoteControlCode", "remoteControlCode", {code});
}

int SimRemoteControl::setBrandSwitch(int brand) {
    return store("setBrandSwitch", "brand", {brand});
}

}  // namespace sim
