#include "RecordingClient.h"

#include "sim/SimSet.h"

namespace sim {

RecordingClient::RecordingClient(const std::string& name, SimSet* set) : m_name(name), m_set(set) {}

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

#define RECORD_TEXT(callback)                                                                    \
    void RecordingClient::callback(frame::MsgIds& msgIds, const frame::TransportInfo& transport, \
                                   const std::string& text) {                                    \
        record(#callback, msgIds, transport, json::array({textOrHex(text)}));                    \
    }

#define RECORD_INT(callback, Type)                                                               \
    void RecordingClient::callback(frame::MsgIds& msgIds, const frame::TransportInfo& transport, \
                                   Type value) {                                                 \
        record(#callback, msgIds, transport, json::array({value}));                              \
    }

RECORD_INT(reinitCredentialsResult, int)
RECORD_TEXT(controlIicResult)
RECORD_TEXT(writeEaromResult)
RECORD_TEXT(readEaromResult)
RECORD_TEXT(getEaromSizeResult)
RECORD_TEXT(controlOpcResult)
RECORD_TEXT(setGpioResult)
RECORD_TEXT(getGpioResult)
RECORD_TEXT(controlAntennaResult)
RECORD_TEXT(executeZoshellResult)
RECORD_INT(oledMaintResult, int)
RECORD_INT(setOledLeaEnableResult, unsigned char)
RECORD_INT(setOledCpcEnableResult, unsigned char)
RECORD_TEXT(getChipIDResult)
RECORD_INT(oledErrorResult, int)
RECORD_TEXT(controlHdmiResult)
RECORD_INT(setLnbPowerResult, int)
RECORD_TEXT(getPanelVersionResult)
RECORD_INT(burnFusesResult, int)
RECORD_TEXT(getYTSignatureResult)

#undef RECORD_TEXT
#undef RECORD_INT

void RecordingClient::controlFarFieldResult(frame::MsgIds& msgIds,
                                            const frame::TransportInfo& transport,
                                            const std::string& result,
                                            const std::string& resultData) {
    record("controlFarFieldResult", msgIds, transport,
           json::array({textOrHex(result), textOrHex(resultData)}));
}

void RecordingClient::controlUartResult(frame::MsgIds& msgIds,
                                        const frame::TransportInfo& transport,
                                        const std::string& result, const std::string& resultData) {
    record("controlUartResult", msgIds, transport,
           json::array({textOrHex(result), textOrHex(resultData)}));
}

void RecordingClient::requestOptimeInfoResult(frame::MsgIds& msgIds,
                                              const frame::TransportInfo& transport,
                                              const sysctrlservice::OptimeInfo& info) {
    json times = json::array();
    for (uint32_t time : info.time) {
        times.push_back(time);
    }
    record("requestOptimeInfoResult", msgIds, transport,
           json::array({json{{"times", times}, {"text", textOrHex(info.text)}}}));
}

void RecordingClient::oledPanelInfoResult(frame::MsgIds& msgIds,
                                          const frame::TransportInfo& transport,
                                          const std::vector<int>& info) {
    record("oledPanelInfoResult", msgIds, transport, json::array({info}));
}

void RecordingClient::requestFuseInfoResult(
    frame::MsgIds& msgIds, const frame::TransportInfo& transport,
    const std::vector<sysctrlservice::fuseitemcontent1_t>& items) {
    json list = json::array();
    for (const sysctrlservice::fuseitemcontent1_t& item : items) {
        list.push_back(json{{"name", textOrHex(item.name)}, {"value", textOrHex(item.value)}});
    }
    record("requestFuseInfoResult", msgIds, transport, json::array({list}));
}

}  // namespace sim
