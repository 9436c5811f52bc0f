#include "DbusBridge.h"

#include <climits>
#include <utility>

#include "DbusLog.h"

namespace sysctrlservice {
namespace dbus {

const char kErrorServiceUnavailable[] = "zorbel.lm.sysctrlservice1.Error.ServiceUnavailable";
const char kErrorTimeout[] = "zorbel.lm.sysctrlservice1.Error.Timeout";
const char kErrorFailed[] = "zorbel.lm.sysctrlservice1.Error.Failed";
const char kErrorStopping[] = "zorbel.lm.sysctrlservice1.Error.Stopping";

namespace {

std::unique_ptr<sdbus::IConnection> connect(const std::string& bus) {
    if (bus == "system") {
        return sdbus::createSystemBusConnection();
    }
    if (bus == "session") {
        return sdbus::createSessionBusConnection();
    }
    return sdbus::createSessionBusConnectionWithAddress(bus);
}

}  // namespace

DbusBridge::DbusBridge(Lookup lookup, Options options)
    : m_lookup(std::move(lookup)), m_options(std::move(options)) {}

DbusBridge::~DbusBridge() {
    stop();
}

int DbusBridge::start() {
    if (m_connection) {
        return 0;
    }
    try {
        m_connection = connect(m_options.bus);
        m_object = sdbus::createObject(*m_connection, kObjectPath);
        registerObject();
        m_connection->requestName(kBusName);
    } catch (const sdbus::Error& e) {
        DBUS_LOG(LOG_ERROR, "%s:%d:%s(): Cannot serve on the %s bus: %s: %s\n",
                 m_options.bus.c_str(), e.getName().c_str(), e.getMessage().c_str());
        m_object.reset();
        m_connection.reset();
        return -1;
    }
    m_client.reset(new BridgeClient(this));
    m_stopping = false;
    m_leaving = false;
    m_accepting = true;
    m_serving = true;
    for (unsigned i = 0; i < m_options.workers; ++i) {
        m_workers.emplace_back(&DbusBridge::workerLoop, this);
    }
    m_timerThread = std::thread(&DbusBridge::timerLoop, this);
    m_busThread = std::thread(&DbusBridge::serveBus, this);
    // Joining the client list now lets unsolicited reports flow before the first call.
    service();
    DBUS_LOG(LOG_TRACE, "%s:%d:%s(): Serving %s on the %s bus.\n", kBusName, m_options.bus.c_str());
    return 0;
}

void DbusBridge::stop() {
    if (!m_connection) {
        return;
    }
    m_accepting = false;
    // Queued operations still run; their results still reach their callers.
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
    }
    m_workReady.notify_all();
    m_timerWake.notify_all();
    for (std::thread& worker : m_workers) {
        worker.join();
    }
    m_workers.clear();
    m_timerThread.join();
    std::map<int32_t, Pending> left;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        left.swap(m_pending);
    }
    for (const auto& entry : left) {
        replyError(entry.second.call, kErrorStopping, "the bridge stopped before the result came");
    }
    {
        std::lock_guard<std::mutex> lock(m_serviceMutex);
        if (m_service != nullptr) {
            m_service->removeClient(m_client);
            m_service = nullptr;
        }
    }
    // The service may still hold the client: from here on it forwards nothing.
    m_client->detach();
    m_client.reset();
    m_leaving = true;
    m_connection->leaveEventLoop();
    m_busThread.join();
    try {
        m_connection->releaseName(kBusName);
    } catch (const sdbus::Error&) {
        // The bus is gone; so is the name.
    }
    m_object.reset();
    m_connection.reset();
    m_serving = false;
    DBUS_LOG(LOG_TRACE, "%s:%d:%s(): Stopped serving %s.\n", kBusName);
}

