// The remote interface as D-Bus methods and signals, derived from its description.
#include "DbusCalls.h"

#include <algorithm>
#include <cctype>
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
const char kInterface[] = "zorbel.lm.sysctrlservice2";

const char kErrorServiceUnavailable[] = "zorbel.lm.sysctrlservice2.Error.ServiceUnavailable";
const char kErrorTimeout[] = "zorbel.lm.sysctrlservice2.Error.Timeout";
const char kErrorFailed[] = "zorbel.lm.sysctrlservice2.Error.Failed";
const char kErrorStopping[] = "zorbel.lm.sysctrlservice2.Error.Stopping";
const char kErrorBusy[] = "zorbel.lm.sysctrlservice2.Error.Busy";
const char kErrorUnsafePath[] = "zorbel.lm.sysctrlservice2.Error.UnsafePath";
const char kErrorInvalidArgs[] = "org.freedesktop.DBus.Error.InvalidArgs";

namespace {

// The operation or callback's name as the bus spells it: the first letter in upper case.
std::string busName(const char* name) {
    std::string text = name;
    if (!text.empty()) {
        text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    }
    return text;
}

std::vector<std::string> argumentNames(const std::vector<ArgumentInfo>& arguments) {
    std::vector<std::string> names;
    for (const ArgumentInfo& argument : arguments) {
        names.push_back(argument.name);
    }
    return names;
}

// The D-Bus signature of a member's arguments after MsgIds and TransportInfo.
template <typename... Values>
std::string signatureOfArguments(const std::vector<ArgumentInfo>& arguments,
                                 const std::tuple<Values...>*) {
    std::string signature;
    size_t index = 0;
    ((signature += signatureOfValue<Values>(arguments[index++].holds)), ...);
    return signature;
}

template <typename Member>
std::string argumentSignature(const std::vector<ArgumentInfo>& arguments) {
    return signatureOfArguments(
        arguments, static_cast<const typename description::Parameters<Member>::Tuple*>(nullptr));
}

template <typename... Values, size_t... Index>
std::tuple<Values...> readArguments(sdbus::MethodCall& call,
                                    const std::vector<ArgumentInfo>& arguments,
                                    std::index_sequence<Index...>) {
    // A braced list reads the arguments in their order.
    return std::tuple<Values...>{readValue<Values>(call, arguments[Index].holds)...};
}

template <typename... Values>
std::tuple<Values...> readArguments(sdbus::MethodCall& call,
                                    const std::vector<ArgumentInfo>& arguments,
                                    const std::tuple<Values...>*) {
    return readArguments<Values...>(call, arguments, std::index_sequence_for<Values...>());
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

bool isHexText(const std::string& text) {
    return text.size() % 2 == 0 && std::all_of(text.begin(), text.end(), [](char c) {
               return std::isxdigit(static_cast<unsigned char>(c)) != 0;
           });
}

// Refuses a text that should be hexadecimal and is not.
void checkForm(const std::string& value, const ArgumentInfo& argument) {
    if (argument.holds == Holds::hex && !isHexText(value)) {
        throw sdbus::Error(kErrorInvalidArgs, std::string("argument '") + argument.name +
                                                  "' is not hexadecimal text (two digits a byte)");
    }
}
template <typename Value>
void checkForm(const Value&, const ArgumentInfo&) {}

// Refuses an argument past the limits or of the wrong form; returns the bytes it holds.
template <typename Value>
size_t checkedBytes(const Value& value, const ArgumentInfo& argument) {
    const std::string name = argument.name;
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
    checkForm(value, argument);
    return bytes;
}

// Refuses arguments past the limits or of the wrong form, checked in their order; returns the
// bytes they hold.
template <typename Values, size_t... Index>
size_t checkedBytesOf(const Values& values, const std::vector<ArgumentInfo>& arguments,
                      std::index_sequence<Index...>) {
    size_t bytes = 0;
    ((bytes += checkedBytes(std::get<Index>(values), arguments[Index])), ...);
    return bytes;
}

// How the bridge runs an operation: on the shared workers, every call whose arguments are within
// the limits.
template <auto Member>
struct MethodPolicy {
    static constexpr Lane lane = Lane::shared;
    template <typename... Values>
    static void check(const sdbus::MethodCall&, const Values&...) {}
};

// Captures run on a lane of their own, and only into a folder where nobody but root and the caller
// could plant a link where the service writes, under a name that stays in the folder.
template <>
struct MethodPolicy<&ServiceInterface::cmdCaptureScreen> {
    static constexpr Lane lane = Lane::capture;
    static void check(const sdbus::MethodCall& call, const std::string& path,
                      const std::string& name, CaptureType_t) {
        const std::string unsafe = unsafeCaptureTarget(path, name, call.getCredsUid());
        if (!unsafe.empty()) {
            throw sdbus::Error(kErrorUnsafePath, unsafe);
        }
    }
};

// An operation as a method: the bus library checks the call's signature, `read` takes the
// arguments in the operation's own types and refuses those past the limits or the policy.
template <auto Member>
MethodSpec method(const OperationInfo& operation, description::MemberConstant<Member>) {
    using Policy = MethodPolicy<Member>;
    using Values = typename description::Parameters<decltype(Member)>::Tuple;
    const SignalSpec* result = operation.result == nullptr
                                   ? nullptr
                                   : &signals()[static_cast<size_t>(operation.result->id)];
    const OperationInfo* info = &operation;
    return MethodSpec{
        info,
        busName(operation.name),
        argumentNames(operation.arguments),
        argumentSignature<decltype(Member)>(operation.arguments),
        result,
        Policy::lane,
        [info](sdbus::MethodCall& call) -> ReadCall {
            const Values values =
                readArguments(call, info->arguments, static_cast<const Values*>(nullptr));
            const size_t bytes = checkedBytesOf(
                values, info->arguments, std::make_index_sequence<std::tuple_size_v<Values>>());
            std::apply([&](const auto&... value) { Policy::check(call, value...); }, values);
            Work work = [values](ServiceInterface& service, frame::MsgIds& msgIds,
                                 const frame::TransportInfo& transport) {
                return std::apply(
                    [&](const auto&... value) {
                        return (service.*Member)(msgIds, transport, value...);
                    },
                    values);
            };
            return ReadCall{std::move(work), bytes};
        }};
}

}  // namespace

const std::vector<MethodSpec>& methods() {
    static const std::vector<MethodSpec> table = [] {
        std::vector<MethodSpec> all;
        forEachOperation([&all](const OperationInfo& operation, auto member) {
            all.push_back(method(operation, member));
        });
        return all;
    }();
    return table;
}

const std::vector<SignalSpec>& signals() {
    static const std::vector<SignalSpec> table = [] {
        std::vector<SignalSpec> all;
        forEachCallback([&all](const CallbackInfo& callback, auto member) {
            all.push_back(
                SignalSpec{&callback, busName(callback.name), argumentNames(callback.arguments),
                           argumentSignature<typename decltype(member)::type>(callback.arguments)});
        });
        return all;
    }();
    return table;
}

std::vector<std::string> replyNames(const MethodSpec& method) {
    std::vector<std::string> names = {"status"};
    if (method.result != nullptr) {
        names.insert(names.end(), method.result->argNames.begin(), method.result->argNames.end());
    }
    return names;
}

std::string replySignature(const MethodSpec& method) {
    return method.result == nullptr ? "i" : "i" + method.result->signature;
}

std::vector<std::string> signalNames(const SignalSpec& signal) {
    std::vector<std::string> names = {"msgIds"};
    names.insert(names.end(), signal.argNames.begin(), signal.argNames.end());
    return names;
}

std::string signalSignature(const SignalSpec& signal) {
    return "(ii)" + signal.signature;
}

// BridgeClient

void BridgeClient::detach() {
    std::unique_lock<std::shared_mutex> lock(m_mutex);
    m_sink = nullptr;
}

}  // namespace dbus
}  // namespace sysctrlservice
