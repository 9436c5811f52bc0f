#include "SimOledPanel.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimOledPanel::SimOledPanel(SimSet& set)
    : SimObject(set, "OledPanel",
                {{"getErrorStatus", Kind::UInt, {}},
                 {"turnOn", Kind::Int, {}},
                 {"turnOff", Kind::Int, {}},
                 {"setLeaEnable", Kind::Void, {}},
                 {"getLeaEnable", Kind::UInt8, {}},
                 {"setCpcEnable", Kind::Void, {}},
                 {"getCpcEnable", Kind::UInt8, {}},
                 {"startAs", Kind::Int, {}},
                 {"getManualGainEnable", Kind::Int, {}},
                 {"setManualGainEnable", Kind::Int, {}},
                 {"setManualGainSetting", Kind::Int, {}},
                 {"getManualGainSetting", Kind::Int, {}},
                 {"saveManualGain", Kind::Int, {}},
                 {"onScreenOff", Kind::Int, {}},
                 {"runMaintenance", Kind::Int, {}},
                 {"panelCycleBegin", Kind::Int, {}},
                 {"panelCycleEnd", Kind::Int, {}},
                 {"markPanelEvent", Kind::Int, {}},
                 {"getPanelInfo", Kind::Int, {Kind::IntList}},
                 {"getVersion", Kind::Int, {Kind::Bytes}},
                 {"registerErrorCallback", Kind::Int, {}}},
                {{"errorStatus", Kind::UInt, 0},
                 {"on", Kind::Bool, true},
                 {"lea", Kind::UInt8, 0},
                 {"cpc", Kind::UInt8, 0},
                 {"manualGainEnable", Kind::Int, 0},
                 {"manualGainSettings", Kind::Any, json::object()},
                 {"savedGains", Kind::IntList, json::array({0, 0, 0, 0})},
                 {"maintenanceResult", Kind::Int, 0},
                 {"panelEvents", Kind::IntList, json::array()},
                 {"panelInfo", Kind::IntList, json::array({1, 2, 3, 4, 5})},
                 {"version", Kind::Bytes,
                  "01020304"
                  "0000"
                  "0a"
                  "0000000000"
                  "0b"
                  "0000000000000000"
                  "0c"}}) {}

uint32_t SimOledPanel::getErrorStatus() {
    Call call(*this, "getErrorStatus");
    return call.result(stateAs<unsigned int>("errorStatus"));
}

int SimOledPanel::turnOn() {
    return power("turnOn", true);
}

int SimOledPanel::turnOff() {
    return power("turnOff", false);
}

void SimOledPanel::setLeaEnable(uint8_t enable) {
    Call call(*this, "setLeaEnable", {enable});
    state("lea") = enable;
    call.done();
}

uint8_t SimOledPanel::getLeaEnable() {
    Call call(*this, "getLeaEnable");
    return call.result(stateAs<uint8_t>("lea"));
}

void SimOledPanel::setCpcEnable(uint8_t enable) {
    Call call(*this, "setCpcEnable", {enable});
    state("cpc") = enable;
    call.done();
}

uint8_t SimOledPanel::getCpcEnable() {
    Call call(*this, "getCpcEnable");
    return call.result(stateAs<uint8_t>("cpc"));
}

int SimOledPanel::startAs() {
    Call call(*this, "startAs");
    return call.result(0);
}

int SimOledPanel::getManualGainEnable() {
    Call call(*this, "getManualGainEnable");
    return call.result(stateAs<int>("manualGainEnable"));
}

int SimOledPanel::setManualGainEnable(uint8_t enable) {
    Call call(*this, "setManualGainEnable", {enable});
    const int status = call.result(0);
    if (status == 0) {
        state("manualGainEnable") = enable;
    }
    return status;
}

int SimOledPanel::setManualGainSetting(unsigned int index, unsigned int value) {
    Call call(*this, "setManualGainSetting", {index, value});
    const int status = call.result(0);
    if (status == 0) {
        state("manualGainSettings")[std::to_string(index)] = value;
    }
    return status;
}

int SimOledPanel::getManualGainSetting(unsigned int index) {
    Call call(*this, "getManualGainSetting", {index});
    const json& settings = state("manualGainSettings");
    const std::string key = std::to_string(index);
    return call.result(settings.contains(key) ? toInt(settings[key]) : 0);
}

int SimOledPanel::saveManualGain(uint8_t gain0, uint8_t gain1, uint8_t gain2, uint8_t gain3) {
    const json gains = json::array({gain0, gain1, gain2, gain3});
    Call call(*this, "saveManualGain", gains);
    const int status = call.result(0);
    if (status == 0) {
        state("savedGains") = gains;
    }
    return status;
}

int SimOledPanel::onScreenOff() {
    Call call(*this, "onScreenOff");
    return call.result(0);
}

int SimOledPanel::runMaintenance(uint32_t flag) {
    Call call(*this, "runMaintenance", {flag});
    return call.result(stateAs<int>("maintenanceResult"));
}

int SimOledPanel::panelCycleBegin() {
    Call call(*this, "panelCycleBegin");
    return call.result(0);
}

int SimOledPanel::panelCycleEnd() {
    Call call(*this, "panelCycleEnd");
    return call.result(0);
}

int SimOledPanel::markPanelEvent(int eventCode) {
    Call call(*this, "markPanelEvent", {eventCode});
    const int status = call.result(0);
    if (status == 0) {
        json& events = state("panelEvents");
        events.push_back(eventCode);
        while (events.size() > kPanelEventsKept) {
            events.erase(events.begin());
        }
    }
    return status;
}

int SimOledPanel::getPanelInfo(int32_t* info) {
    Call call(*this, "getPanelInfo");
    const std::vector<int32_t> values = call.output(stateAs<std::vector<int32_t>>("panelInfo"));
    for (size_t i = 0; i < OLED_PANEL_INFO_COUNT && i < values.size() && info != nullptr; ++i) {
        info[i] = values[i];
    }
    return call.result(0);
}

int SimOledPanel::getVersion(uint8_t* version) {
    Call call(*this, "getVersion");
    const std::vector<uint8_t> bytes = call.output(stateAs<std::vector<uint8_t>>("version"));
    if (version != nullptr) {
        std::memcpy(version, bytes.data(), std::min(bytes.size(), OLED_PANEL_VERSION_SIZE));
    }
    return call.result(0);
}

int SimOledPanel::registerErrorCallback(zo::port::oledErrorCallback_t callback, void* user) {
    Call call(*this, "registerErrorCallback");
    const int status = call.result(callback != nullptr ? 0 : -22);
    if (status == 0) {
        m_errorCallback = callback;
        m_errorUser = user;
    }
    return status;
}

bool SimOledPanel::raiseError(uint32_t mask) {
    zo::port::oledErrorCallback_t callback = nullptr;
    void* user = nullptr;
    {
        std::lock_guard<std::recursive_mutex> lock(simSet().mutex());
        state("errorStatus") = mask;
        callback = m_errorCallback;
        user = m_errorUser;
    }
    if (callback == nullptr) {
        return false;
    }
    callback(mask, user);
    return true;
}

int SimOledPanel::power(const char* operation, bool on) {
    Call call(*this, operation);
    const int status = call.result(0);
    if (status == 0) {
        state("on") = on;
    }
    return status;
}

}  // namespace sim
