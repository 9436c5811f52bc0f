// The interface operations as the desk host calls them, in the interface's order.
#include "Operations.h"

#include <tuple>
#include <type_traits>
#include <utility>

namespace desk {
namespace {

using sysctrlservice::ServiceInterface;

// One reader per argument type of the interface.
template <typename T>
struct Reader;

template <>
struct Reader<int> {
    static int read(Arguments& args) { return args.integer("integer"); }
};
template <>
struct Reader<unsigned int> {
    static unsigned int read(Arguments& args) { return args.unsignedInteger("unsigned integer"); }
};
template <>
struct Reader<unsigned char> {
    static unsigned char read(Arguments& args) { return args.byte("byte"); }
};
template <>
struct Reader<std::string> {
    static std::string read(Arguments& args) { return args.text("text"); }
};
template <>
struct Reader<sysctrlservice::CaptureType_t> {
    static sysctrlservice::CaptureType_t read(Arguments& args) {
        return static_cast<sysctrlservice::CaptureType_t>(args.integer("capture type"));
    }
};
template <>
struct Reader<sysctrlservice::PowerMode_t> {
    static sysctrlservice::PowerMode_t read(Arguments& args) {
        return static_cast<sysctrlservice::PowerMode_t>(args.integer("power mode"));
    }
};
// NAME=VALUE words up to the end of the line, split at the first "=".
template <>
struct Reader<std::vector<sysctrlservice::fuseitemcontent1_t>> {
    static std::vector<sysctrlservice::fuseitemcontent1_t> read(Arguments& args) {
        std::vector<sysctrlservice::fuseitemcontent1_t> items;
        for (const Word& word : args.rest()) {
            const size_t equals = word.text.find('=');
            items.push_back({word.text.substr(0, equals), equals == std::string::npos
                                                              ? std::string()
                                                              : word.text.substr(equals + 1)});
        }
        return items;
    }
};

template <typename... Params>
Operation bind(const char* name, const char* usage,
               int (ServiceInterface::*member)(frame::MsgIds&, const frame::TransportInfo&,
                                               Params...)) {
    return Operation{
        name, usage,
        [member](ServiceInterface& service, frame::MsgIds& msgIds,
                 const frame::TransportInfo& transport, Arguments& args, int& status) {
            // A braced list reads the words from left to right.
            std::tuple<std::decay_t<Params>...> values{Reader<std::decay_t<Params>>::read(args)...};
            if (!args.finish()) {
                return false;
            }
            status = std::apply(
                [&](auto&... value) { return (service.*member)(msgIds, transport, value...); },
                values);
            return true;
        }};
}

}  // namespace

const std::vector<Operation>& operations() {
    static const std::vector<Operation> table = {
        bind("requestFuseInfo", "SELECTOR", &ServiceInterface::requestFuseInfo),
        bind("burnFuses", "NAME=VALUE...", &ServiceInterface::burnFuses),
        bind("reinitCredentials", "MODE", &ServiceInterface::reinitCredentials),
        bind("controlHdmi", "COMMAND", &ServiceInterface::controlHdmi),
        bind("controlIic", "COMMAND", &ServiceInterface::controlIic),
        bind("readEarom", "OFFSET LENGTH", &ServiceInterface::readEarom),
        bind("writeEarom", "OFFSET DATA", &ServiceInterface::writeEarom),
        bind("getEaromSize", "", &ServiceInterface::getEaromSize),
        bind("controlOpc", "COMMAND", &ServiceInterface::controlOpc),
        bind("setGpio", "COMMAND", &ServiceInterface::setGpio),
        bind("getGpio", "COMMAND", &ServiceInterface::getGpio),
        bind("controlAntenna", "COMMAND", &ServiceInterface::controlAntenna),
        bind("executeZoshell", "COMMAND", &ServiceInterface::executeZoshell),
        bind("controlUart", "COMMAND DATA", &ServiceInterface::controlUart),
        bind("cmdCaptureScreen", "PATH NAME TYPE", &ServiceInterface::cmdCaptureScreen),
        bind("controlPowerMode", "MODE", &ServiceInterface::controlPowerMode),
        bind("setBootEnvDbtable", "VALUE", &ServiceInterface::setBootEnvDbtable),
        bind("controlComEnabled", "VALUE", &ServiceInterface::controlComEnabled),
        bind("restartSystem", "", &ServiceInterface::restartSystem),
        bind("setLnbPower", "VALUE", &ServiceInterface::setLnbPower),
        bind("setRemoteControlCode", "VALUE", &ServiceInterface::setRemoteControlCode),
        bind("setKeypadLock", "VALUE", &ServiceInterface::setKeypadLock),
        bind("setQuentaRCSwitch", "VALUE", &ServiceInterface::setQuentaRCSwitch),
        bind("ctrlLedFlicker", "FLAG", &ServiceInterface::ctrlLedFlicker),
        bind("ctrluseCaseShow", "USECASE", &ServiceInterface::ctrluseCaseShow),
        bind("ctrluseCaseHide", "USECASE", &ServiceInterface::ctrluseCaseHide),
        bind("ctrlGpioState", "STATE", &ServiceInterface::ctrlGpioState),
        bind("ctrlLedColorState", "COLOR STATUS FLASHPWM", &ServiceInterface::ctrlLedColorState),
        bind("ctrlLogoLedGpioStatus", "STATUS", &ServiceInterface::ctrlLogoLedGpioStatus),
        bind("controlUartState", "VALUE", &ServiceInterface::controlUartState),
        bind("controlOledMaint", "FLAGS", &ServiceInterface::controlOledMaint),
        bind("requestOledPanelInfo", "", &ServiceInterface::requestOledPanelInfo),
        bind("setOledLeaEnable", "ENABLE", &ServiceInterface::setOledLeaEnable),
        bind("setOledCpcEnable", "ENABLE", &ServiceInterface::setOledCpcEnable),
        bind("controlFarField", "COMMAND DATA", &ServiceInterface::controlFarField),
        bind("registerFarFieldCallback", "ID NAME", &ServiceInterface::registerFarFieldCallback),
        bind("unregisterFarFieldCallback", "ID", &ServiceInterface::unregisterFarFieldCallback),
        bind("getPanelVersion", "", &ServiceInterface::getPanelVersion),
        bind("getChipID", "", &ServiceInterface::getChipID),
        bind("getYTSignature", "MESSAGE RESERVED LENGTH", &ServiceInterface::getYTSignature),
        bind("setGpioStatus", "GPIO VALUE", &ServiceInterface::setGpioStatus),
        bind("setOsdOpacity", "WINDOW OPACITY", &ServiceInterface::setOsdOpacity),
        bind("getOsdOpacity", "WINDOW", &ServiceInterface::getOsdOpacity),
        bind("setQuietBootFlag", "FLAG", &ServiceInterface::setQuietBootFlag),
        bind("controlPanelPower", "OFF", &ServiceInterface::controlPanelPower),
        bind("requestOptimeInfo", "", &ServiceInterface::requestOptimeInfo),
        bind("startOledAs", "", &ServiceInterface::startOledAs),
        bind("saveOledManualGain", "GAIN0 GAIN1 GAIN2 GAIN3",
             &ServiceInterface::saveOledManualGain),
        bind("setOledManualGainSetting", "INDEX VALUE",
             &ServiceInterface::setOledManualGainSetting),
        bind("getOledManualGainSetting", "INDEX", &ServiceInterface::getOledManualGainSetting),
        bind("setOledManualGainEnable", "ENABLE", &ServiceInterface::setOledManualGainEnable),
        bind("getOledManualGainEnable", "", &ServiceInterface::getOledManualGainEnable),
    };
    return table;
}

const Operation* findOperation(const std::string& name) {
    for (const Operation& operation : operations()) {
        if (name == operation.name) {
            return &operation;
        }
    }
    return nullptr;
}

}  // namespace desk
