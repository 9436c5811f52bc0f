// The remote interface as D-Bus methods and signals: one line per operation and per callback.
#include "DbusCalls.h"

#include <memory>
#include <mutex>
#include <tuple>
#include <type_traits>
#include <utility>

#include "CaptureTarget.h"
#include "DbusLog.h"
#include "DbusWire.h"

namespace sysctrlservice {
namespace dbus {

const char kBusName[] = "zorbel.lm.sysctrlservice";
const char kObjectPath[] = "/zorbel/lm/sysctrlservice";
const char kInterface[] = "zorbel.lm.sysctrlservice1";

const char kErrorServiceUnavailable[] = "zorbel.lm.sysctrlservice1.Error.ServiceUnavailable";
const char kErrorTimeout[] = "zorbel.lm.sysctrlservice1.Error.Timeout";
const char kErrorFailed[] = "zorbel.lm.sysctrlservice1.Error.Failed";
const char kErrorStopping[] = "zorbel.lm.sysctrlservice1.Error.Stopping";
const char kErrorBusy[] = "zorbel.lm.sysctrlservice1.Error.Busy";
const char kErrorUnsafePath[] = "zorbel.lm.sysctrlservice1.Error.UnsafePath";
const char kErrorInvalidArgs[] = "org.freedesktop.DBus.Error.InvalidArgs";

namespace {

// A callback's signal, typed by the wire types of its arguments.
template <typename... Wire>
struct ResultSignal : SignalSpec {
    ResultSignal(const char* name, std::vector<std::string> names)
        : SignalSpec{name, std::move(names), signatureOf<Wire...>()} {}

