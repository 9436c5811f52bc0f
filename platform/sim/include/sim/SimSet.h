#ifndef SIM_SIMSET_H
#define SIM_SIMSET_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "sim/Json.h"
#include "sim/SimObject.h"

namespace sim {

// One journalled call of the simulated set.
struct PortCall {
    std::string object;
    std::string operation;
    json args;
    json outputs;
    json result;

    json toEvent() const;
};

// A simulated television: every port object of the platform, the framework's Pier registration and
// the platform calls around them (shell, configuration, threads, clock). Stateful, journalled and
// scriptable; see docs/sim.md. One set at a time per process: it installs the host runtime's hooks
// and registers the Pier while it lives.
class SimSet {
  public:
    SimSet();
    ~SimSet();

    SimSet(const SimSet&) = delete;
    SimSet& operator=(const SimSet&) = delete;

    // Every simulated object, in a fixed order; and one by name ("Opc", "zoshell", ...).
    std::vector<SimObject*> objects() const;
    SimObject* find(const std::string& name) const;

    // Scripting by "Object.operation" and "Object.key"; false with an explanation on bad input.
    bool setPresent(const std::string& object, bool present, std::string& error);
    bool setAnswer(const std::string& objectOperation, const json& result, const json& outputs,
                   std::string& error);
    bool clearAnswer(const std::string& objectOperation, std::string& error);
    bool setThrow(const std::string& objectOperation, const std::string& what, std::string& error);
    bool setState(const std::string& objectKey, const json& value, std::string& error);
    json getState(const std::string& objectKey) const;

    // Everything that happens in the set goes to the listener as one JSON event, in order: the
    // calls ({"event":"port",...}), observer deliveries ({"event":"observer",...}) and whatever
    // else calls emit() (clients report their callbacks so).
    typedef std::function<void(const json& event)> Listener;
    void setListener(Listener listener);
    // Whether a listener is set: an event nobody listens to need not be made.
    bool hasListener() const;
    void emit(const json& event);

    // The journal keeps the last journalLimit() calls, oldest first: a set that serves for days
    // would otherwise grow by every call. Past the limit each new call drops the oldest; the
    // listener still sees every call. 0 keeps none (a host whose output is the listener's).
    static constexpr size_t kDefaultJournalLimit = 10000;
    std::vector<PortCall> journal() const;
    // The calls of one object, of one operation when `operation` is not empty, from the journal.
    std::vector<PortCall> calls(const std::string& object, const std::string& operation = "") const;
    void clearJournal();
    size_t journalLimit() const;
    // Drops the oldest calls at once when fewer are to be kept.
    void setJournalLimit(size_t limit);

    // The event manager delivers an event to the observers registered for `subject`: "oledPanel",
    // "operationHours", or, to every registered observer, "none" (an empty subject) or "other" (a
    // subject of another type). Returns each observer's name and status, in registration order.
    struct Delivery {
        std::string observer;
        int status;
    };
    bool fireEvent(const std::string& subject, int eventClass, int eventId,
                   std::vector<Delivery>& deliveries, std::string& error);
    // The OLED panel reports new error bits through the callback the service registered. False
    // when none is registered.
    bool raiseOledError(uint32_t mask);

    std::recursive_mutex& mutex() const { return m_mutex; }
    // Called by SimObject::Call.
    void record(const PortCall& call);

    struct Objects;

  private:
    SimObject* findOrExplain(const std::string& name, std::string& error) const;
    // The object named before the first dot of "Object.member"; `member` gets the rest.
    SimObject* findMember(const std::string& text, std::string& member, std::string& error) const;

    mutable std::recursive_mutex m_mutex;
    std::unique_ptr<Objects> m_objects;
    std::deque<PortCall> m_journal;
    size_t m_journalLimit = kDefaultJournalLimit;
    Listener m_listener;
    mutable std::mutex m_listenerMutex;
};

}  // namespace sim

#endif
