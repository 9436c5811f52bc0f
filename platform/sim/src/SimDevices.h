#ifndef SIM_SIMDEVICES_H
#define SIM_SIMDEVICES_H

// The simulated objects. Each operation runs in a Call: it computes what the device would do from
// its state, lets a scripted answer override the values it fills in and its result, journals the
// call, and changes its state only when the result it returns means success.

#include <algorithm>
#include <cstring>

#include "sim/SimSet.h"
#include "zo/Thread.h"
#include "zo/port/Antenna.h"
#include "zo/port/CredentialsState.h"
#include "zo/port/Factory.h"
#include "zo/port/FactoryManager.h"
#include "zo/port/FarField.h"
#include "zo/port/FrontPanel.h"
#include "zo/port/HardwareInfo.h"
#include "zo/port/HdmiSwitch.h"
#include "zo/port/OledPanel.h"
#include "zo/port/Opc.h"
#include "zo/port/OperationHours.h"
#include "zo/port/Pier.h"
#include "zo/port/RemoteControl.h"
#include "zo/port/ScreenCapture.h"
#include "zo/port/Signer.h"
#include "zo/port/StatusDisplay.h"
#include "zo/port/SystemControl.h"
#include "zo/port/Uart.h"
#include "zo/port/Video.h"
#include "zo/port/VodState.h"
#include "zo/port/ZamControl.h"

namespace sim {

using zo::port::OLED_PANEL_INFO_COUNT;
using zo::port::OLED_PANEL_VERSION_SIZE;

class SimChassisDescription : public zo::port::ChassisDescription, public SimObject {
  public:
    explicit SimChassisDescription(SimSet& set) : SimObject(set, "ChassisDescription", {}, {}) {}
};

class SimSubsystemManager : public zo::port::SubsystemManager, public SimObject {
  public:
    explicit SimSubsystemManager(SimSet& set) : SimObject(set, "SubsystemManager", {}, {}) {}
};

// An event subject of a type the service does not expect.
class SimOtherSubject : public zo::port::EventSubject {
  public:
    SimOtherSubject() : zo::port::EventSubject("OtherSubject") {}
};

class SimEventManager : public zo::port::EventManager, public SimObject {
  public:
    explicit SimEventManager(SimSet& set)
        : SimObject(set, "EventManager", {{"registerObserver", Kind::Int, {}}},
                    {{"observers", Kind::Any, json::array()}}) {}

    int registerObserver(boost::shared_ptr<zo::port::EventSubject> subject,
                         boost::shared_ptr<zo::port::EventObserver> observer) override {
        const json subjectName = subject ? json(subject->getClassName()) : json();
        const json observerName = observer ? json(observer->getClassName()) : json();
        Call call(*this, "registerObserver", {subjectName, observerName});
        const int status = call.result(observer ? 0 : -22);
        if (status == 0 && observer) {
            m_registrations.push_back(Registration{subject, observer});
            state("observers").push_back({{"subject", subjectName}, {"observer", observerName}});
        }
        return status;
    }

    struct Registration {
        boost::shared_ptr<zo::port::EventSubject> subject;
        boost::shared_ptr<zo::port::EventObserver> observer;
    };
    // Under the set's lock.
    std::vector<Registration> registrations() const { return m_registrations; }

  private:
    std::vector<Registration> m_registrations;
};

class SimFrontPanel : public zo::port::FrontPanel, public SimObject {
  public:
    explicit SimFrontPanel(SimSet& set)
        : SimObject(set, "FrontPanel",
                    {{"showUseCase", Kind::Int, {}},
                     {"hideUseCase", Kind::Int, {}},
                     {"setLedState", Kind::Int, {}},
                     {"setLedColorState", Kind::Int, {}},
                     {"setLogoLedState", Kind::Int, {}}},
                    {{"useCases", Kind::IntList, json::array()},
                     {"ledState", Kind::Bool, false},
                     {"ledColor", Kind::IntList, json::array({0, 0, 0})},
                     {"logoLed", Kind::Bool, false}}) {}

