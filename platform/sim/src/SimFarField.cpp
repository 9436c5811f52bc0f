#include "SimFarField.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimFarField::SimFarField(SimSet& set)
    : SimObject(set, "FarField",
                {{"reinit", Kind::Int, {}},
                 {"upgrade", Kind::Int, {}},
                 {"getUpgradeProgress", Kind::Int, {}},
                 {"getVersion", Kind::String, {}},
                 {"setMute", Kind::Int, {}},
                 {"setPower", Kind::Int, {}},
                 {"setMode", Kind::Int, {}},
                 {"setLed", Kind::Int, {}},
                 {"getSwitchStatus", Kind::Int, {}},
                 {"getTriggerDuration", Kind::Int, {Kind::UInt, Kind::UInt}},
                 {"getMicMeter", Kind::Int, {Kind::Int, Kind::Int}},
                 {"setLedColor", Kind::Int, {}}},
                {{"power", Kind::Bool, false},
                 {"mute", Kind::Bool, false},
                 {"led", Kind::Bool, false},
                 {"mode", Kind::String, "near"},
                 {"version", Kind::String, "1.2.3.4"},
                 {"upgradeProgress", Kind::Int, 0},
                 {"switchStatus", Kind::Int, 1},
                 {"triggerDuration", Kind::IntList, json::array({0, 0})},
                 {"micMeter", Kind::IntList, json::array({0, 0})},
                 {"ledColor", Kind::IntList, json::array({0, 0})},
                 {"reinits", Kind::Int, 0}}) {}

int SimFarField::reinit() {
    Call call(*this, "reinit");
    const int status = call.result(0);
    if (status == 0) {
        state("reinits") = stateAs<int>("reinits") + 1;
    }
    return status;
}

int SimFarField::upgrade() {
    Call call(*this, "upgrade");
    return call.result(0);
}

int SimFarField::getUpgradeProgress() {
    Call call(*this, "getUpgradeProgress");
    return call.result(stateAs<int>("upgradeProgress"));
}

std::string SimFarField::getVersion() {
    Call call(*this, "getVersion");
    return call.result(stateAs<std::string>("version"));
}

int SimFarField::setMute(bool mute) {
    return flag("setMute", "mute", mute);
}

int SimFarField::setPower(bool on) {
    return flag("setPower", "power", on);
}

int SimFarField::setMode(const char* mode) {
    const std::string text = mode != nullptr ? mode : "";
    Call call(*this, "setMode", {textOrHex(text)});
    const int status = call.result(0);
    if (status == 0) {
        state("mode") = textOrHex(text);
    }
    return status;
}

int SimFarField::setLed(bool on) {
    return flag("setLed", "led", on);
}

int SimFarField::getSwitchStatus() {
    Call call(*this, "getSwitchStatus");
    return call.result(stateAs<int>("switchStatus"));
}

int SimFarField::getTriggerDuration(uint32_t* first, uint32_t* second) {
    Call call(*this, "getTriggerDuration");
    const json& own = state("triggerDuration");
    const uint32_t a = call.output(toUInt(itemOf(own, 0)));
    const uint32_t b = call.output(toUInt(itemOf(own, 1)));
    if (first != nullptr)
        *first = a;
    if (second != nullptr)
        *second = b;
    return call.result(0);
}

int SimFarField::getMicMeter(int32_t* first, int32_t* second) {
    Call call(*this, "getMicMeter");
    const json& own = state("micMeter");
    const int32_t a = call.output(toInt(itemOf(own, 0)));
    const int32_t b = call.output(toInt(itemOf(own, 1)));
    if (first != nullptr)
        *first = a;
    if (second != nullptr)
        *second = b;
    return call.result(0);
}

int SimFarField::setLedColor(int first, int second) {
    Call call(*this, "setLedColor", {first, second});
    const int status = call.result(0);
    if (status == 0) {
        state("ledColor") = json::array({first, second});
    }
    return status;
}

int SimFarField::flag(const char* operation, const char* key, bool on) {
    Call call(*this, operation, {on});
    const int status = call.result(0);
    if (status == 0) {
        state(key) = on;
    }
    return status;
}

}  // namespace sim
