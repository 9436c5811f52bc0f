#ifndef SYSCTRL_DBUS_DBUSBRIDGE_H
#define SYSCTRL_DBUS_DBUSBRIDGE_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>
#include <boost/shared_ptr.hpp>

#include "DbusCalls.h"
#include "ServiceInterface.h"

namespace sysctrlservice {
namespace dbus {

// Error names of the bridge's own failures; the bus library answers wrong argument types with
// org.freedesktop.DBus.Error.InvalidArgs before the bridge sees the call.
extern const char kErrorServiceUnavailable[];  // the service is not in the framework's registry
extern const char kErrorTimeout[];             // the result did not arrive in time
extern const char kErrorFailed[];              // a negative status and no result
extern const char kErrorStopping[];            // the bridge is stopping

// The identifiers the bridge gives a call: word 0 counts the bridge's calls from 1, word 1 is this
// tag, so that the bridge never takes another caller's result for its own.
constexpr int32_t kMsgIdsTag = 0x44427573;  // "DBus"

// Serves the service's operations as one D-Bus object and its callbacks as signals.
//
// Threads. The bus thread runs the sdbus-c++ event loop: it reads each call's arguments, checks
// that the service is there and queues the call; it never runs an operation. A few worker threads
// run the operations, as the framework's RPC threads would. Callbacks arrive on a worker (results
// delivered during the operation) or on any thread of the service (maintenance runs, panel and
// operating-time reports); the callback's thread emits the signal and, when the callback answers a
// pending call, sends that call's reply. sdbus-c++ makes sending replies and emitting signals safe
// from any thread. A timer thread answers calls whose result does not come in time. One mutex
// guards the queue and the pending calls; no operation, callback or bus send runs while it is held,
// and no message is copied or freed under it (sdbus-c++ takes its own lock for that, which the bus
// thread holds while it hands a call over).
class DbusBridge : public ResultSink {
  public:
    struct Options {
        // "system", "session", or a bus address such as "unix:path=/run/my-bus".
        std::string bus = "system";
        // How long a call waits for its result before it gets kErrorTimeout.
        std::chrono::milliseconds timeout{10000};
        unsigned workers = 4;
    };
    // Finds the service in the framework's registry; null when it is not registered.
    typedef std::function<ServiceInterface*()> Lookup;
    DbusBridge(Lookup lookup, Options options);
    ~DbusBridge() override;

    DbusBridge(const DbusBridge&) = delete;
    DbusBridge& operator=(const DbusBridge&) = delete;

    // Connects, registers the object, takes the bus name and starts the threads. 0, or -1 when the
    // bus or the name cannot be had (logged).
    int start();
    // Answers what is still pending with kErrorStopping, leaves the service's client list, stops
    // the threads and leaves the bus. Safe to call more than once.
    void stop();
    // True from start until stop or until the bus went away.
    bool serving() const { return m_serving; }

    void onResult(const SignalSpec& signal, const frame::MsgIds& msgIds,
                  const ArgumentWriter& write) override;

  private:
    struct Pending {
        sdbus::MethodCall call;
        const MethodSpec* method;
        std::chrono::steady_clock::time_point deadline;
        bool haveStatus = false;
        int status = 0;
        ArgumentWriter result;
    };

    void registerObject();
    void receive(const MethodSpec& method, sdbus::MethodCall call);
    typedef std::map<int32_t, Pending>::node_type PendingNode;

    void run(const MethodSpec& method, sdbus::MethodCall call, const Work& work,
             ServiceInterface& service);
    // Sends the reply of a call whose status and, when it has one, result are known.
    void reply(const Pending& pending);
    void replyError(const sdbus::MethodCall& call, const char* name, const std::string& message);
    ServiceInterface* service();
    void serveBus();
    void workerLoop();
    void timerLoop();

    Lookup m_lookup;
    Options m_options;

    std::unique_ptr<sdbus::IConnection> m_connection;
    std::unique_ptr<sdbus::IObject> m_object;
    std::atomic<bool> m_serving{false};
    std::atomic<bool> m_accepting{false};
    std::atomic<bool> m_leaving{false};

    std::mutex m_serviceMutex;
    ServiceInterface* m_service = nullptr;
    boost::shared_ptr<BridgeClient> m_client;

    std::mutex m_mutex;
    std::condition_variable m_workReady;
    std::condition_variable m_timerWake;
    bool m_stopping = false;
    std::deque<std::function<void()>> m_queue;
    std::map<int32_t, Pending> m_pending;
    int32_t m_lastCall = 0;

    std::thread m_busThread;
    std::thread m_timerThread;
    std::vector<std::thread> m_workers;
};

}  // namespace dbus
}  // namespace sysctrlservice

#endif
