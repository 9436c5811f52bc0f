#ifndef SYSCTRLSERVICE_CLIENTINTERFACE_H
#define SYSCTRLSERVICE_CLIENTINTERFACE_H

#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "SysctrlTypes.h"
#include "frame/MsgIds.h"
#include "frame/TransportInfo.h"

namespace sysctrlservice {

// The callbacks through which a registered caller receives results. Each carries the identifiers
// of the request it answers; reports that no request asked for carry identifiers of -1 (see
// Application's unsolicited identifiers).
class ClientInterface {
  public:
    virtual ~ClientInterface() = default;

    virtual void reinitCredentialsResult(frame::MsgIds& msgIds,
                                         const frame::TransportInfo& transport, int code) = 0;
    virtual void controlIicResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                  const std::string& result) = 0;
    virtual void writeEaromResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                  const std::string& result) = 0;
    virtual void readEaromResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 const std::string& data) = 0;
    virtual void getEaromSizeResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                    const std::string& size) = 0;
    virtual void controlOpcResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                  const std::string& result) = 0;
    virtual void setGpioResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                               const std::string& result) = 0;
    virtual void getGpioResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                               const std::string& result) = 0;
    virtual void controlAntennaResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                      const std::string& result) = 0;
    virtual void executeZoshellResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                      const std::string& result) = 0;
    virtual void controlFarFieldResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                       const std::string& result,
                                       const std::string& resultData) = 0;
    virtual void oledMaintResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 int result) = 0;
    virtual void setOledLeaEnableResult(frame::MsgIds& msgIds,
                                        const frame::TransportInfo& transport,
                                        unsigned char state) = 0;
    virtual void setOledCpcEnableResult(frame::MsgIds& msgIds,
                                        const frame::TransportInfo& transport,
                                        unsigned char state) = 0;
    virtual void getChipIDResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 const std::string& chipId) = 0;
    virtual void requestOptimeInfoResult(frame::MsgIds& msgIds,
                                         const frame::TransportInfo& transport,
                                         const OptimeInfo& info) = 0;
    virtual void oledErrorResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 int errorMask) = 0;
    virtual void controlHdmiResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                   const std::string& result) = 0;
    virtual void controlUartResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                   const std::string& result, const std::string& resultData) = 0;
    virtual void setLnbPowerResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                   int result) = 0;
    virtual void oledPanelInfoResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                     const std::vector<int>& info) = 0;
    virtual void getPanelVersionResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                       const std::string& version) = 0;
    virtual void burnFusesResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 int code) = 0;
    virtual void requestFuseInfoResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                       const std::vector<fuseitemcontent1_t>& items) = 0;
    // `signature` holds raw bytes.
    virtual void getYTSignatureResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                      const std::string& signature) = 0;
};

typedef boost::shared_ptr<ClientInterface> ClientInterfacePtr;

}  // namespace sysctrlservice

#endif