void DbusBridge::registerObject() {
    for (const MethodSpec& method : methods()) {
        std::vector<std::string> outNames = {"status"};
        std::string outSignature = "i";
        if (method.result != nullptr) {
            outNames.insert(outNames.end(), method.result->argNames.begin(),
                            method.result->argNames.end());
            outSignature += method.result->signature;
        }
        const MethodSpec* spec = &method;
        m_object->registerMethod(kInterface, method.name, method.inSignature, method.inNames,
                                 outSignature, outNames,
                                 [this, spec](sdbus::MethodCall call) { receive(*spec, call); });
    }
    for (const SignalSpec* signal : signals()) {
        std::vector<std::string> names = {"msgIds"};
        names.insert(names.end(), signal->argNames.begin(), signal->argNames.end());
        m_object->registerSignal(kInterface, signal->name, "(ii)" + signal->signature, names);
    }
    m_object->finishRegistration();
}

// On the bus thread. An sdbus::Error thrown here is the call's error reply.
void DbusBridge::receive(const MethodSpec& method, sdbus::MethodCall call) {
    if (!m_accepting) {
        throw sdbus::Error(kErrorStopping, "the bridge is stopping");
    }
    ServiceInterface* target = service();
    if (target == nullptr) {
        throw sdbus::Error(kErrorServiceUnavailable,
                           std::string("the system-control service is not registered as ") +
                               sysctrlservice::kServiceInterfaceName);
    }
    Work work = method.read(call);
    // Messages are copied and freed only outside m_mutex: sdbus-c++ takes its own lock for that,
    // which the bus thread holds while it runs this function.
    std::function<void()> job = [this, &method, call = std::move(call), work = std::move(work),
                                 target]() mutable { run(method, std::move(call), work, *target); };
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_queue.push_back(std::move(job));
    }
    m_workReady.notify_one();
}

// On a worker.
void DbusBridge::run(const MethodSpec& method, sdbus::MethodCall call, const Work& work,
                     ServiceInterface& service) {
    int32_t id = 0;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_lastCall = m_lastCall == INT32_MAX ? 1 : m_lastCall + 1;
        id = m_lastCall;
    }
    if (method.result != nullptr) {
        const auto deadline = std::chrono::steady_clock::now() + m_options.timeout;
        Pending entry{std::move(call), &method, deadline, false, 0, nullptr};
        bool wasEmpty = false;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            wasEmpty = m_pending.empty();
            m_pending.emplace(id, std::move(entry));
        }
        if (wasEmpty) {
            // Later deadlines never come before the one the timer already waits for.
            m_timerWake.notify_one();
        }
    }
    frame::MsgIds msgIds{{id, kMsgIdsTag}};
    const frame::TransportInfo transport{{id, kMsgIdsTag, 0, 0, 0, 0, 0}};
    DBUS_LOG(LOG_TRACE, "%s:%d:%s(): %s, call %d.\n", method.name.c_str(), id);
    const int status = work(service, msgIds, transport);

    if (method.result == nullptr) {
        reply(Pending{std::move(call), &method, {}, true, status, nullptr});
        return;
    }
    PendingNode done;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_pending.find(id);
        if (found == m_pending.end()) {
            return;  // answered already: timed out or stopped
        }
        found->second.haveStatus = true;
        found->second.status = status;
        if (!found->second.result && status >= 0) {
            return;  // the result comes later, from another thread, or the timer answers
        }
        done = m_pending.extract(found);
    }
    if (!done.mapped().result) {
        replyError(
            done.mapped().call, kErrorFailed,
            method.name + " returned " + std::to_string(status) + " and delivered no result");
        return;
    }
    reply(done.mapped());
}

// On whatever thread the service calls back.
void DbusBridge::onResult(const SignalSpec& signal, const frame::MsgIds& msgIds,
                          const ArgumentWriter& write) {
    if (m_serving) {
        try {
            sdbus::Signal message = m_object->createSignal(kInterface, signal.name);
            message << sdbus::Struct<int32_t, int32_t>(msgIds.word[0], msgIds.word[1]);
            write(message);
            m_object->emitSignal(message);
        } catch (const sdbus::Error& e) {
            DBUS_LOG(LOG_ERROR, "%s:%d:%s(): Cannot emit %s: %s\n", signal.name.c_str(),
                     e.getMessage().c_str());
        }
    }
    if (msgIds.word[1] != kMsgIdsTag) {
        return;
    }
    PendingNode done;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_pending.find(msgIds.word[0]);
        if (found == m_pending.end() || found->second.method->result != &signal ||
            found->second.result) {
            return;
        }
        found->second.result = write;
        if (!found->second.haveStatus) {
            return;  // the operation has not returned yet; it sends the reply
        }
        done = m_pending.extract(found);
    }
    reply(done.mapped());
}