    int showUseCase(int useCase) override {
        Call call(*this, "showUseCase", {useCase});
        const int status = call.result(0);
        json& shown = state("useCases");
        if (status == 0 && std::find(shown.begin(), shown.end(), json(useCase)) == shown.end()) {
            shown.push_back(useCase);
        }
        return status;
    }
    int hideUseCase(int useCase) override {
        Call call(*this, "hideUseCase", {useCase});
        const int status = call.result(0);
        json& shown = state("useCases");
        if (status == 0) {
            shown.erase(std::remove(shown.begin(), shown.end(), json(useCase)), shown.end());
        }
        return status;
    }
    int setLedState(bool on) override { return setter("setLedState", "ledState", json(on)); }
    int setLedColorState(int color, int status, int flashPwm) override {
        return setter("setLedColorState", "ledColor", json::array({color, status, flashPwm}));
    }
    int setLogoLedState(bool on) override { return setter("setLogoLedState", "logoLed", json(on)); }

  private:
    int setter(const char* operation, const char* key, const json& value) {
        Call call(*this, operation, value.is_array() ? value : json::array({value}));
        const int status = call.result(0);
        if (status == 0) {
            state(key) = value;
        }
        return status;
    }
};

// A device whose operations each store their arguments under a key and return 0.
class SimSetterDevice : public SimObject {
  public:
    using SimObject::SimObject;

  protected:
    int store(const char* operation, const char* key, const json& args) {
        Call call(*this, operation, args);
        const int status = call.result(0);
        if (status == 0) {
            state(key) = args.size() == 1 ? args[0] : args;
        }
        return status;
    }
};

class SimRemoteControl : public zo::port::RemoteControl, public SimSetterDevice {
  public:
    explicit SimRemoteControl(SimSet& set)
        : SimSetterDevice(set, "RemoteControl",
                          {{"setKeypadLock", Kind::Int, {}},
                           {"setRemoteControlCode", Kind::Int, {}},
                           {"setBrandSwitch", Kind::Int, {}}},
                          {{"keypadLock", Kind::Int, 0},
                           {"remoteControlCode", Kind::Int, 0},
                           {"brand", Kind::Int, 0}}) {}

    int setKeypadLock(int value) override { return store("setKeypadLock", "keypadLock", {value}); }
    int setRemoteControlCode(int code) override {
        return store("setRemoteControlCode", "remoteControlCode", {code});
    }
    int setBrandSwitch(int brand) override { return store("setBrandSwitch", "brand", {brand}); }
};

class SimSystemControl : public zo::port::SystemControl, public SimSetterDevice {
  public:
    explicit SimSystemControl(SimSet& set)
        : SimSetterDevice(set, "SystemControl",
                          {{"setPanelPower", Kind::Int, {}}, {"restartByStc", Kind::Int, {}}},
                          {{"panelPower", Kind::Int, 0}, {"restarts", Kind::Int, 0}}) {}

    int setPanelPower(int value) override { return store("setPanelPower", "panelPower", {value}); }
    int restartByStc() override {
        Call call(*this, "restartByStc");
        const int status = call.result(0);
        if (status == 0) {
            state("restarts") = stateAs<int>("restarts") + 1;
        }
        return status;
    }
};

class SimZamControl : public zo::port::ZamControl, public SimSetterDevice {
  public:
    explicit SimZamControl(SimSet& set)
        : SimSetterDevice(set, "ZamControl",
                          {{"setBootEnvDbtable", Kind::Int, {}},
                           {"setComEnabled", Kind::Int, {}},
                           {"setUartState", Kind::Int, {}},
                           {"setGpioStatus", Kind::Int, {}}},
                          {{"bootEnvDbtable", Kind::Int, 0},
                           {"comEnabled", Kind::Int, 0},
                           {"uartState", Kind::Int, 0},
                           {"gpio", Kind::Any, json::object()}}) {}

    int setBootEnvDbtable(int value) override {
        return store("setBootEnvDbtable", "bootEnvDbtable", {value});
    }
    int setComEnabled(int value) override { return store("setComEnabled", "comEnabled", {value}); }
    int setUartState(int value) override { return store("setUartState", "uartState", {value}); }
    int setGpioStatus(int gpio, int value) override {
        Call call(*this, "setGpioStatus", {gpio, value});
        const int status = call.result(0);
        if (status == 0) {
            state("gpio")[std::to_string(gpio)] = value;
        }
        return status;
    }
};

class SimOledPanel : public zo::port::OledPanel, public SimObject {
  public:
    explicit SimOledPanel(SimSet& set)
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

    uint32_t getErrorStatus() override {
        Call call(*this, "getErrorStatus");
        return call.result(stateAs<unsigned int>("errorStatus"));
    }
    int turnOn() override { return power("turnOn", true); }
    int turnOff() override { return power("turnOff", false); }

