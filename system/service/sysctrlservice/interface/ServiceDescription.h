#ifndef SYSCTRLSERVICE_SERVICEDESCRIPTION_H
#define SYSCTRLSERVICE_SERVICEDESCRIPTION_H

// The remote interface described once, for everything that speaks it other than the service
// itself: the D-Bus bridge, the desk host, the recording client and the generated XML, bus policy
// and docs. Each operation and callback is one row below; the argument types come from the member
// functions of ServiceInterface and ClientInterface, so a row cannot disagree with them.
//
// Adding an operation: declare it in ServiceInterface, implement it, add its row here in the
// interface's order. ServiceAdapter does not compile while ServiceInterface has an operation that
// no row names, or a row names one twice.

#include <cstddef>
#include <initializer_list>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "ClientInterface.h"
#include "ServiceInterface.h"

namespace sysctrlservice {

// Who may call an operation on a shared bus: "read" and "tune" leave the set as it is or change
// only picture tuning; "control" changes the set's state; "factory" touches provisioning data
// (fuses, credentials, EAROM, signing) or the whole set.
enum class Access { read, tune, control, factory };

// What a string argument holds: text; hexadecimal digits, two a byte; or raw bytes that a bus must
// carry as they are.
enum class Holds { text, hex, bytes };

struct ArgumentInfo {
    constexpr ArgumentInfo(const char* argName, Holds argHolds = Holds::text)
        : name(argName), holds(argHolds) {}
    const char* name;
    Holds holds;
};

// Every callback of ClientInterface, in its order: the member and its argument names after
// MsgIds and TransportInfo.
#define SYSCTRL_CLIENT_CALLBACKS(CB)                    \
    CB(reinitCredentialsResult, ("code"))               \
    CB(controlIicResult, ("result"))                    \
    CB(writeEaromResult, ("result"))                    \
    CB(readEaromResult, ({"data", Holds::hex}))         \
    CB(getEaromSizeResult, ("size"))                    \
    CB(controlOpcResult, ("result"))                    \
    CB(setGpioResult, ("result"))                       \
    CB(getGpioResult, ("result"))                       \
    CB(controlAntennaResult, ("result"))                \
    CB(executeZoshellResult, ("result"))                \
    CB(controlFarFieldResult, ("result", "resultData")) \
    CB(oledMaintResult, ("result"))                     \
    CB(setOledLeaEnableResult, ("state"))               \
    CB(setOledCpcEnableResult, ("state"))               \
    CB(getChipIDResult, ("chipId"))                     \
    CB(requestOptimeInfoResult, ("info"))               \
    CB(oledErrorResult, ("errorMask"))                  \
    CB(controlHdmiResult, ("result"))                   \
    CB(controlUartResult, ("result", "resultData"))     \
    CB(setLnbPowerResult, ("result"))                   \
    CB(oledPanelInfoResult, ("info"))                   \
    CB(getPanelVersionResult, ("version"))              \
    CB(burnFusesResult, ("code"))                       \
    CB(requestFuseInfoResult, ("items"))                \
    CB(getYTSignatureResult, ({"signature", Holds::bytes}))

// Every operation of ServiceInterface that carries MsgIds and TransportInfo, in its order: the
// member, its access class, the callback that carries its result to the caller (none when it
// delivers nothing, or only later and unsolicited), a one-line summary and its argument names.
#define SYSCTRL_SERVICE_OPERATIONS(OP)                                                            \
    OP(requestFuseInfo, factory, requestFuseInfoResult,                                           \
       "reads the fuses a selector names, and the credentials", ("selector"))                     \
    OP(burnFuses, factory, burnFusesResult, "burns secure fuses", ("items"))                      \
    OP(reinitCredentials, factory, reinitCredentialsResult,                                       \
       "deletes (mode 1) or rewrites the set's credentials", ("mode"))                            \
    OP(controlHdmi, control, controlHdmiResult, "runs an HDMI command", ("command"))              \
    OP(controlIic, control, controlIicResult, "runs an I2C command", ("command"))                 \
    OP(readEarom, read, readEaromResult, "reads EAROM data", ("offset", "length"))                \
    OP(writeEarom, factory, writeEaromResult, "writes EAROM data",                                \
       ("offset", {"data", Holds::hex}))                                                          \
    OP(getEaromSize, read, getEaromSizeResult, "reads the EAROM's size", ())                      \
    OP(controlOpc, tune, controlOpcResult, "runs an OPC command", ("command"))                    \
    OP(setGpio, control, setGpioResult, "runs a GPIO, I2C, HDMI or shell command", ("command"))   \
    OP(getGpio, control, getGpioResult, "runs a GPIO, I2C, HDMI or shell command", ("command"))   \
    OP(controlAntenna, control, controlAntennaResult, "runs an antenna command", ("command"))     \
    OP(executeZoshell, factory, executeZoshellResult, "runs a shell command", ("command"))        \
    OP(controlUart, control, controlUartResult, "runs a UART command", ("command", "data"))       \
    OP(cmdCaptureScreen, control, none, "captures the screen into a file",                        \
       ("path", "name", "type"))                                                                  \
    OP(controlPowerMode, control, none, "retired: logs only", ("mode"))                           \
    OP(setBootEnvDbtable, control, none, "sets the boot environment's db_table", ("value"))       \
    OP(controlComEnabled, control, none, "enables or disables COM", ("value"))                    \
    OP(restartSystem, factory, none, "turns the OLED panel off, then restarts the set", ())       \
    OP(setLnbPower, control, setLnbPowerResult, "sets the antenna's LNB power", ("value"))        \
    OP(setRemoteControlCode, control, none, "sets the remote-control code", ("value"))            \
    OP(setKeypadLock, control, none, "locks or unlocks the keypad", ("value"))                    \
    OP(setQuentaRCSwitch, control, none, "sets the remote-control brand", ("value"))              \
    OP(ctrlLedFlicker, control, none, "shows or hides the LED flicker pattern", ("flag"))         \
    OP(ctrluseCaseShow, control, none, "shows a front-panel use case", ("usecase"))               \
    OP(ctrluseCaseHide, control, none, "hides a front-panel use case", ("usecase"))               \
    OP(ctrlGpioState, control, none, "turns the front-panel LED on or off", ("state"))            \
    OP(ctrlLedColorState, control, none, "sets the LED colour state",                             \
       ("ledColor", "ledStatus", "flashPwm"))                                                     \
    OP(ctrlLogoLedGpioStatus, control, none, "turns the logo LED on or off", ("status"))          \
    OP(controlUartState, control, none, "sets the UART state", ("value"))                         \
    OP(controlOledMaint, control, none, "starts an OLED maintenance run, reported when it ends",  \
       ("flag"))                                                                                  \
    OP(requestOledPanelInfo, read, none, "asks for oledPanelInfoResult, sent unsolicited", ())    \
    OP(setOledLeaEnable, tune, setOledLeaEnableResult, "sets LEA, reads its state back",          \
       ("enable"))                                                                                \
    OP(setOledCpcEnable, tune, setOledCpcEnableResult, "sets CPC, reads its state back",          \
       ("enable"))                                                                                \
    OP(controlFarField, control, controlFarFieldResult, "runs a far-field microphone command",    \
       ("command", "data"))                                                                       \
    OP(registerFarFieldCallback, control, none, "does nothing", ("id", "name"))                   \
    OP(unregisterFarFieldCallback, control, none, "does nothing", ("id"))                         \
    OP(getPanelVersion, read, getPanelVersionResult, "reads the panel's version", ())             \
    OP(getChipID, read, getChipIDResult, "reads the chip's identity", ())                         \
    OP(getYTSignature, factory, getYTSignatureResult, "signs a message",                          \
       ({"message", Holds::bytes}, "reserved", "signatureLength"))                                \
    OP(setGpioStatus, control, none, "sets a GPIO", ("gpio", "value"))                            \
    OP(setOsdOpacity, tune, none, "not implemented: logs only", ("window", "opacity"))            \
    OP(getOsdOpacity, read, none, "not implemented: logs only", ("window"))                       \
    OP(setQuietBootFlag, control, none, "does nothing", ("flag"))                                 \
    OP(controlPanelPower, control, none, "turns the panel power off or on", ("off"))              \
    OP(requestOptimeInfo, read, requestOptimeInfoResult, "reads the operating-time counters", ()) \
    OP(startOledAs, tune, none, "starts the panel's AS run", ())                                  \
    OP(saveOledManualGain, tune, none, "saves the four manual gains",                             \
       ("gain0", "gain1", "gain2", "gain3"))                                                      \
    OP(setOledManualGainSetting, tune, none, "sets one manual gain setting", ("index", "value"))  \
    OP(getOledManualGainSetting, read, none, "reads one manual gain setting", ("index"))          \
    OP(setOledManualGainEnable, tune, none, "enables or disables the manual gain", ("enable"))    \
    OP(getOledManualGainEnable, read, none, "reads whether the manual gain is on", ())

namespace description {

// The parameters of a member function after MsgIds and TransportInfo.
template <typename Member>
struct Parameters;
template <typename Class, typename Result, typename... Params>
struct Parameters<Result (Class::*)(frame::MsgIds&, const frame::TransportInfo&, Params...)> {
    using Tuple = std::tuple<std::decay_t<Params>...>;
    static constexpr size_t count = sizeof...(Params);
};

// A member function as a type, for code that depends on which operation it handles.
template <auto Member>
struct MemberConstant {
    using type = decltype(Member);
    static constexpr type value = Member;
};

// Builds a class from a base and mixins that each override one member:
// Chain<Base, A, B>::type is A<B<Base>>.
template <typename Base, template <typename> class... Mixins>
struct Chain {
    using type = Base;
};
template <typename Base, template <typename> class First, template <typename> class... Rest>
struct Chain<Base, First, Rest...> {
    using type = First<typename Chain<Base, Rest...>::type>;
};

constexpr size_t count(std::initializer_list<ArgumentInfo> arguments) {
    return arguments.size();
}

}  // namespace description

#define SYSCTRL_DESCRIPTION_ARGS(...) \
    { __VA_ARGS__ }

// Indices of the callbacks and operations, in the interface's order. CallbackId::none stands for
// "no callback" in the operations' rows.
enum class CallbackId : size_t {
#define SYSCTRL_CALLBACK_ID(callback, args) callback,
    SYSCTRL_CLIENT_CALLBACKS(SYSCTRL_CALLBACK_ID)
#undef SYSCTRL_CALLBACK_ID
        count,
    none = count
};
enum class OperationId : size_t {
#define SYSCTRL_OPERATION_ID(operation, access, result, summary, args) operation,
    SYSCTRL_SERVICE_OPERATIONS(SYSCTRL_OPERATION_ID)
#undef SYSCTRL_OPERATION_ID
        count
};

// One name per argument, for every row.
#define SYSCTRL_CHECK_CALLBACK(callback, args)                                            \
    static_assert(description::Parameters<decltype(&ClientInterface::callback)>::count == \
                      description::count(SYSCTRL_DESCRIPTION_ARGS args),                  \
                  "one name per argument of " #callback);
SYSCTRL_CLIENT_CALLBACKS(SYSCTRL_CHECK_CALLBACK)
#undef SYSCTRL_CHECK_CALLBACK
#define SYSCTRL_CHECK_OPERATION(operation, access, result, summary, args)                   \
    static_assert(description::Parameters<decltype(&ServiceInterface::operation)>::count == \
                      description::count(SYSCTRL_DESCRIPTION_ARGS args),                    \
                  "one name per argument of " #operation);
SYSCTRL_SERVICE_OPERATIONS(SYSCTRL_CHECK_OPERATION)
#undef SYSCTRL_CHECK_OPERATION

struct CallbackInfo {
    CallbackId id;
    const char* name;
    std::vector<ArgumentInfo> arguments;
};

struct OperationInfo {
    OperationId id;
    const char* name;
    Access access;
    // The callback that carries the result to the caller; null when none does.
    const CallbackInfo* result;
    const char* summary;
    std::vector<ArgumentInfo> arguments;
};

// Every callback, indexed by CallbackId.
inline const std::vector<CallbackInfo>& callbackInfos() {
    static const std::vector<CallbackInfo> table = {
#define SYSCTRL_CALLBACK_INFO(callback, args) \
    CallbackInfo{CallbackId::callback, #callback, SYSCTRL_DESCRIPTION_ARGS args},
        SYSCTRL_CLIENT_CALLBACKS(SYSCTRL_CALLBACK_INFO)
#undef SYSCTRL_CALLBACK_INFO
    };
    return table;
}

inline const CallbackInfo* callbackInfo(CallbackId id) {
    return id == CallbackId::none ? nullptr : &callbackInfos()[static_cast<size_t>(id)];
}

// Every operation that carries MsgIds and TransportInfo, indexed by OperationId.
inline const std::vector<OperationInfo>& operationInfos() {
    static const std::vector<OperationInfo> table = {
#define SYSCTRL_OPERATION_INFO(operation, accessClass, result, summary, args)        \
    OperationInfo{OperationId::operation,           #operation, Access::accessClass, \
                  callbackInfo(CallbackId::result), summary,    SYSCTRL_DESCRIPTION_ARGS args},
        SYSCTRL_SERVICE_OPERATIONS(SYSCTRL_OPERATION_INFO)
#undef SYSCTRL_OPERATION_INFO
    };
    return table;
}

inline const OperationInfo& operationInfo(OperationId id) {
    return operationInfos()[static_cast<size_t>(id)];
}

// Calls visit(info, description::MemberConstant<&ServiceInterface::OPERATION>()) for every
// operation, in order: the member's type says the arguments' types.
template <typename Visitor>
void forEachOperation(Visitor&& visit) {
#define SYSCTRL_VISIT_OPERATION(operation, access, result, summary, args) \
    visit(operationInfo(OperationId::operation),                          \
          description::MemberConstant<&ServiceInterface::operation>());
    SYSCTRL_SERVICE_OPERATIONS(SYSCTRL_VISIT_OPERATION)
#undef SYSCTRL_VISIT_OPERATION
}

// Likewise for every callback, with description::MemberConstant<&ClientInterface::CALLBACK>.
template <typename Visitor>
void forEachCallback(Visitor&& visit) {
#define SYSCTRL_VISIT_CALLBACK(callback, args) \
    visit(*callbackInfo(CallbackId::callback), \
          description::MemberConstant<&ClientInterface::callback>());
    SYSCTRL_CLIENT_CALLBACKS(SYSCTRL_VISIT_CALLBACK)
#undef SYSCTRL_VISIT_CALLBACK
}

namespace description {

template <typename Interface, typename Sink>
class ClientAdapterBase : public Interface {
  public:
    explicit ClientAdapterBase(Sink& sink) : m_sink(sink) {}

  protected:
    template <typename... Values>
    void deliver(CallbackId id, frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                 const Values&... values) {
        m_sink.onCallback(*callbackInfo(id), msgIds, transport, values...);
    }

  private:
    Sink& m_sink;
};

template <typename Interface, typename Handler>
class ServiceAdapterBase : public Interface {
  public:
    explicit ServiceAdapterBase(Handler& handler) : m_handler(handler) {}
    int addClient(ClientInterfacePtr client) override { return m_handler.addClient(client); }
    int removeClient(ClientInterfacePtr client) override { return m_handler.removeClient(client); }

  protected:
    template <typename Member, typename... Values>
    int call(OperationId id, Member member, frame::MsgIds& msgIds,
             const frame::TransportInfo& transport, const Values&... values) {
        return m_handler.onCall(operationInfo(id), member, msgIds, transport, values...);
    }

  private:
    Handler& m_handler;
};

// One mixin per callback and per operation: it overrides that member with the member's own
// parameters and hands the call on.
#define SYSCTRL_CALLBACK_MIXIN(callback, args)                                                   \
    template <typename Base, typename Member>                                                    \
    struct CallbackOverride_##callback;                                                          \
    template <typename Base, typename... Params>                                                 \
    struct CallbackOverride_##callback<                                                          \
        Base, void (ClientInterface::*)(frame::MsgIds&, const frame::TransportInfo&, Params...)> \
        : Base {                                                                                 \
        using Base::Base;                                                                        \
        void callback(frame::MsgIds& msgIds, const frame::TransportInfo& transport,              \
                      Params... values) override {                                               \
            this->deliver(CallbackId::callback, msgIds, transport, values...);                   \
        }                                                                                        \
    };                                                                                           \
    template <typename Base>                                                                     \
    using CallbackMixin_##callback =                                                             \
        CallbackOverride_##callback<Base, decltype(&ClientInterface::callback)>;
SYSCTRL_CLIENT_CALLBACKS(SYSCTRL_CALLBACK_MIXIN)
#undef SYSCTRL_CALLBACK_MIXIN

#define SYSCTRL_OPERATION_MIXIN(operation, access, result, summary, args)                        \
    template <typename Base, typename Member>                                                    \
    struct OperationOverride_##operation;                                                        \
    template <typename Base, typename... Params>                                                 \
    struct OperationOverride_##operation<                                                        \
        Base, int (ServiceInterface::*)(frame::MsgIds&, const frame::TransportInfo&, Params...)> \
        : Base {                                                                                 \
        using Base::Base;                                                                        \
        int operation(frame::MsgIds& msgIds, const frame::TransportInfo& transport,              \
                      Params... values) override {                                               \
            return this->call(OperationId::operation, &ServiceInterface::operation, msgIds,      \
                              transport, values...);                                             \
        }                                                                                        \
    };                                                                                           \
    template <typename Base>                                                                     \
    using OperationMixin_##operation =                                                           \
        OperationOverride_##operation<Base, decltype(&ServiceInterface::operation)>;
SYSCTRL_SERVICE_OPERATIONS(SYSCTRL_OPERATION_MIXIN)
#undef SYSCTRL_OPERATION_MIXIN

#define SYSCTRL_CALLBACK_LINK(callback, args) , CallbackMixin_##callback
#define SYSCTRL_OPERATION_LINK(operation, access, result, summary, args) \
    , OperationMixin_##operation
// The adapters over an interface that derives from ClientInterface or ServiceInterface: every
// member the rows name is overridden; what they do not name stays pure.
template <typename Interface, typename Sink>
using ClientAdapterOver =
    typename Chain<ClientAdapterBase<Interface, Sink> SYSCTRL_CLIENT_CALLBACKS(
        SYSCTRL_CALLBACK_LINK)>::type;
template <typename Interface, typename Handler>
using ServiceAdapterOver =
    typename Chain<ServiceAdapterBase<Interface, Handler> SYSCTRL_SERVICE_OPERATIONS(
        SYSCTRL_OPERATION_LINK)>::type;
#undef SYSCTRL_CALLBACK_LINK
#undef SYSCTRL_OPERATION_LINK

struct AnyHandler;

}  // namespace description

// A ClientInterface that hands every callback to
// sink.onCallback(const CallbackInfo&, frame::MsgIds&, const frame::TransportInfo&, values...),
// with the callback's own value types, on the thread the service calls it on.
template <typename Sink>
using ClientAdapter = description::ClientAdapterOver<ClientInterface, Sink>;

// A ServiceInterface that hands every operation to
// handler.onCall(const OperationInfo&, member, frame::MsgIds&, const frame::TransportInfo&,
// values...), where member is the operation's member function, and returns what it returns;
// addClient and removeClient go to handler.addClient and handler.removeClient.
template <typename Handler>
using ServiceAdapter = description::ServiceAdapterOver<ServiceInterface, Handler>;

// Every operation and callback has a row: an adapter is abstract while one has none, and a row
// that names a member twice overrides it twice.
static_assert(!std::is_abstract_v<ServiceAdapter<description::AnyHandler>>,
              "an operation of ServiceInterface has no row in SYSCTRL_SERVICE_OPERATIONS");
static_assert(!std::is_abstract_v<ClientAdapter<description::AnyHandler>>,
              "a callback of ClientInterface has no row in SYSCTRL_CLIENT_CALLBACKS");

#undef SYSCTRL_DESCRIPTION_ARGS

}  // namespace sysctrlservice

#endif