void DbusBridge::reply(const Pending& pending) {
    try {
        sdbus::MethodReply message = pending.call.createReply();
        message << static_cast<int32_t>(pending.status);
        if (pending.result) {
            pending.result(message);
        }
        message.send();
    } catch (const sdbus::Error& e) {
        DBUS_LOG(LOG_ERROR, "%s:%d:%s(): Cannot answer %s: %s\n", pending.method->name.c_str(),
                 e.getMessage().c_str());
    }
}

void DbusBridge::replyError(const sdbus::MethodCall& call, const char* name,
                            const std::string& message) {
    try {
        call.createErrorReply(sdbus::Error(name, message)).send();
    } catch (const sdbus::Error& e) {
        DBUS_LOG(LOG_ERROR, "%s:%d:%s(): Cannot send %s: %s\n", name, e.getMessage().c_str());
    }
}

// The service is looked up until found, so that the bridge may start before it.
ServiceInterface* DbusBridge::service() {
    std::lock_guard<std::mutex> lock(m_serviceMutex);
    if (m_service != nullptr || !m_client) {
        return m_service;
    }
    ServiceInterface* found = m_lookup();
    if (found == nullptr) {
        DBUS_LOG(LOG_PORT_ERROR, "%s:%d:%s(): %s is not registered.\n",
                 sysctrlservice::kServiceInterfaceName);
        return nullptr;
    }
    const int status = found->addClient(m_client);
    if (status != 0) {
        DBUS_LOG(LOG_PORT_ERROR, "%s:%d:%s(): addClient returned %d.\n", status);
        return nullptr;
    }
    m_service = found;
    return m_service;
}

void DbusBridge::serveBus() {
    std::string reason = "the event loop ended";
    try {
        m_connection->enterEventLoop();
    } catch (const sdbus::Error& e) {
        reason = e.getName() + ": " + e.getMessage();
    }
    if (m_leaving) {
        return;
    }
    m_accepting = false;
    m_serving = false;
    DBUS_LOG(LOG_ERROR, "%s:%d:%s(): Lost the bus (%s); no longer serving %s.\n", reason.c_str(),
             kBusName);
}

void DbusBridge::workerLoop() {
    while (true) {
        std::function<void()> job;
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_workReady.wait(lock, [this] { return m_stopping || !m_queue.empty(); });
            if (m_queue.empty()) {
                return;
            }
            job = std::move(m_queue.front());
            m_queue.pop_front();
        }
        job();
    }
}

void DbusBridge::timerLoop() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_stopping) {
        if (m_pending.empty()) {
            m_timerWake.wait(lock);
            continue;
        }
        auto earliest = m_pending.begin()->second.deadline;
        for (const auto& entry : m_pending) {
            earliest = std::min(earliest, entry.second.deadline);
        }
        if (m_timerWake.wait_until(lock, earliest) != std::cv_status::timeout) {
            continue;
        }
        std::vector<PendingNode> expired;
        const auto now = std::chrono::steady_clock::now();
        for (auto entry = m_pending.begin(); entry != m_pending.end();) {
            const auto next = std::next(entry);
            if (entry->second.deadline <= now) {
                expired.push_back(m_pending.extract(entry));
            }
            entry = next;
        }
        lock.unlock();
        for (const PendingNode& node : expired) {
            replyError(node.mapped().call, kErrorTimeout,
                       node.mapped().method->name + ": no result within " +
                           std::to_string(m_options.timeout.count()) + " ms");
        }
        expired.clear();
        lock.lock();
    }
}

}  // namespace dbus
}  // namespace sysctrlservice
