#ifndef SYSCTRLSERVICE_SERVICEINTERFACE_H
#define SYSCTRLSERVICE_SERVICEINTERFACE_H

#include <string>
#include <vector>

#include "ClientInterface.h"
#include "SysctrlTypes.h"
#include "frame/MsgIds.h"
#include "frame/TransportInfo.h"

namespace sysctrlservice {

// The name under which the service registers its interface in the framework.
constexpr char kServiceInterfaceName[] = "zorbel.lm.interfaces.sysctrlservice";

// The system-control service's remote interface, registered as kServiceInterfaceName. Every
// operation returns its status at once; results travel
// to every registered client through ClientInterface.
class ServiceInterface {
  public:
    virtual ~ServiceInterface() = default;

    virtual int requestFuseInfo(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                unsigned int selector) = 0;
    virtual int burnFuses(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                          const std::vector<fuseitemcontent1_t>& items) = 0;
    virtual int reinitCredentials(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                  int mode) = 0;
    virtual int controlHdmi(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                            const std::string& command) = 0;
    virtual int controlIic(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                           const std::string& command) = 0;
    virtual int readEarom(frame::MsgIds& msgIds, const frame::TransportInfo& transport, int offset,
                          unsigned int length) = 0;
    virtual int writeEarom(frame::MsgIds& msgIds, const frame::TransportInfo& transport, int offset,
                           const std::string& data) = 0;
    virtual int getEaromSize(frame::MsgIds& msgIds, const frame::TransportInfo& transport) = 0;
    virtual int controlOpc(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                           const std::string& command) = 0;
    virtual int setGpio(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                        const std::string& command) = 0;
    virtual int getGpio(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                        const std::string& command) = 0;
    virtual int controlAntenna(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                               const std::string& command) = 0;
    virtual int executeZoshell(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                               const std::string& command) = 0;
    virtual int controlUart(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                            const std::string& command, const std::string& data) = 0;
    virtual int cmdCaptureScreen(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 const std::string& path, const std::string& name,
                                 CaptureType_t type) = 0;
    virtual int controlPowerMode(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 PowerMode_t mode) = 0;
    virtual int setBootEnvDbtable(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                  int value) = 0;
    virtual int controlComEnabled(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                  int value) = 0;
    virtual int restartSystem(frame::MsgIds& msgIds, const frame::TransportInfo& transport) = 0;
    virtual int setLnbPower(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                            int value) = 0;
    virtual int setRemoteControlCode(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                     int value) = 0;
    virtual int setKeypadLock(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                              int value) = 0;
    virtual int setQuentaRCSwitch(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                  int value) = 0;
    virtual int ctrlLedFlicker(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                               int flag) = 0;
    virtual int ctrluseCaseShow(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                int usecase) = 0;
    virtual int ctrluseCaseHide(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                int usecase) = 0;
    virtual int ctrlGpioState(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                              int state) = 0;
    virtual int ctrlLedColorState(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                  int ledColor, int ledStatus, int flashPwm) = 0;
    virtual int ctrlLogoLedGpioStatus(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                      int status) = 0;
    virtual int controlUartState(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 int value) = 0;
    virtual int controlOledMaint(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 unsigned int flag) = 0;
    virtual int requestOledPanelInfo(frame::MsgIds& msgIds,
                                     const frame::TransportInfo& transport) = 0;
    virtual int setOledLeaEnable(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 unsigned char enable) = 0;
    virtual int setOledCpcEnable(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 unsigned char enable) = 0;
    virtual int controlFarField(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                const std::string& command, const std::string& data) = 0;
    virtual int registerFarFieldCallback(frame::MsgIds& msgIds,
                                         const frame::TransportInfo& transport, int id,
                                         const std::string& name) = 0;
    virtual int unregisterFarFieldCallback(frame::MsgIds& msgIds,
                                           const frame::TransportInfo& transport, int id) = 0;
    virtual int getPanelVersion(frame::MsgIds& msgIds, const frame::TransportInfo& transport) = 0;
    virtual int getChipID(frame::MsgIds& msgIds, const frame::TransportInfo& transport) = 0;
    virtual int getYTSignature(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                               const std::string& message, unsigned int reserved,
                               unsigned int signatureLength) = 0;
    virtual int setGpioStatus(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                              int gpio, int value) = 0;
    virtual int setOsdOpacity(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                              int window, int opacity) = 0;
    virtual int getOsdOpacity(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                              int window) = 0;
    virtual int setQuietBootFlag(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 int flag) = 0;
    virtual int controlPanelPower(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                  int off) = 0;
    virtual int requestOptimeInfo(frame::MsgIds& msgIds, const frame::TransportInfo& transport) = 0;
    virtual int startOledAs(frame::MsgIds& msgIds, const frame::TransportInfo& transport) = 0;
    virtual int saveOledManualGain(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                   unsigned int gain0, unsigned int gain1, unsigned int gain2,
                                   unsigned int gain3) = 0;
    virtual int setOledManualGainSetting(frame::MsgIds& msgIds,
                                         const frame::TransportInfo& transport, unsigned int index,
                                         unsigned int value) = 0;
    virtual int getOledManualGainSetting(frame::MsgIds& msgIds,
                                         const frame::TransportInfo& transport,
                                         unsigned int index) = 0;
    virtual int setOledManualGainEnable(frame::MsgIds& msgIds,
                                        const frame::TransportInfo& transport, int enable) = 0;
    virtual int getOledManualGainEnable(frame::MsgIds& msgIds,
                                        const frame::TransportInfo& transport) = 0;
    virtual int addClient(ClientInterfacePtr client) = 0;
    virtual int removeClient(ClientInterfacePtr client) = 0;
};

}  // namespace sysctrlservice

#endif
