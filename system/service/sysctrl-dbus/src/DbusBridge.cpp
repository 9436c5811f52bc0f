#include "DbusBridge.h"

#include <climits>
#include <utility>

#include "DbusLog.h"

namespace sysctrlservice {
namespace dbus {

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
        m_workers.emplace_back(&DbusBridge::workerLoop, this, Lane::shared);
    }
    m_workers.emplace_back(&DbusBridge::workerLoop, this, Lane::capture);
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
    std::vector<PendingNode> queued = unqueueAll();
    m_shared.ready.notify_all();
    m_captures.ready.notify_all();
    m_timerWake.notify_all();
    replyErrors(queued, kErrorStopping, "the bridge stopped before the call ran");
    // The calls that are running finish; their results still reach their callers.
    for (std::thread& worker : m_workers) {
        worker.join();
    }
    m_workers.clear();
    m_timerThread.join();
    std::vector<PendingNode> left;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        while (!m_pending.empty()) {
            left.push_back(m_pending.extract(m_pending.begin()));
        }
    }
    replyErrors(left, kErrorStopping, "the bridge stopped before the result came");
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
    leaveBus();
    m_serving = false;
    DBUS_LOG(LOG_TRACE, "%s:%d:%s(): Stopped serving %s.\n", kBusName);
}

std::vector<DbusBridge::PendingNode> DbusBridge::unqueueAll() {
    std::vector<PendingNode> queued;
    std::lock_guard<std::mutex> lock(m_mutex);
    m_stopping = true;
    for (Queue* queue : {&m_shared, &m_captures}) {
        for (const auto& calls : queue->bySender) {
            for (const Job& job : calls.second) {
                if (m_pending.count(job.id) != 0) {
                    queued.push_back(m_pending.extract(job.id));
                }
            }
        }
        queue->bySender.clear();
        queue->turns.clear();
    }
    m_queued = 0;
    m_queuedBytes = 0;
    m_queuedBy.clear();
    return queued;
}

// Gives up the name first, so that callers who address it get an answer from the bus from now on;
// then answers what reached the bridge before that, so that no caller is left without a reply.
void DbusBridge::leaveBus() {
    m_leaving = true;
    m_connection->leaveEventLoop();
    m_busThread.join();
    try {
        m_connection->releaseName(kBusName);
        // Bounded: a caller that addresses the bridge's unique name could keep it busy.
        for (int processed = 0; processed < 100000 && m_connection->processPendingRequest();
             ++processed) {
        }
    } catch (const sdbus::Error&) {
        // The bus is gone; so is the name, and nobody waits for a reply from here.
    }
    m_object.reset();
    m_connection.reset();
}

void DbusBridge::registerObject() {
    for (const MethodSpec& method : methods()) {
        const MethodSpec* spec = &method;
        m_object->registerMethod(kInterface, method.name, method.inSignature, method.inNames,
                                 replySignature(method), replyNames(method),
                                 [this, spec](sdbus::MethodCall call) { receive(*spec, call); });
    }
    for (const SignalSpec& signal : signals()) {
        m_object->registerSignal(kInterface, signal.name, signalSignature(signal),
                                 signalNames(signal));
    }
    m_object->finishRegistration();
}

// On the bus thread, from the bus library's C frames: an sdbus::Error thrown here is the call's
// error reply, and nothing else may leave.
void DbusBridge::receive(const MethodSpec& method, sdbus::MethodCall call) try {
    if (!m_accepting) {
        throw sdbus::Error(kErrorStopping, "the bridge is stopping");
    }
    ServiceInterface* target = service();
    if (target == nullptr) {
        throw sdbus::Error(kErrorServiceUnavailable,
                           std::string("the system-control service is not registered as ") +
                               sysctrlservice::kServiceInterfaceName);
    }
    ReadCall read = method.read(call);
    Job job{0, &method, target, std::move(read.work), call.getSender(), read.bytes};
    enqueue(std::move(job), std::move(call));
} catch (const sdbus::Error&) {
    throw;
} catch (...) {
    logCaughtException(logBaseName(__FILE__), __LINE__, __func__, LOG_MODULE_DBUS);
    throw sdbus::Error(kErrorFailed, "the bridge could not take the call");
}

