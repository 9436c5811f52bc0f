#include "RecordingClient.h"

#include "sim/SimSet.h"

namespace sim {

RecordingClient::RecordingClient(const std::string& name, SimSet* set)
    : sysctrlservice::ClientAdapter<RecordingClient>(*this), m_name(name), m_set(set) {}

std::vector<RecordingClient::Received> RecordingClient::received() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return std::vector<Received>(m_received.begin(), m_received.end());
}

std::vector<RecordingClient::Received> RecordingClient::received(
    const std::string& callback) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<Received> selected;
    for (const Received& r : m_received) {
        if (r.callback == callback) {
            selected.push_back(r);
        }
    }
    return selected;
}

void RecordingClient::clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_received.clear();
}

size_t RecordingClient::keepLimit() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_keepLimit;
}

void RecordingClient::setKeepLimit(size_t limit) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_keepLimit = limit;
    while (m_received.size() > m_keepLimit) {
        m_received.pop_front();
    }
}

void RecordingClient::setReaction(std::function<void(const Received&)> reaction) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_reaction = std::move(reaction);
}

void RecordingClient::record(const char* callback, const frame::MsgIds& msgIds,
                             const frame::TransportInfo& transport, json args) {
    Received received{callback,
                      std::vector<int32_t>(std::begin(msgIds.word), std::end(msgIds.word)),
                      std::vector<int32_t>(std::begin(transport.word), std::end(transport.word)),
                      std::move(args)};
    std::function<void(const Received&)> reaction;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_keepLimit > 0) {
            if (m_received.size() >= m_keepLimit) {
                m_received.pop_front();
            }
            m_received.push_back(received);
        }
        reaction = m_reaction;
    }
    if (m_set != nullptr && m_set->hasListener()) {
        m_set->emit(json{{"event", "callback"},
                         {"client", m_name},
                         {"callback", received.callback},
                         {"msgIds", received.msgIds},
                         {"transport", received.transport},
                         {"args", received.args}});
    }
    if (reaction) {
        reaction(received);
    }
}

json RecordingClient::toJson(const sysctrlservice::OptimeInfo& info) {
    json times = json::array();
    for (uint32_t time : info.time) {
        times.push_back(time);
    }
    return json{{"times", times}, {"text", textOrHex(info.text)}};
}

json RecordingClient::toJson(const std::vector<sysctrlservice::fuseitemcontent1_t>& items) {
    json list = json::array();
    for (const sysctrlservice::fuseitemcontent1_t& item : items) {
        list.push_back(json{{"name", textOrHex(item.name)}, {"value", textOrHex(item.value)}});
    }
    return list;
}

}  // namespace sim