    void setLeaEnable(uint8_t enable) override {
        Call call(*this, "setLeaEnable", {enable});
        state("lea") = enable;
        call.done();
    }
    uint8_t getLeaEnable() override {
        Call call(*this, "getLeaEnable");
        return call.result(stateAs<uint8_t>("lea"));
    }
    void setCpcEnable(uint8_t enable) override {
        Call call(*this, "setCpcEnable", {enable});
        state("cpc") = enable;
        call.done();
    }
    uint8_t getCpcEnable() override {
        Call call(*this, "getCpcEnable");
        return call.result(stateAs<uint8_t>("cpc"));
    }
    int startAs() override {
        Call call(*this, "startAs");
        return call.result(0);
    }
    int getManualGainEnable() override {
        Call call(*this, "getManualGainEnable");
        return call.result(stateAs<int>("manualGainEnable"));
    }
    int setManualGainEnable(uint8_t enable) override {
        Call call(*this, "setManualGainEnable", {enable});
        const int status = call.result(0);
        if (status == 0) {
            state("manualGainEnable") = enable;
        }
        return status;
    }
    int setManualGainSetting(unsigned int index, unsigned int value) override {
        Call call(*this, "setManualGainSetting", {index, value});
        const int status = call.result(0);
        if (status == 0) {
            state("manualGainSettings")[std::to_string(index)] = value;
        }
        return status;
    }
    int getManualGainSetting(unsigned int index) override {
        Call call(*this, "getManualGainSetting", {index});
        const json& settings = state("manualGainSettings");
        const std::string key = std::to_string(index);
        return call.result(settings.contains(key) ? toInt(settings[key]) : 0);
    }
    int saveManualGain(uint8_t gain0, uint8_t gain1, uint8_t gain2, uint8_t gain3) override {
        const json gains = json::array({gain0, gain1, gain2, gain3});
        Call call(*this, "saveManualGain", gains);
        const int status = call.result(0);
        if (status == 0) {
            state("savedGains") = gains;
        }
        return status;
    }
    int onScreenOff() override {
        Call call(*this, "onScreenOff");
        return call.result(0);
    }
    int runMaintenance(uint32_t flag) override {
        Call call(*this, "runMaintenance", {flag});
        return call.result(stateAs<int>("maintenanceResult"));
    }
    int panelCycleBegin() override {
        Call call(*this, "panelCycleBegin");
        return call.result(0);
    }
    int panelCycleEnd() override {
        Call call(*this, "panelCycleEnd");
        return call.result(0);
    }
    int markPanelEvent(int eventCode) override {
        Call call(*this, "markPanelEvent", {eventCode});
        const int status = call.result(0);
        if (status == 0) {
            state("panelEvents").push_back(eventCode);
        }
        return status;
    }
    int getPanelInfo(int32_t* info) override {
        Call call(*this, "getPanelInfo");
        const std::vector<int32_t> values = call.output(stateAs<std::vector<int32_t>>("panelInfo"));
        for (size_t i = 0; i < OLED_PANEL_INFO_COUNT && i < values.size() && info != nullptr; ++i) {
            info[i] = values[i];
        }
        return call.result(0);
    }
    int getVersion(uint8_t* version) override {
        Call call(*this, "getVersion");
        const std::vector<uint8_t> bytes = call.output(stateAs<std::vector<uint8_t>>("version"));
        if (version != nullptr) {
            std::memcpy(version, bytes.data(), std::min(bytes.size(), OLED_PANEL_VERSION_SIZE));
        }
        return call.result(0);
    }
    int registerErrorCallback(zo::port::oledErrorCallback_t callback, void* user) override {
        Call call(*this, "registerErrorCallback");
        const int status = call.result(callback != nullptr ? 0 : -22);
        if (status == 0) {
            m_errorCallback = callback;
            m_errorUser = user;
        }
        return status;
    }

    // The panel's error bits change: the state takes the mask and the registered callback is
    // called, without the set's lock.
    bool raiseError(uint32_t mask) {
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

  private:
    int power(const char* operation, bool on) {
        Call call(*this, operation);
        const int status = call.result(0);
        if (status == 0) {
            state("on") = on;
        }
        return status;
    }

    zo::port::oledErrorCallback_t m_errorCallback = nullptr;
    void* m_errorUser = nullptr;
};

class SimOpc : public zo::port::Opc, public SimObject {
  public:
    explicit SimOpc(SimSet& set)
        : SimObject(set, "Opc",
                    {{"start", Kind::Int, {}},
                     {"stop", Kind::Int, {}},
                     {"getState", Kind::Int, {}},
                     {"getDimmingRate", Kind::Int, {}}},
                    {{"running", Kind::Bool, false},
                     {"mode", Kind::Int, 0},
                     {"state", Kind::Int, 0},
                     {"dimmingRate", Kind::Int, 100}}) {}