void DbusBridge::enqueue(Job job, sdbus::MethodCall call) {
    // Messages are moved, never copied or freed, under m_mutex (see the class comment).
    Pending entry{std::move(call), job.method, std::chrono::steady_clock::now() + m_options.timeout,
                  false,           0,          nullptr};
    const char* refusal = nullptr;
    bool wasEmpty = false;
    Queue& queue = queueOf(job.method->lane);
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        size_t& ofCaller = m_queuedBy[job.sender];
        if (m_stopping) {
            refusal = kErrorStopping;
        } else if (m_queued >= m_options.maxQueued || ofCaller >= m_options.maxQueuedPerCaller ||
                   m_queuedBytes + job.bytes > m_options.maxQueuedBytes) {
            refusal = kErrorBusy;
        } else {
            m_lastCall = m_lastCall == INT32_MAX ? 1 : m_lastCall + 1;
            job.id = m_lastCall;
            wasEmpty = m_pending.empty();
            m_pending.emplace(job.id, std::move(entry));
            ++ofCaller;
            ++m_queued;
            m_queuedBytes += job.bytes;
            queue.push(std::move(job));
        }
        if (refusal != nullptr && ofCaller == 0) {
            m_queuedBy.erase(job.sender);
        }
    }
    if (refusal == kErrorStopping) {
        throw sdbus::Error(kErrorStopping, "the bridge is stopping");
    }
    if (refusal != nullptr) {
        throw sdbus::Error(kErrorBusy,
                           "too many calls are waiting (at most " +
                               std::to_string(m_options.maxQueued) + " in all, " +
                               std::to_string(m_options.maxQueuedPerCaller) + " of one caller, " +
                               std::to_string(m_options.maxQueuedBytes) + " bytes of text)");
    }
    queue.ready.notify_one();
    if (wasEmpty) {
        // Later deadlines never come before the one the timer already waits for.
        m_timerWake.notify_one();
    }
}

bool DbusBridge::takeJob(Lane lane, Job& job) {
    Queue& queue = queueOf(lane);
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
        queue.ready.wait(lock, [&] { return m_stopping || !queue.empty(); });
        if (m_stopping) {
            return false;
        }
        job = queue.pop();
        forget(job);
        if (m_pending.count(job.id) != 0) {
            return true;
        }
        // Answered already: its deadline passed while it waited.
    }
}

void DbusBridge::Queue::push(Job job) {
    std::deque<Job>& calls = bySender[job.sender];
    if (calls.empty()) {
        turns.push_back(job.sender);
    }
    calls.push_back(std::move(job));
}

// The next caller's oldest call; that caller's turn comes again after the others'.
DbusBridge::Job DbusBridge::Queue::pop() {
    const auto calls = bySender.find(turns.front());
    turns.pop_front();
    Job job = std::move(calls->second.front());
    calls->second.pop_front();
    if (calls->second.empty()) {
        bySender.erase(calls);
    } else {
        turns.push_back(calls->first);
    }
    return job;
}

// A job leaves its queue: it no longer counts against the bounds. Under m_mutex.
void DbusBridge::forget(const Job& job) {
    --m_queued;
    m_queuedBytes -= job.bytes;
    const auto ofCaller = m_queuedBy.find(job.sender);
    if (ofCaller != m_queuedBy.end() && --ofCaller->second == 0) {
        m_queuedBy.erase(ofCaller);
    }
}