    ArgumentWriter writer(const typename Wire::Value&... values) const {
        auto bus = std::make_shared<std::tuple<typename Wire::Bus...>>(Wire::out(values)...);
        return [bus](sdbus::Message& message) {
            std::apply([&message](const auto&... value) { (message << ... << value); }, *bus);
        };
    }
};

// Every callback, with the names of its arguments as the interface declares them.
struct Signals {
    ResultSignal<Int> reinitCredentials{"ReinitCredentialsResult", {"code"}};
    ResultSignal<Text> controlIic{"ControlIicResult", {"result"}};
    ResultSignal<Text> writeEarom{"WriteEaromResult", {"result"}};
    ResultSignal<Bytes> readEarom{"ReadEaromResult", {"data"}};
    ResultSignal<Text> getEaromSize{"GetEaromSizeResult", {"size"}};
    ResultSignal<Text> controlOpc{"ControlOpcResult", {"result"}};
    ResultSignal<Text> setGpio{"SetGpioResult", {"result"}};
    ResultSignal<Text> getGpio{"GetGpioResult", {"result"}};
    ResultSignal<Text> controlAntenna{"ControlAntennaResult", {"result"}};
    ResultSignal<Text> executeZoshell{"ExecuteZoshellResult", {"result"}};
    ResultSignal<Text, Text> controlFarField{"ControlFarFieldResult", {"result", "resultData"}};
    ResultSignal<Int> oledMaint{"OledMaintResult", {"result"}};
    ResultSignal<Byte> setOledLeaEnable{"SetOledLeaEnableResult", {"state"}};
    ResultSignal<Byte> setOledCpcEnable{"SetOledCpcEnableResult", {"state"}};
    ResultSignal<Bytes> getChipID{"GetChipIDResult", {"chipId"}};
    ResultSignal<Optime> requestOptimeInfo{"RequestOptimeInfoResult", {"info"}};
    ResultSignal<Int> oledError{"OledErrorResult", {"errorMask"}};
    ResultSignal<Text> controlHdmi{"ControlHdmiResult", {"result"}};
    ResultSignal<Text, Text> controlUart{"ControlUartResult", {"result", "resultData"}};
    ResultSignal<Int> setLnbPower{"SetLnbPowerResult", {"result"}};
    ResultSignal<IntList> oledPanelInfo{"OledPanelInfoResult", {"info"}};
    ResultSignal<Text> getPanelVersion{"GetPanelVersionResult", {"version"}};
    ResultSignal<Int> burnFuses{"BurnFusesResult", {"code"}};
    ResultSignal<FuseItems> requestFuseInfo{"RequestFuseInfoResult", {"items"}};
    ResultSignal<Bytes> getYTSignature{"GetYTSignatureResult", {"signature"}};
};

const Signals& typedSignals() {
    static const Signals instance;
    return instance;
}

template <typename... Wire, size_t... Index>
std::tuple<typename Wire::Value...> readArguments(sdbus::MethodCall& call,
                                                  std::index_sequence<Index...>) {
    std::tuple<typename Wire::Bus...> bus;
    // A left fold reads the arguments in their order.
    (void)(call >> ... >> std::get<Index>(bus));
    return std::tuple<typename Wire::Value...>(Wire::in(std::get<Index>(bus))...);
}

// The bytes of text an argument holds; numbers hold none worth counting.
size_t argumentBytes(const std::string& value) {
    return value.size();
}
size_t argumentBytes(const std::vector<fuseitemcontent1_t>& items) {
    size_t bytes = 0;
    for (const fuseitemcontent1_t& item : items) {
        bytes += item.name.size() + item.value.size();
    }
    return bytes;
}
template <typename Value>
size_t argumentBytes(const Value&) {
    return 0;
}

size_t argumentCount(const std::vector<fuseitemcontent1_t>& items) {
    return items.size();
}
template <typename Value>
size_t argumentCount(const Value&) {
    return 0;
}

// Refuses an argument past the limits; returns the bytes it holds.
template <typename Value>
size_t checkedBytes(const Value& value, const std::string& name) {
    const size_t bytes = argumentBytes(value);
    if (bytes > kMaxArgumentBytes) {
        throw sdbus::Error(kErrorInvalidArgs, "argument '" + name + "' holds " +
                                                  std::to_string(bytes) + " bytes; the limit is " +
                                                  std::to_string(kMaxArgumentBytes));
    }
    if (argumentCount(value) > kMaxFuseItems) {
        throw sdbus::Error(kErrorInvalidArgs,
                           "argument '" + name + "' holds " + std::to_string(argumentCount(value)) +
                               " items; the limit is " + std::to_string(kMaxFuseItems));
    }
    return bytes;
}

// Refuses arguments past the limits, checked in their order; returns the bytes they hold.
template <typename Values, size_t... Index>
size_t checkedBytesOf(const Values& values, const std::vector<std::string>& names,
                      std::index_sequence<Index...>) {
    size_t bytes = 0;
    ((bytes += checkedBytes(std::get<Index>(values), names[Index])), ...);
    return bytes;
}

// Admits every call whose arguments are within the limits.
struct NoCheck {
    template <typename... Values>
    void operator()(const sdbus::MethodCall&, const Values&...) const {}
};

// Binds an operation to its method: the wire types say how each argument travels and must match
// the operation's parameters one for one. `check` sees the call and its arguments before it is
// queued and throws sdbus::Error to refuse it.
template <typename... Wire, typename... Params, typename Check = NoCheck>
MethodSpec method(const char* name, std::vector<std::string> names,
                  int (ServiceInterface::*operation)(frame::MsgIds&, const frame::TransportInfo&,
                                                     Params...),
                  const SignalSpec* result = nullptr, Check check = Check(),
                  Lane lane = Lane::shared) {
    static_assert(sizeof...(Wire) == sizeof...(Params), "one wire type per parameter");
    static_assert((std::is_same_v<typename Wire::Value, std::decay_t<Params>> && ...),
                  "each wire type carries its parameter's type");
    return MethodSpec{
        name,
        names,
        signatureOf<Wire...>(),
        result,
        lane,
        [operation, names, check](sdbus::MethodCall& call) -> ReadCall {
            auto values = readArguments<Wire...>(call, std::index_sequence_for<Wire...>());
            const size_t bytes = checkedBytesOf(values, names, std::index_sequence_for<Wire...>());
            std::apply([&](const auto&... value) { check(call, value...); }, values);
            Work work = [operation, values](ServiceInterface& service, frame::MsgIds& msgIds,
                                            const frame::TransportInfo& transport) {
                return std::apply(
                    [&](const auto&... value) {
                        return (service.*operation)(msgIds, transport, value...);
                    },
                    values);
            };
            return ReadCall{std::move(work), bytes};
        }};
}

// Refuses a capture into a folder where someone other than root and the caller could plant a
// link where the service writes, or under a name that leaves the folder.
struct CaptureTargetCheck {
    void operator()(const sdbus::MethodCall& call, const std::string& path, const std::string& name,
                    CaptureType_t) const {
        const std::string unsafe = unsafeCaptureTarget(path, name, call.getCredsUid());
        if (!unsafe.empty()) {
            throw sdbus::Error(kErrorUnsafePath, unsafe);
        }
    }
};

using SI = ServiceInterface;
typedef EnumInt<CaptureType_t> CaptureType;
typedef EnumInt<PowerMode_t> PowerMode;

// Fuses, credentials and the factory manager's devices: HDMI, I2C and the EAROM.
std::vector<MethodSpec> factoryMethods(const Signals& s) {
    return {
        method<Unsigned>("RequestFuseInfo", {"selector"}, &SI::requestFuseInfo, &s.requestFuseInfo),
        method<FuseItems>("BurnFuses", {"items"}, &SI::burnFuses, &s.burnFuses),
        method<Int>("ReinitCredentials", {"mode"}, &SI::reinitCredentials, &s.reinitCredentials),
        method<Text>("ControlHdmi", {"command"}, &SI::controlHdmi, &s.controlHdmi),
        method<Text>("ControlIic", {"command"}, &SI::controlIic, &s.controlIic),
        method<Int, Unsigned>("ReadEarom", {"offset", "length"}, &SI::readEarom, &s.readEarom),
        method<Int, Bytes>("WriteEarom", {"offset", "data"}, &SI::writeEarom, &s.writeEarom),
        method<>("GetEaromSize", {}, &SI::getEaromSize, &s.getEaromSize),
    };
}

// The text-command languages: OPC, GPIO, antenna, shell and UART.
std::vector<MethodSpec> textCommandMethods(const Signals& s) {
    return {
        method<Text>("ControlOpc", {"command"}, &SI::controlOpc, &s.controlOpc),
        method<Text>("SetGpio", {"command"}, &SI::setGpio, &s.setGpio),
        method<Text>("GetGpio", {"command"}, &SI::getGpio, &s.getGpio),
        method<Text>("ControlAntenna", {"command"}, &SI::controlAntenna, &s.controlAntenna),
        method<Text>("ExecuteZoshell", {"command"}, &SI::executeZoshell, &s.executeZoshell),
        method<Text, Text>("ControlUart", {"command", "data"}, &SI::controlUart, &s.controlUart),
    };
}

// Capture, power, boot settings, the remote control and keypad, LEDs, GPIO and the UART switch.
std::vector<MethodSpec> setControlMethods(const Signals& s) {
    return {
        method<Text, Text, CaptureType>("CmdCaptureScreen", {"path", "name", "type"},
                                        &SI::cmdCaptureScreen, nullptr, CaptureTargetCheck(),
                                        Lane::capture),
        method<PowerMode>("ControlPowerMode", {"mode"}, &SI::controlPowerMode),
        method<Int>("SetBootEnvDbtable", {"value"}, &SI::setBootEnvDbtable),
        method<Int>("ControlComEnabled", {"value"}, &SI::controlComEnabled),
        method<>("RestartSystem", {}, &SI::restartSystem),
        method<Int>("SetLnbPower", {"value"}, &SI::setLnbPower, &s.setLnbPower),
        method<Int>("SetRemoteControlCode", {"value"}, &SI::setRemoteControlCode),
        method<Int>("SetKeypadLock", {"value"}, &SI::setKeypadLock),
        method<Int>("SetQuentaRCSwitch", {"value"}, &SI::setQuentaRCSwitch),
        method<Int>("CtrlLedFlicker", {"flag"}, &SI::ctrlLedFlicker),
        method<Int>("CtrluseCaseShow", {"usecase"}, &SI::ctrluseCaseShow),
        method<Int>("CtrluseCaseHide", {"usecase"}, &SI::ctrluseCaseHide),
        method<Int>("CtrlGpioState", {"state"}, &SI::ctrlGpioState),
        method<Int, Int, Int>("CtrlLedColorState", {"ledColor", "ledStatus", "flashPwm"},
                              &SI::ctrlLedColorState),
        method<Int>("CtrlLogoLedGpioStatus", {"status"}, &SI::ctrlLogoLedGpioStatus),
        method<Int>("ControlUartState", {"value"}, &SI::controlUartState),
    };
}

// The OLED panel's maintenance and tuning, the far-field unit, identity and signing, display
// settings and operating time.
std::vector<MethodSpec> panelAndIdentityMethods(const Signals& s) {
    return {
        // The run's result comes later, as the unsolicited OledMaintResult signal.
        method<Unsigned>("ControlOledMaint", {"flag"}, &SI::controlOledMaint),
        // The panel information comes as the unsolicited OledPanelInfoResult signal.
        method<>("RequestOledPanelInfo", {}, &SI::requestOledPanelInfo),
        method<Byte>("SetOledLeaEnable", {"enable"}, &SI::setOledLeaEnable, &s.setOledLeaEnable),
        method<Byte>("SetOledCpcEnable", {"enable"}, &SI::setOledCpcEnable, &s.setOledCpcEnable),
        method<Text, Text>("ControlFarField", {"command", "data"}, &SI::controlFarField,
                           &s.controlFarField),
        method<Int, Text>("RegisterFarFieldCallback", {"id", "name"},
                          &SI::registerFarFieldCallback),
        method<Int>("UnregisterFarFieldCallback", {"id"}, &SI::unregisterFarFieldCallback),
        method<>("GetPanelVersion", {}, &SI::getPanelVersion, &s.getPanelVersion),
        method<>("GetChipID", {}, &SI::getChipID, &s.getChipID),
        method<Bytes, Unsigned, Unsigned>("GetYTSignature",
                                          {"message", "reserved", "signatureLength"},
                                          &SI::getYTSignature, &s.getYTSignature),
        method<Int, Int>("SetGpioStatus", {"gpio", "value"}, &SI::setGpioStatus),
        method<Int, Int>("SetOsdOpacity", {"window", "opacity"}, &SI::setOsdOpacity),
        method<Int>("GetOsdOpacity", {"window"}, &SI::getOsdOpacity),
        method<Int>("SetQuietBootFlag", {"flag"}, &SI::setQuietBootFlag),
        method<Int>("ControlPanelPower", {"off"}, &SI::controlPanelPower),
        method<>("RequestOptimeInfo", {}, &SI::requestOptimeInfo, &s.requestOptimeInfo),
        method<>("StartOledAs", {}, &SI::startOledAs),
        method<Unsigned, Unsigned, Unsigned, Unsigned>(
            "SaveOledManualGain", {"gain0", "gain1", "gain2", "gain3"}, &SI::saveOledManualGain),
        method<Unsigned, Unsigned>("SetOledManualGainSetting", {"index", "value"},
                                   &SI::setOledManualGainSetting),
        method<Unsigned>("GetOledManualGainSetting", {"index"}, &SI::getOledManualGainSetting),
        method<Int>("SetOledManualGainEnable", {"enable"}, &SI::setOledManualGainEnable),
        method<>("GetOledManualGainEnable", {}, &SI::getOledManualGainEnable),
    };
}

}  // namespace

// In the interface's order, which is the order introspection lists them in.
const std::vector<MethodSpec>& methods() {
    static const std::vector<MethodSpec> table = [] {
        const Signals& s = typedSignals();
        std::vector<MethodSpec> all;
        for (const std::vector<MethodSpec>& group :
             {factoryMethods(s), textCommandMethods(s), setControlMethods(s),
              panelAndIdentityMethods(s)}) {
            all.insert(all.end(), group.begin(), group.end());
        }
        return all;
    }();
    return table;
}

const std::vector<const SignalSpec*>& signals() {
    const Signals& s = typedSignals();
    static const std::vector<const SignalSpec*> list = {
        &s.reinitCredentials, &s.controlIic,       &s.writeEarom,      &s.readEarom,
        &s.getEaromSize,      &s.controlOpc,       &s.setGpio,         &s.getGpio,
        &s.controlAntenna,    &s.executeZoshell,   &s.controlFarField, &s.oledMaint,
        &s.setOledLeaEnable,  &s.setOledCpcEnable, &s.getChipID,       &s.requestOptimeInfo,
        &s.oledError,         &s.controlHdmi,      &s.controlUart,     &s.setLnbPower,
        &s.oledPanelInfo,     &s.getPanelVersion,  &s.burnFuses,       &s.requestFuseInfo,
        &s.getYTSignature,
    };
    return list;
}

// BridgeClient

void BridgeClient::detach() {
    std::unique_lock<std::shared_mutex> lock(m_mutex);
    m_sink = nullptr;
}

// The service calls this on any of its threads: nothing may escape into it.
template <typename Signal, typename... Values>
void BridgeClient::forward(const Signal& signal, const frame::MsgIds& msgIds,
                           const Values&... values) try {
    std::shared_lock<std::shared_mutex> lock(m_mutex);
    if (m_sink != nullptr) {
        m_sink->onResult(signal, msgIds, signal.writer(values...));
    }
}
DBUS_ENTRY_GUARD()

void BridgeClient::reinitCredentialsResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                           int code) {
    forward(typedSignals().reinitCredentials, msgIds, code);
}
void BridgeClient::controlIicResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                    const std::string& result) {
    forward(typedSignals().controlIic, msgIds, result);
}
void BridgeClient::writeEaromResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                    const std::string& result) {
    forward(typedSignals().writeEarom, msgIds, result);
}
void BridgeClient::readEaromResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                   const std::string& data) {
    forward(typedSignals().readEarom, msgIds, data);
}
void BridgeClient::getEaromSizeResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                      const std::string& size) {
    forward(typedSignals().getEaromSize, msgIds, size);
}
void BridgeClient::controlOpcResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                    const std::string& result) {
    forward(typedSignals().controlOpc, msgIds, result);
}
void BridgeClient::setGpioResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                 const std::string& result) {
    forward(typedSignals().setGpio, msgIds, result);
}
void BridgeClient::getGpioResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                 const std::string& result) {
    forward(typedSignals().getGpio, msgIds, result);
}
void BridgeClient::controlAntennaResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                        const std::string& result) {
    forward(typedSignals().controlAntenna, msgIds, result);
}
void BridgeClient::executeZoshellResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                        const std::string& result) {
    forward(typedSignals().executeZoshell, msgIds, result);
}
void BridgeClient::controlFarFieldResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                         const std::string& result, const std::string& resultData) {
    forward(typedSignals().controlFarField, msgIds, result, resultData);
}
void BridgeClient::oledMaintResult(frame::MsgIds& msgIds, const frame::TransportInfo&, int result) {
    forward(typedSignals().oledMaint, msgIds, result);
}
void BridgeClient::setOledLeaEnableResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                          unsigned char state) {
    forward(typedSignals().setOledLeaEnable, msgIds, state);
}
void BridgeClient::setOledCpcEnableResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                          unsigned char state) {
    forward(typedSignals().setOledCpcEnable, msgIds, state);
}
void BridgeClient::getChipIDResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                   const std::string& chipId) {
    forward(typedSignals().getChipID, msgIds, chipId);
}
void BridgeClient::requestOptimeInfoResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                           const OptimeInfo& info) {
    forward(typedSignals().requestOptimeInfo, msgIds, info);
}
void BridgeClient::oledErrorResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                   int errorMask) {
    forward(typedSignals().oledError, msgIds, errorMask);
}
void BridgeClient::controlHdmiResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                     const std::string& result) {
    forward(typedSignals().controlHdmi, msgIds, result);
}
void BridgeClient::controlUartResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                     const std::string& result, const std::string& resultData) {
    forward(typedSignals().controlUart, msgIds, result, resultData);
}
void BridgeClient::setLnbPowerResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                     int result) {
    forward(typedSignals().setLnbPower, msgIds, result);
}
void BridgeClient::oledPanelInfoResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                       const std::vector<int>& info) {
    forward(typedSignals().oledPanelInfo, msgIds, info);
}
void BridgeClient::getPanelVersionResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                         const std::string& version) {
    forward(typedSignals().getPanelVersion, msgIds, version);
}
void BridgeClient::burnFusesResult(frame::MsgIds& msgIds, const frame::TransportInfo&, int code) {
    forward(typedSignals().burnFuses, msgIds, code);
}
void BridgeClient::requestFuseInfoResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                         const std::vector<fuseitemcontent1_t>& items) {
    forward(typedSignals().requestFuseInfo, msgIds, items);
}
void BridgeClient::getYTSignatureResult(frame::MsgIds& msgIds, const frame::TransportInfo&,
                                        const std::string& signature) {
    forward(typedSignals().getYTSignature, msgIds, signature);
}

}  // namespace dbus
}  // namespace sysctrlservice