    int start(uint8_t mode) override {
        Call call(*this, "start", {mode});
        const int status = call.result(0);
        if (status == 0) {
            state("running") = true;
            state("mode") = mode;
        }
        return status;
    }
    int stop() override {
        Call call(*this, "stop");
        const int status = call.result(0);
        if (status == 0) {
            state("running") = false;
        }
        return status;
    }
    int getState() override {
        Call call(*this, "getState");
        return call.result(stateAs<int>("state"));
    }
    int getDimmingRate() override {
        Call call(*this, "getDimmingRate");
        return call.result(stateAs<int>("dimmingRate"));
    }
};

class SimUart : public zo::port::Uart, public SimObject {
  public:
    explicit SimUart(SimSet& set)
        : SimObject(set, "Uart",
                    {{"configure", Kind::Int, {}},
                     {"read", Kind::Int, {Kind::Bytes}},
                     {"write", Kind::Int, {}},
                     {"getMode", Kind::Int, {}},
                     {"setMode", Kind::Int, {}}},
                    {{"config", Kind::IntList, json::array({0, 8, 0, 0})},
                     {"rxData", Kind::Bytes, ""},
                     {"txData", Kind::Bytes, ""},
                     {"mode", Kind::Int, 0}}) {}

    int configure(int frameFormat, int baudRateIndex, int oddParity, int twoStopBits, int flag5,
                  int flag6) override {
        Call call(*this, "configure",
                  {frameFormat, baudRateIndex, oddParity, twoStopBits, flag5, flag6});
        const int status = call.result(0);
        if (status == 0) {
            state("config") = json::array({frameFormat, baudRateIndex, oddParity, twoStopBits});
        }
        return status;
    }
    // Hands out what is waiting in rxData, at most `capacity` bytes.
    int read(uint8_t* buffer, int capacity, int flag) override {
        Call call(*this, "read", {capacity, flag});
        std::vector<uint8_t> waiting = stateAs<std::vector<uint8_t>>("rxData");
        const size_t room = capacity > 0 ? static_cast<size_t>(capacity) : 0;
        const bool scripted = call.hasScriptedOutput();
        std::vector<uint8_t> bytes = call.output(std::vector<uint8_t>(
            waiting.begin(), waiting.begin() + static_cast<long>(std::min(room, waiting.size()))));
        bytes.resize(std::min(bytes.size(), room));
        if (buffer != nullptr) {
            std::memcpy(buffer, bytes.data(), bytes.size());
        }
        const int count = call.result(static_cast<int>(bytes.size()));
        if (count > 0 && !scripted) {
            waiting.erase(waiting.begin(), waiting.begin() + static_cast<long>(std::min(
                                                                 bytes.size(), waiting.size())));
            state("rxData") = toHex(waiting.data(), waiting.size());
        }
        return count;
    }
    // Appends what was written to txData.
    int write(const uint8_t* buffer, int count, int flag) override {
        const size_t size = buffer != nullptr && count > 0 ? static_cast<size_t>(count) : 0;
        Call call(*this, "write", {bytesToJson(buffer, size), count, flag});
        const int written = call.result(static_cast<int>(size));
        if (written > 0) {
            std::vector<uint8_t> sent = stateAs<std::vector<uint8_t>>("txData");
            sent.insert(sent.end(), buffer, buffer + std::min(size, static_cast<size_t>(written)));
            state("txData") = toHex(sent.data(), sent.size());
        }
        return written;
    }
    int getMode(int which) override {
        Call call(*this, "getMode", {which});
        return call.result(stateAs<int>("mode"));
    }
    // Any successful setMode completes the switch: getMode answers 1 afterwards.
    int setMode(int which, int mode) override {
        Call call(*this, "setMode", {which, mode});
        const int status = call.result(0);
        if (status == 0) {
            state("mode") = 1;
        }
        return status;
    }
};

class SimFarField : public zo::port::FarField, public SimObject {
  public:
    explicit SimFarField(SimSet& set)
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