// On a worker.
void DbusBridge::runJob(Job& job) try {
    const MethodSpec& method = *job.method;
    frame::MsgIds msgIds{{job.id, kMsgIdsTag}};
    const frame::TransportInfo transport{{job.id, kMsgIdsTag, 0, 0, 0, 0, 0}};
    DBUS_LOG(LOG_TRACE, "%s:%d:%s(): %s, call %d.\n", method.name.c_str(), job.id);
    const int status = job.work(*job.service, msgIds, transport);

    PendingNode done;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_pending.find(job.id);
        if (found == m_pending.end()) {
            return;  // answered already: timed out or stopped
        }
        found->second.haveStatus = true;
        found->second.status = status;
        if (method.result != nullptr && !found->second.result && status >= 0) {
            return;  // the result comes later, from another thread, or the timer answers
        }
        done = m_pending.extract(found);
    }
    if (method.result != nullptr && !done.mapped().result) {
        replyError(
            done.mapped().call, kErrorFailed,
            method.name + " returned " + std::to_string(status) + " and delivered no result");
        return;
    }
    reply(done.mapped());
}
DBUS_ENTRY_GUARD()

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

void DbusBridge::replyErrors(std::vector<PendingNode>& calls, const char* name,
                             const std::string& message) {
    for (const PendingNode& node : calls) {
        replyError(node.mapped().call, name, node.mapped().method->name + ": " + message);
    }
    calls.clear();
}

void DbusBridge::replyError(const sdbus::MethodCall& call, const char* name,
                            const std::string& message) {
    try {
        call.createErrorReply(sdbus::Error(name, message)).send();
    } catch (const sdbus::Error& e) {
        DBUS_LOG(LOG_ERROR, "%s:%d:%s(): Cannot send %s: %s\n", name, e.getMessage().c_str());
    }
}

// The service is looked up until found, so that the bridge may start before it. The registry and
// the service are the framework's: whatever they throw stays here.
ServiceInterface* DbusBridge::service() try {
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
DBUS_ENTRY_GUARD(nullptr)

void DbusBridge::serveBus() {
    std::string reason = "the event loop ended";
    try {
        m_connection->enterEventLoop();
    } catch (const sdbus::Error& e) {
        reason = e.getName() + ": " + e.getMessage();
    } catch (...) {
        logCaughtException(logBaseName(__FILE__), __LINE__, __func__, LOG_MODULE_DBUS);
        reason = "an exception ended the event loop";
    }
    if (m_leaving) {
        return;
    }
    m_accepting = false;
    m_serving = false;
    DBUS_LOG(LOG_ERROR, "%s:%d:%s(): Lost the bus (%s); no longer serving %s.\n", reason.c_str(),
             kBusName);
}

void DbusBridge::workerLoop(Lane lane) {
    Job job;
    while (takeJob(lane, job)) {
        runJob(job);
        job = Job();
    }
}

void DbusBridge::timerLoop() {
    while (true) {
        try {
            if (!expireDue()) {
                return;
            }
        } catch (...) {
            logCaughtException(logBaseName(__FILE__), __LINE__, __func__, LOG_MODULE_DBUS);
        }
    }
}

bool DbusBridge::expireDue() {
    std::vector<PendingNode> expired;
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (m_stopping) {
            return false;
        }
        if (m_pending.empty()) {
            m_timerWake.wait(lock);
            return true;
        }
        auto earliest = m_pending.begin()->second.deadline;
        for (const auto& entry : m_pending) {
            earliest = std::min(earliest, entry.second.deadline);
        }
        if (m_timerWake.wait_until(lock, earliest) != std::cv_status::timeout) {
            return true;
        }
        const auto now = std::chrono::steady_clock::now();
        for (auto entry = m_pending.begin(); entry != m_pending.end();) {
            const auto next = std::next(entry);
            if (entry->second.deadline <= now) {
                expired.push_back(m_pending.extract(entry));
            }
            entry = next;
        }
    }
    // A queued call whose deadline passed stays in its queue until a worker takes and drops it.
    replyErrors(expired, kErrorTimeout,
                "no result within " + std::to_string(m_options.timeout.count()) + " ms");
    return true;
}

}  // namespace dbus
}  // namespace sysctrlservice
