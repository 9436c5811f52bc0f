#ifndef TOOLS_RECORDINGCLIENT_H
#define TOOLS_RECORDINGCLIENT_H

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "ClientInterface.h"
#include "sim/Json.h"

namespace sim {

class SimSet;

// A remote caller's client object: records every callback it receives and reports it to the
// simulated set's listener as {"event":"callback","client":NAME,"callback":...,"msgIds":[...],
// "transport":[...],"args":[...]}. It keeps the last keepLimit() callbacks, oldest first, so that a
// client of a long run does not grow by every result; every one is still reported.
class RecordingClient : public sysctrlservice::ClientInterface {
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

    void reinitCredentialsResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 int code) override;
    void controlIicResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                          const std::string& result) override;
    void writeEaromResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                          const std::string& result) override;
    void readEaromResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         const std::string& data) override;
    void getEaromSizeResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                            const std::string& size) override;
    void controlOpcResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                          const std::string& result) override;
    void setGpioResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                       const std::string& result) override;
    void getGpioResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                       const std::string& result) override;
    void controlAntennaResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                              const std::string& result) override;
    void executeZoshellResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                              const std::string& result) override;
    void controlFarFieldResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                               const std::string& result, const std::string& resultData) override;
    void oledMaintResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         int result) override;
    void setOledLeaEnableResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                unsigned char state) override;
    void setOledCpcEnableResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                unsigned char state) override;
    void getChipIDResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         const std::string& chipId) override;
    void requestOptimeInfoResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 const sysctrlservice::OptimeInfo& info) override;
    void oledErrorResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         int errorMask) override;
    void controlHdmiResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                           const std::string& result) override;
    void controlUartResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                           const std::string& result, const std::string& resultData) override;
    void setLnbPowerResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                           int result) override;
    void oledPanelInfoResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                             const std::vector<int>& info) override;
    void getPanelVersionResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                               const std::string& version) override;
    void burnFusesResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         int code) override;
    void requestFuseInfoResult(
        frame::MsgIds& msgIds, const frame::TransportInfo& transport,
        const std::vector<sysctrlservice::fuseitemcontent1_t>& items) override;
    void getYTSignatureResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                              const std::string& signature) override;

  private:
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
