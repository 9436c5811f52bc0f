#ifndef SYSCTRL_DBUS_DBUSCALLS_H
#define SYSCTRL_DBUS_DBUSCALLS_H

#include <cstddef>
#include <functional>
#include <memory>
#include <shared_mutex>
#include <string>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>

#include "ClientInterface.h"
#include "DbusLog.h"
#include "DbusWire.h"
#include "ServiceDescription.h"
#include "ServiceInterface.h"
#include "frame/MsgIds.h"
#include "frame/TransportInfo.h"

namespace sysctrlservice {
namespace dbus {

// The names scripts rely on.
extern const char kBusName[];     // zorbel.lm.sysctrlservice
extern const char kObjectPath[];  // /zorbel/lm/sysctrlservice
extern const char kInterface[];   // zorbel.lm.sysctrlservice2

// Error names of the bridge's own answers; the bus library answers wrong argument types with
// org.freedesktop.DBus.Error.InvalidArgs before the bridge sees the call.
extern const char kErrorServiceUnavailable[];  // the service is not in the framework's registry
extern const char kErrorTimeout[];             // the result did not arrive in time
extern const char kErrorFailed[];              // a negative status and no result
extern const char kErrorStopping[];            // the bridge is stopping
extern const char kErrorBusy[];                // too many calls queued, in all or of this caller
extern const char kErrorUnsafePath[];          // a capture folder others could plant a link in
extern const char kErrorInvalidArgs[];         // an argument past a size limit, or not hex text

// One callback of ClientInterface as a signal: its name, the names of its arguments after the
// identifiers and their D-Bus signature.
struct SignalSpec {
    const CallbackInfo* callback;
    std::string name;
    std::vector<std::string> argNames;
    std::string signature;
};

// Writes a callback's arguments into a message.
typedef std::function<void(sdbus::Message& message)> ArgumentWriter;

// Calls one operation with arguments already read from the bus; returns its status.
typedef std::function<int(ServiceInterface& service, frame::MsgIds& msgIds,
                          const frame::TransportInfo& transport)>
    Work;

// What a call may carry, checked when it is read, before it is queued; past a limit the call is
// answered org.freedesktop.DBus.Error.InvalidArgs with a message that names the limit. Each text
// or byte-array argument, and a list of fuse items (names and values together), may hold at most
// kMaxArgumentBytes; a list of fuse items at most kMaxFuseItems items. A text that holds
// hexadecimal digits (EAROM data) must hold only those, two a byte.
constexpr size_t kMaxArgumentBytes = 256 * 1024;
constexpr size_t kMaxFuseItems = 4096;

// A call's arguments, read and checked: the work that runs the operation with them, and the bytes
// of text they hold (what a queued call costs).
struct ReadCall {
    Work work;
    size_t bytes = 0;
};

// The workers that run an operation. Captures run one at a time on a worker of their own: the
// service writes each picture through a fixed temporary name in the target folder.
enum class Lane { shared, capture };

// One operation as a method: its name, its input arguments, the signal of its result (null when it
// delivers none to the caller), its lane and the reader that turns a call's arguments into the
// work. The bus library has checked the call's signature against `inSignature` before `read`
// runs; `read` throws sdbus::Error for arguments it refuses, which becomes the call's error reply.
struct MethodSpec {
    const OperationInfo* operation;
    std::string name;
    std::vector<std::string> inNames;
    std::string inSignature;
    const SignalSpec* result;
    Lane lane;
    std::function<ReadCall(sdbus::MethodCall& call)> read;
};

// What a method replies: the status ("i"), then the arguments of its result's signal.
std::vector<std::string> replyNames(const MethodSpec& method);
std::string replySignature(const MethodSpec& method);
// What a signal carries: the call's identifiers ("(ii)"), then the callback's arguments.
std::vector<std::string> signalNames(const SignalSpec& signal);
std::string signalSignature(const SignalSpec& signal);

// Every operation that carries MsgIds and TransportInfo, in the interface's order: the operation
// with the first letter in upper case.
const std::vector<MethodSpec>& methods();
// Every callback, in the interface's order, likewise named.
const std::vector<SignalSpec>& signals();

// Receives every callback of the bridge's client, on whatever thread the service calls it.
class ResultSink {
  public:
    virtual ~ResultSink() = default;
    virtual void onResult(const SignalSpec& signal, const frame::MsgIds& msgIds,
                          const ArgumentWriter& write) = 0;
};

// The bridge's client object: forwards each callback to the sink until detached. Detaching waits
// for deliveries in progress, so that the sink may go away afterwards even though the service
// still holds the client.
class BridgeClient : public ClientAdapter<BridgeClient> {
  public:
    explicit BridgeClient(ResultSink* sink) : ClientAdapter<BridgeClient>(*this), m_sink(sink) {}
    void detach();

    // Every callback; the service calls it on any of its threads.
    template <typename... Values>
    void onCallback(const CallbackInfo& callback, const frame::MsgIds& msgIds,
                    const frame::TransportInfo& transport, const Values&... values);

  private:
    std::shared_mutex m_mutex;
    ResultSink* m_sink;
};

// Writes a callback's values as its signal's arguments, each in its wire type; keeps copies, for
// the message is written after the callback has returned.
template <typename... Values>
ArgumentWriter argumentWriter(const CallbackInfo& callback, const Values&... values) {
    auto kept = std::make_shared<const std::tuple<Values...>>(values...);
    const CallbackInfo* info = &callback;
    return [kept, info](sdbus::Message& message) {
        std::apply(
            [&](const auto&... value) {
                size_t index = 0;
                (writeValue(message, value, info->arguments[index++].holds), ...);
            },
            *kept);
    };
}

// Nothing may escape into the service's thread.
template <typename... Values>
void BridgeClient::onCallback(const CallbackInfo& callback, const frame::MsgIds& msgIds,
                              const frame::TransportInfo&, const Values&... values) try {
    std::shared_lock<std::shared_mutex> lock(m_mutex);
    if (m_sink != nullptr) {
        m_sink->onResult(signals()[static_cast<size_t>(callback.id)], msgIds,
                         argumentWriter(callback, values...));
    }
}
DBUS_ENTRY_GUARD()

}  // namespace dbus
}  // namespace sysctrlservice

#endif
