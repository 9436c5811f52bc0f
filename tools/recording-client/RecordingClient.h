#ifndef TOOLS_RECORDINGCLIENT_H
#define TOOLS_RECORDINGCLIENT_H

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "ServiceDescription.h"
#include "sim/Json.h"

namespace sim {

class SimSet;

// A remote caller's client object: records every callback it receives and reports it to the
// simulated set's listener as {"event":"callback","client":NAME,"callback":...,"msgIds":[...],
// "transport":[...],"args":[...]}. It keeps the last keepLimit() callbacks, oldest first, so that a
// client of a long run does not grow by every result; every one is still reported.
class RecordingClient : public sysctrlservice::ClientAdapter<RecordingClient> {
  public:
    struct Received {
        std::string callback;
        std::vector<int32_t> msgIds;
        std::vector<int32_t> transport;
        json args;
    };

    explicit RecordingClient(const std::string& name, SimSet* set = nullptr);

    const std::string& name() const { return m_name; }
    std::vector<Received> received() const;
    // The callbacks of one name.
    std::vector<Received> received(const std::string& callback) const;
    void clear();
    static constexpr size_t kDefaultKeepLimit = 10000;
    size_t keepLimit() const;
    // Drops the oldest callbacks at once when fewer are to be kept; 0 keeps none.
    void setKeepLimit(size_t limit);
    // Runs after each callback is recorded, on the calling thread.
    void setReaction(std::function<void(const Received&)> reaction);

    // Every callback, from the adapter.
    template <typename... Values>
    void onCallback(const sysctrlservice::CallbackInfo& callback, const frame::MsgIds& msgIds,
                    const frame::TransportInfo& transport, const Values&... values) {
        record(callback.name, msgIds, transport, json::array({toJson(values)...}));
    }

  private:
    // A callback's values as its record shows them: text as text or hex, structures as objects.
    static json toJson(int value) { return value; }
    static json toJson(unsigned char value) { return value; }
    static json toJson(const std::string& text) { return textOrHex(text); }
    static json toJson(const std::vector<int>& values) { return values; }
    static json toJson(const sysctrlservice::OptimeInfo& info);
    static json toJson(const std::vector<sysctrlservice::fuseitemcontent1_t>& items);

    void record(const char* callback, const frame::MsgIds& msgIds,
                const frame::TransportInfo& transport, json args);

    std::string m_name;
    SimSet* m_set;
    mutable std::mutex m_mutex;
    std::deque<Received> m_received;
    size_t m_keepLimit = kDefaultKeepLimit;
    std::function<void(const Received&)> m_reaction;
};

}  // namespace sim

#endif
