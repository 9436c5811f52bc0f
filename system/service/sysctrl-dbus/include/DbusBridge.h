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

// The identifiers the bridge gives a call: word 0 counts the bridge's calls from 1, word 1 is this
// tag, so that the bridge never takes another caller's result for its own.
constexpr int32_t kMsgIdsTag = 0x44427573;  // "DBus"

// Serves the service's operations as one D-Bus object and its callbacks as signals.
//
// Threads. The bus thread runs the sdbus-c++ event loop: it reads each call's arguments, checks
// them and that the service is there, and queues the call; it never runs an operation. Worker
// threads run the operations, as the framework's RPC threads would: a few for most operations,
// and one of its own for captures, which the service can only take one at a time. Callbacks arrive
// on a worker (results delivered during the operation) or on any thread of the service (maintenance
// runs, panel and operating-time reports); the callback's thread emits the signal and, when the
// callback answers a pending call, sends that call's reply. sdbus-c++ makes sending replies and
// emitting signals safe from any thread. A timer thread answers calls whose result does not come in
// time. One mutex guards the queues and the pending calls; no operation, callback or bus send runs
// while it is held, and no message is copied or freed under it (sdbus-c++ takes its own lock for
// that, which the bus thread holds while it hands a call over).
//
// Bounds. A call waits in a queue until a worker is free; the calls waiting are bounded in number,
// in all and per caller, and in the bytes of text they hold. Past a bound a call is answered
// kErrorBusy at once. Workers take the callers' calls in turn. Each call is answered within
// `timeout` of its arrival, waiting included.
class DbusBridge : public ResultSink {
  public:
    struct Options {
        // "system", "session", or a bus address such as "unix:path=/run/my-bus".
        std::string bus = "system";
        // How long after its arrival a call gets kErrorTimeout if its result has not come.
        std::chrono::milliseconds timeout{10000};
        // Workers for every operation but captures, which have one of their own.
        unsigned workers = 4;
        // The calls that may wait for a worker: in all, of one caller (one connection to the bus),
        // and the bytes of text arguments they may hold together.
        size_t maxQueued = 1024;
        size_t maxQueuedPerCaller = 64;
        size_t maxQueuedBytes = 32 * 1024 * 1024;
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
    // Answers every queued call with kErrorStopping without running it, lets the calls that are
    // running finish (their results still reach their callers), answers what is still pending with
    // kErrorStopping, leaves the service's client list, gives up the bus name, answers the calls
    // that reached the bridge until then with kErrorStopping and leaves the bus. Safe to call more
    // than once.
    void stop();
    // True from start until stop or until the bus went away.
    bool serving() const { return m_serving; }

    void onResult(const SignalSpec& signal, const frame::MsgIds& msgIds,
                  const ArgumentWriter& write) override;

  private:
    // A call from its arrival until it is answered.
    struct Pending {
        sdbus::MethodCall call;
        const MethodSpec* method;
        std::chrono::steady_clock::time_point deadline;
        bool haveStatus = false;
        int status = 0;
        ArgumentWriter result;
    };
    typedef std::map<int32_t, Pending>::node_type PendingNode;

    // A call waiting for a worker of its lane.
    struct Job {
        int32_t id = 0;
        const MethodSpec* method = nullptr;
        ServiceInterface* service = nullptr;
        Work work;
        std::string sender;
        size_t bytes = 0;
    };
    // The calls waiting for the workers of one lane, taken in turn by caller, so that one caller's
    // many calls never keep another's waiting behind them all.
    struct Queue {
        std::map<std::string, std::deque<Job>> bySender;
        std::deque<std::string> turns;  // each caller with calls waiting, once, next first
        std::condition_variable ready;

        bool empty() const { return turns.empty(); }
        void push(Job job);
        Job pop();
    };

    void registerObject();
    void receive(const MethodSpec& method, sdbus::MethodCall call);
    // Queues a call under a new identifier; throws kErrorBusy or kErrorStopping instead.
    void enqueue(Job job, sdbus::MethodCall call);
    Queue& queueOf(Lane lane) { return lane == Lane::capture ? m_captures : m_shared; }
    // Takes the next job of the lane that is still pending; false when the bridge stops.
    bool takeJob(Lane lane, Job& job);
    void forget(const Job& job);
    void runJob(Job& job);
    // Sends the reply of a call whose status and, when it has one, result are known.
    void reply(const Pending& pending);
    void replyError(const sdbus::MethodCall& call, const char* name, const std::string& message);
    void replyErrors(std::vector<PendingNode>& calls, const char* name, const std::string& message);
    // Takes the queued calls out of their queues (and their pending entries out of m_pending).
    std::vector<PendingNode> unqueueAll();
    void leaveBus();
    ServiceInterface* service();
    void serveBus();
    void workerLoop(Lane lane);
    void timerLoop();
    // Waits for the next deadline and answers the calls past theirs; false when stopping.
    bool expireDue();

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
    std::condition_variable m_timerWake;
    bool m_stopping = false;
    Queue m_shared;
    Queue m_captures;
    size_t m_queued = 0;
    size_t m_queuedBytes = 0;
    std::map<std::string, size_t> m_queuedBy;  // by the caller's unique bus name
    std::map<int32_t, Pending> m_pending;
    int32_t m_lastCall = 0;

    std::thread m_busThread;
    std::thread m_timerThread;
    std::vector<std::thread> m_workers;
};

}  // namespace dbus
}  // namespace sysctrlservice

#endif