    int reinit() override {
        Call call(*this, "reinit");
        const int status = call.result(0);
        if (status == 0) {
            state("reinits") = stateAs<int>("reinits") + 1;
        }
        return status;
    }
    int upgrade() override {
        Call call(*this, "upgrade");
        return call.result(0);
    }
    int getUpgradeProgress() override {
        Call call(*this, "getUpgradeProgress");
        return call.result(stateAs<int>("upgradeProgress"));
    }
    std::string getVersion() override {
        Call call(*this, "getVersion");
        return call.result(stateAs<std::string>("version"));
    }
    int setMute(bool mute) override { return flag("setMute", "mute", mute); }
    int setPower(bool on) override { return flag("setPower", "power", on); }
    int setMode(const char* mode) override {
        const std::string text = mode != nullptr ? mode : "";
        Call call(*this, "setMode", {textOrHex(text)});
        const int status = call.result(0);
        if (status == 0) {
            state("mode") = textOrHex(text);
        }
        return status;
    }
    int setLed(bool on) override { return flag("setLed", "led", on); }
    int getSwitchStatus() override {
        Call call(*this, "getSwitchStatus");
        return call.result(stateAs<int>("switchStatus"));
    }
    int getTriggerDuration(uint32_t* first, uint32_t* second) override {
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
    int getMicMeter(int32_t* first, int32_t* second) override {
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
    int setLedColor(int first, int second) override {
        Call call(*this, "setLedColor", {first, second});
        const int status = call.result(0);
        if (status == 0) {
            state("ledColor") = json::array({first, second});
        }
        return status;
    }

  private:
    int flag(const char* operation, const char* key, bool on) {
        Call call(*this, operation, {on});
        const int status = call.result(0);
        if (status == 0) {
            state(key) = on;
        }
        return status;
    }
};

class SimFactoryManager : public zo::port::FactoryManager, public SimObject {
  public:
    explicit SimFactoryManager(SimSet& set)
        : SimObject(set, "FactoryManager",
                    {{"setGpio", Kind::Int, {Kind::String}},
                     {"getGpio", Kind::Int, {Kind::String}},
                     {"commandIic", Kind::Int, {Kind::String}},
                     {"controlHdmi", Kind::Int, {Kind::String}},
                     {"burnSecureFuses", Kind::Bool, {}},
                     {"getSecureFuses", Kind::Bool, {Kind::FuseList}},
                     {"deleteCredentials", Kind::Bool, {}},
                     {"rewriteCredentials", Kind::Bool, {}},
                     {"readEaromBlock", Kind::Bool, {Kind::String}},
                     {"writeEaromBlock", Kind::Bool, {Kind::String}},
                     {"queryEaromSize", Kind::Bool, {Kind::String}}},
                    {{"fuses", Kind::FuseList, json::array()},
                     {"credentials", Kind::String, "installed"},
                     {"earom", Kind::Bytes, std::string(512, '0')}}) {}

    int setGpio(const std::string& command, std::string& result) override {
        return textCommand("setGpio", command, result);
    }
    int getGpio(const std::string& command, std::string& result) override {
        return textCommand("getGpio", command, result);
    }
    int commandIic(std::string command, std::string& result) override {
        return textCommand("commandIic", command, result);
    }
    int controlHdmi(const std::string& command, std::string& result) override {
        return textCommand("controlHdmi", command, result);
    }
    // Burnt items are added to the fuses, replacing items of the same name.
    bool burnSecureFuses(const std::vector<zo::port::secfuseitem>& items) override {
        Call call(*this, "burnSecureFuses", {json(items)});
        const bool done = call.result(true);
        if (done) {
            std::vector<zo::port::secfuseitem> fuses =
                state("fuses").get<std::vector<zo::port::secfuseitem>>();
            for (const zo::port::secfuseitem& item : items) {
                auto same = std::find_if(
                    fuses.begin(), fuses.end(),
                    [&item](const zo::port::secfuseitem& fuse) { return fuse.name == item.name; });
                if (same != fuses.end()) {
                    same->value = item.value;
                } else {
                    fuses.push_back(item);
                }
            }
            state("fuses") = fuses;
        }
        return done;
    }
    bool getSecureFuses(std::vector<zo::port::secfuseitem>& items, unsigned int selector) override {
        Call call(*this, "getSecureFuses", {selector});
        items = call.output(state("fuses").get<std::vector<zo::port::secfuseitem>>());
        return call.result(true);
    }
    bool deleteCredentials(int mode) override {
        return credentials("deleteCredentials", mode, "deleted");
    }
    bool rewriteCredentials(int mode) override {
        return credentials("rewriteCredentials", mode, "installed");
    }
    // EAROM data crosses as hex text.
    bool readEaromBlock(int offset, unsigned int length, std::string& data) override {
        Call call(*this, "readEaromBlock", {offset, length});
        const std::vector<uint8_t> earom = stateAs<std::vector<uint8_t>>("earom");
        const bool inside = offset >= 0 && static_cast<uint64_t>(offset) + length <= earom.size();
        data = call.output(inside ? toHex(earom.data() + offset, length) : std::string());
        return call.result(inside);
    }
    bool writeEaromBlock(int offset, const std::string& data, std::string& result) override {
        Call call(*this, "writeEaromBlock", {offset, textOrHex(data)});
        std::vector<uint8_t> earom = stateAs<std::vector<uint8_t>>("earom");
        std::vector<uint8_t> bytes;
        const bool valid = bytesFromJson(json(data), bytes) && offset >= 0 &&
                           static_cast<uint64_t>(offset) + bytes.size() <= earom.size();
        result = call.output(valid ? std::to_string(bytes.size()) : std::string());
        const bool done = call.result(valid);
        if (done && valid) {
            std::copy(bytes.begin(), bytes.end(), earom.begin() + offset);
            state("earom") = toHex(earom.data(), earom.size());
        }
        return done;
    }
    bool queryEaromSize(std::string& size) override {
        Call call(*this, "queryEaromSize");
        size = call.output(std::to_string(stateAs<std::vector<uint8_t>>("earom").size()));
        return call.result(true);
    }

  private:
    // The diagnostic commands' syntax is the platform's: the simulated manager accepts every
    // command and fills an empty result unless a script says otherwise.
    int textCommand(const char* operation, const std::string& command, std::string& result) {
        Call call(*this, operation, {textOrHex(command)});
        result = call.output(std::string());
        return call.result(1);
    }
    bool credentials(const char* operation, int mode, const char* after) {
        Call call(*this, operation, {mode});
        const bool done = call.result(true);
        if (done) {
            state("credentials") = after;
        }
        return done;
    }
};

class SimHdmiSwitch : public zo::port::HdmiSwitch, public SimObject {
  public:
    explicit SimHdmiSwitch(SimSet& set)
        : SimObject(set, "HdmiSwitch", {{"getSignalInfo", Kind::Int, {Kind::UInt}}},
                    {{"signalFlags", Kind::UInt, 3}}) {}

    int getSignalInfo(uint32_t* flags) override {
        Call call(*this, "getSignalInfo");
        const uint32_t value = call.output(stateAs<unsigned int>("signalFlags"));
        if (flags != nullptr) {
            *flags = value;
        }
        return call.result(0);
    }
};

class SimAntenna : public zo::port::Antenna, public SimObject {
  public:
    explicit SimAntenna(SimSet& set)
        : SimObject(set, "Antenna",
                    {{"getSatelliteParams", Kind::Int, {Kind::Satellite}},
                     {"setSatelliteParams", Kind::Int, {}},
                     {"getTerrestrialParams", Kind::Int, {Kind::Terrestrial}},
                     {"setTerrestrialParams", Kind::Int, {}},
                     {"setLnbPower", Kind::Int, {}}},
                    {{"satellite", Kind::Satellite, defaultSatellite()},
                     {"terrestrial", Kind::Terrestrial, json{{"supplyVoltage", 0}}},
                     {"lnbPower", Kind::Int, 0}}) {}

    int getSatelliteParams(zo::port::SatelliteAntennaParams& params) override {
        Call call(*this, "getSatelliteParams");
        const json own = state("satellite");
        const json filled = call.output(own);
        filled.get_to(params);
        return call.result(0);
    }
    int setSatelliteParams(const zo::port::SatelliteAntennaParams& params) override {
        const json record = params;
        Call call(*this, "setSatelliteParams", {record});
        const int status = call.result(0);
        if (status == 0) {
            state("satellite") = record;
        }
        return status;
    }
    int getTerrestrialParams(zo::port::TerrestrialAntennaParams& params) override {
        Call call(*this, "getTerrestrialParams");
        const json filled = call.output(state("terrestrial"));
        filled.get_to(params);
        return call.result(0);
    }
    int setTerrestrialParams(const zo::port::TerrestrialAntennaParams& params) override {
        const json record = params;
        Call call(*this, "setTerrestrialParams", {record});
        const int status = call.result(0);
        if (status == 0) {
            state("terrestrial") = record;
        }
        return status;
    }
    int setLnbPower(int value) override {
        Call call(*this, "setLnbPower", {value});
        const int status = call.result(0);
        if (status == 0) {
            state("lnbPower") = value;
        }
        return status;
    }

  private:
    // One satellite on a single LNB.
    static json defaultSatellite() {
        zo::port::SatelliteAntennaParams params;
        params.satId = {1};
        params.lnbFrequencyLow = {9750};
        params.lnbFrequencyHigh = {10600};
        params.ctrlVoltage = zo::port::ANTENNA_CTRL_VOLTAGE_ON;
        params.signal22kHz = zo::port::ANTENNA_22KHZ_BAND;
        return params;
    }
};

class SimScreenCapture : public zo::port::ScreenCapture, public SimObject {
  public:
    // The capture buffer the service provides holds this much.
    static const size_t kBufferCapacity = 0x800000;

    explicit SimScreenCapture(SimSet& set)
        : SimObject(set, "ScreenCapture",
                    {{"getSupportInfo", Kind::Int, {Kind::SupportInfo}},
                     {"isAvailable", Kind::Bool, {}},
                     {"capture", Kind::Bool, {Kind::UInt, Kind::UInt}}},
                    {{"availableTypes", Kind::UInt, 30},
                     {"width", Kind::UInt, 64},
                     {"height", Kind::UInt, 36},
                     {"pattern", Kind::String, "gradient"},
                     {"color", Kind::Bytes, "102030ff"}}) {}

    int getSupportInfo(boost::shared_ptr<zo::port::screenCaptureSupportType> info) override {
        Call call(*this, "getSupportInfo");
        zo::port::screenCaptureSupportType own{stateAs<unsigned int>("availableTypes"), 1920, 1080};
        const json filled = call.output(json(own));
        if (info) {
            filled.get_to(*info);
        }
        return call.result(0);
    }
    bool isAvailable(zo::port::screenCaptureType_enum type) override {
        Call call(*this, "isAvailable", {static_cast<unsigned int>(type)});
        return call.result((stateAs<unsigned int>("availableTypes") & type) != 0);
    }
    // Fills width x height pixels of the chosen pattern: "gradient" (blue across, green down),
    // "checker" (8-pixel squares), "solid" (the color bytes, blue-green-red-alpha) or "testcard"
    // (TestCard.h); "none" leaves the buffer as the caller handed it over.
    bool capture(zo::port::screenCaptureType_enum type,
                 boost::shared_ptr<zo::port::screenCaptureData> data) override;
};

class SimOperationHours : public zo::port::OperationHours, public SimObject {
  public:
    explicit SimOperationHours(SimSet& set)
        : SimObject(set, "OperationHours",
                    {{"getOperationTime", Kind::Int, {Kind::UInt}},
                     {"getOperationTimeText", Kind::Int, {Kind::String}},
                     {"clearOperationTime", Kind::Int, {}}},
                    {{"times", Kind::IntList, json::array({1200, 345, 67, 89, 10})},
                     {"text", Kind::String, "1200h"}}) {}

    int getOperationTime(int index, uint32_t& value) override {
        Call call(*this, "getOperationTime", {index});
        const json& times = state("times");
        if (index < 0 || static_cast<size_t>(index) >= times.size()) {
            return call.result(-1);
        }
        value = call.output(toUInt(times[static_cast<size_t>(index)]));
        return call.result(0);
    }
    int getOperationTimeText(std::string& text) override {
        Call call(*this, "getOperationTimeText");
        text = call.output(stateAs<std::string>("text"));
        return call.result(0);
    }
    int clearOperationTime(int index) override {
        Call call(*this, "clearOperationTime", {index});
        json& times = state("times");
        const bool inside = index >= 0 && static_cast<size_t>(index) < times.size();
        const int status = call.result(inside ? 0 : -1);
        if (status == 0 && inside) {
            times[static_cast<size_t>(index)] = 0;
        }
        return status;
    }
};

class SimStatusDisplay : public zo::port::StatusDisplay, public SimObject {
  public:
    explicit SimStatusDisplay(SimSet& set)
        : SimObject(set, "StatusDisplay",
                    {{"showStatus", Kind::Int, {}}, {"hideStatus", Kind::Int, {}}},
                    {{"shown", Kind::IntList, json::array()}}) {}

    int showStatus(int code) override {
        Call call(*this, "showStatus", {code});
        const int status = call.result(0);
        json& shown = state("shown");
        if (status == 0 && std::find(shown.begin(), shown.end(), json(code)) == shown.end()) {
            shown.push_back(code);
        }
        return status;
    }
    int hideStatus(int code) override {
        Call call(*this, "hideStatus", {code});
        const int status = call.result(0);
        json& shown = state("shown");
        if (status == 0) {
            shown.erase(std::remove(shown.begin(), shown.end(), json(code)), shown.end());
        }
        return status;
    }
};

class SimVideo : public zo::port::Video, public SimSetterDevice {
  public:
    explicit SimVideo(SimSet& set)
        : SimSetterDevice(set, "Video", {{"setScreenOffState", Kind::Int, {}}},
                          {{"screenOff", Kind::Int, 0}}) {}

    int setScreenOffState(int off) override {
        return store("setScreenOffState", "screenOff", {off});
    }
};

class SimHardwareInfo : public zo::port::HardwareInfo, public SimObject {
  public:
    explicit SimHardwareInfo(SimSet& set)
        : SimObject(set, "HardwareInfo", {{"getChipId", Kind::Int, {Kind::String}}},
                    {{"chipId", Kind::String, "5a4f3a00c0ffee42"}}) {}

    int getChipId(std::string& chipId) override {
        Call call(*this, "getChipId");
        chipId = call.output(stateAs<std::string>("chipId"));
        return call.result(0);
    }
};

class SimSigner : public zo::port::Signer, public SimObject {
  public:
    explicit SimSigner(SimSet& set)
        : SimObject(set, "Signer", {{"signMessage", Kind::Int, {Kind::Bytes}}},
                    {{"key", Kind::Bytes, "5eed"}}) {}

    // A keyed hash of the message stands in for the signature: the same message always gets the
    // same bytes, and different messages different ones.
    int signMessage(int key, const uint8_t* message, uint32_t messageLength, uint8_t* signature,
                    uint32_t signatureLength) override;
};

class SimCredentialsState : public zo::port::CredentialsState, public SimObject {
  public:
    explicit SimCredentialsState(SimSet& set)
        : SimObject(set, "CredentialsState", {{"getCredentialsState", Kind::Int, {}}},
                    {{"state", Kind::Int, 0}}) {}

    int getCredentialsState() override {
        Call call(*this, "getCredentialsState");
        return call.result(stateAs<int>("state"));
    }
};

class SimVodState : public zo::port::VodState, public SimObject {
  public:
    explicit SimVodState(SimSet& set)
        : SimObject(set, "VodState", {{"isVodEnabled", Kind::Int, {}}},
                    {{"enabled", Kind::Int, 1}}) {}

    int isVodEnabled() override {
        Call call(*this, "isVodEnabled");
        return call.result(stateAs<int>("enabled"));
    }
};

// The platform calls around the port objects.

class SimShell : public SimObject {
  public:
    explicit SimShell(SimSet& set)
        : SimObject(set, "zoshell", {{"zoshellExecuteCmd", Kind::Int, {}}}, {}, false) {}

    // Runs nothing: the result is 0 unless a script says otherwise.
    int execute(const char* command, size_t length, int mode, int flags) {
        const std::string text = command != nullptr ? std::string(command, length) : std::string();
        Call call(*this, "zoshellExecuteCmd", {textOrHex(text), length, mode, flags});
        return call.result(0);
    }
};

class SimConfig : public SimObject {
  public:
    explicit SimConfig(SimSet& set)
        : SimObject(set, "ConfigUtil", {{"readInt", Kind::Int, {Kind::Int}}}, {}, false) {}

    // Reads the INI file under the file-system root.
    int readInt(const std::string& file, const std::string& section, const std::string& key,
                int& value);
};

class SimThreads : public SimObject {
  public:
    explicit SimThreads(SimSet& set)
        : SimObject(set, "thread", {{"create", Kind::Int, {}}}, {}, false) {}

    // Starts the thread unless a script makes the call fail.
    int create(zo::thread::Entry entry, void* argument, int priority, const char* name);
};

class SimClock : public SimObject {
  public:
    explicit SimClock(SimSet& set)
        : SimObject(set, "clock", {{"getUtcTime", Kind::UInt, {}}},
                    {{"utcTime", Kind::Any, nullptr}}, false) {}

    // The state's utcTime when set, else the system's time.
    uint64_t getUtcTime();
};

}  // namespace sim

#endif
