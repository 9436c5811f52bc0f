#ifndef SYSCTRLSERVICE_APPLICATION_H
#define SYSCTRLSERVICE_APPLICATION_H

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "EntryGuard.h"
#include "ServiceInterface.h"
#include "ServiceTypes.h"
#include "frame/AbstractApplication.h"
#include "frame/Interface.h"
#include "zo/port/Event.h"

namespace zo {
namespace port {
class Antenna;
class ChassisDescription;
class CredentialsState;
class EventManager;
class Factory;
class FactoryManager;
class FarField;
class FrontPanel;
class HdmiSwitch;
class OledPanel;
class Opc;
class OperationHours;
class Pier;
class RemoteControl;
class ScreenCapture;
class SubsystemManager;
class Uart;
class VodState;
}  // namespace port
}  // namespace zo

namespace sysctrlservice {

class PortObserver;

// The system-control service: a framework application that implements ServiceInterface over the
// platform's port objects. The framework drives its life cycle; the RPC layer calls the interface
// operations on its own threads. The application lock guards the client list and nothing else.
class Application : public frame::AbstractApplication, public ServiceInterface {
  public:
    Application();
    ~Application() override;

    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

  protected:
    // Life cycle (app-sysctrlservice-impl-main.cpp)
    int32_t performSetupDone() override;
    int32_t performStarting() override;
    int32_t performStopping() override;

  public:
    // Clients and platform events (app-sysctrlservice-impl-main.cpp)
    // 0, -17 when the client object is already registered, -22 for an empty handle.
    int addClient(ClientInterfacePtr client) override;
    // 0, -2 when the client object is not registered.
    int removeClient(ClientInterfacePtr client) override;
    // Platform events of the OLED panel (class 25) and the operation-hours object (class 1).
    // Returns 0 when handled, -22 for a subject of the wrong type, -1 for an event it ignores.
    virtual int notify(zo::port::eventClass_enum eventClass,
                       boost::shared_ptr<zo::port::EventSubject> subject, int eventId);

    // Front panel, remote control and retired options (app-sysctrlservice-impl-frontpanel.cpp)
    int ctrlLedColorState(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                          int ledColor, int ledStatus, int flashPwm) override;
    int ctrluseCaseShow(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                        int usecase) override;
    int ctrluseCaseHide(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                        int usecase) override;
    int ctrlGpioState(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                      int state) override;
    int ctrlLedFlicker(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                       int flag) override;
    int ctrlLogoLedGpioStatus(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                              int status) override;
    int setRemoteControlCode(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                             int value) override;
    int setKeypadLock(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                      int value) override;
    int setQuentaRCSwitch(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                          int value) override;
    int controlPowerMode(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         PowerMode_t mode) override;
    int setOsdOpacity(frame::MsgIds& msgIds, const frame::TransportInfo& transport, int window,
                      int opacity) override;
    int getOsdOpacity(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                      int window) override;
    int setQuietBootFlag(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         int flag) override;

    // System, boot and panel power (app-sysctrlservice-impl-system.cpp)
    int restartSystem(frame::MsgIds& msgIds, const frame::TransportInfo& transport) override;
    int controlPanelPower(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                          int off) override;
    int setBootEnvDbtable(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                          int value) override;
    int controlComEnabled(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                          int value) override;
    int controlUartState(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         int value) override;
    int setGpioStatus(frame::MsgIds& msgIds, const frame::TransportInfo& transport, int gpio,
                      int value) override;

    // Text commands: OPC, UART, far field, GPIO, I2C, HDMI, shell
    // (app-sysctrlservice-impl-commands.cpp)
    int controlOpc(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                   const std::string& command) override;
    int controlUart(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                    const std::string& command, const std::string& data) override;
    int controlFarField(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                        const std::string& command, const std::string& data) override;
    int registerFarFieldCallback(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 int id, const std::string& name) override;
    int unregisterFarFieldCallback(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                   int id) override;
    int setGpio(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                const std::string& command) override;
    int getGpio(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                const std::string& command) override;
    int controlIic(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                   const std::string& command) override;
    int controlHdmi(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                    const std::string& command) override;
    int executeZoshell(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                       const std::string& command) override;

    // Antenna (app-sysctrlservice-impl-antenna.cpp)
    int controlAntenna(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                       const std::string& command) override;
    int setLnbPower(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                    int value) override;

    // Screen capture (app-sysctrlservice-impl-capture.cpp)
    int cmdCaptureScreen(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         const std::string& path, const std::string& name,
                         CaptureType_t type) override;

    // OLED tuning (app-sysctrlservice-impl-oledtuning.cpp)
    int startOledAs(frame::MsgIds& msgIds, const frame::TransportInfo& transport) override;
    int saveOledManualGain(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                           unsigned int gain0, unsigned int gain1, unsigned int gain2,
                           unsigned int gain3) override;
    int setOledManualGainSetting(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 unsigned int index, unsigned int value) override;
    int getOledManualGainSetting(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 unsigned int index) override;
    int setOledManualGainEnable(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                int enable) override;
    int getOledManualGainEnable(frame::MsgIds& msgIds,
                                const frame::TransportInfo& transport) override;
    int setOledLeaEnable(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         unsigned char enable) override;
    int setOledCpcEnable(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         unsigned char enable) override;

    // OLED maintenance (app-sysctrlservice-impl-oledmaint.cpp)
    int controlOledMaint(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         unsigned int flag) override;

    // OLED information, errors and operating-time reports (app-sysctrlservice-impl-oledinfo.cpp)
    int requestOledPanelInfo(frame::MsgIds& msgIds, const frame::TransportInfo& transport) override;
    // Reports the OLED panel's information to every client as an unsolicited report.
    virtual int updateOledPanelInfo();
    int getPanelVersion(frame::MsgIds& msgIds, const frame::TransportInfo& transport) override;
    int requestOptimeInfo(frame::MsgIds& msgIds, const frame::TransportInfo& transport) override;
    // The OLED panel's error callback; `user` is the application.
    static void oledErrorCallback(uint32_t errorMask, void* user);

    // Provisioning: fuses, credentials, EAROM, identity (app-sysctrlservice-impl-provisioning.cpp)
    int burnFuses(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                  const std::vector<fuseitemcontent1_t>& items) override;
    int requestFuseInfo(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                        unsigned int selector) override;
    int reinitCredentials(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                          int mode) override;
    int readEarom(frame::MsgIds& msgIds, const frame::TransportInfo& transport, int offset,
                  unsigned int length) override;
    int writeEarom(frame::MsgIds& msgIds, const frame::TransportInfo& transport, int offset,
                   const std::string& data) override;
    int getEaromSize(frame::MsgIds& msgIds, const frame::TransportInfo& transport) override;
    int getChipID(frame::MsgIds& msgIds, const frame::TransportInfo& transport) override;
    int getYTSignature(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                       const std::string& message, unsigned int reserved,
                       unsigned int signatureLength) override;

  private:
    // Copies the client list under the application lock, so that callbacks run without it and a
    // client removed meanwhile stays alive until its delivery ends.
    std::vector<ClientInterfacePtr> copyClients();

    // Calls `callback` with the request's identifiers and `args` on every registered client, in
    // registration order. The one way results reach clients.
    template <typename... Params, typename... Args>
    void deliverToClients(void (ClientInterface::*callback)(frame::MsgIds&,
                                                            const frame::TransportInfo&, Params...),
                          frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                          const Args&... args) {
        const std::vector<ClientInterfacePtr> clients = copyClients();
        for (const ClientInterfacePtr& client : clients) {
            try {
                ((*client).*callback)(msgIds, transport, args...);
            } catch (...) {
                // A client that fails costs the others nothing: each still gets its result.
                logCaughtException(logBaseName(__FILE__), __LINE__, __func__);
            }
        }
    }

    // The same for a report that no request asked for.
    template <typename... Params, typename... Args>
    void deliverUnsolicited(void (ClientInterface::*callback)(frame::MsgIds&,
                                                              const frame::TransportInfo&,
                                                              Params...),
                            const Args&... args) {
        frame::MsgIds msgIds = unsolicitedMsgIds();
        const frame::TransportInfo transport = unsolicitedTransportInfo();
        deliverToClients(callback, msgIds, transport, args...);
    }

    // A port object that one call needs, asked of the factory now: empty without a factory or
    // when the factory has none. The one way an operation gets a short-lived port object.
    template <typename Port, typename... Params, typename... Args>
    boost::shared_ptr<Port> portObject(
        boost::shared_ptr<Port> (zo::port::Factory::*getter)(Params...), Args... args) const {
        const boost::shared_ptr<zo::port::Factory> factory = m_factory;
        if (!factory) {
            return boost::shared_ptr<Port>();
        }
        return ((*factory).*getter)(args...);
    }

    // Reads the five operating-time counters and their text.
    static OptimeInfo readOptimeInfo(zo::port::OperationHours& operationHours);

    // Operating-time records (app-sysctrlservice-impl-pmrecords.cpp)
    void loadPMRecords();
    void addPMRecord(PMRType type);
    void storePMRecords();

    // The maintenance run's thread (app-sysctrlservice-impl-oledmaint.cpp)
    static void* oledMaintThread(void* argument);
    // One run with the caller's flag: records, the panel's run, counters, the clients told.
    // Guarded: never throws.
    void runOledMaintenance(uint32_t flag);
    // Records the run's start; returns the status code to show while it runs.
    int recordRunStart(uint32_t flag, int tempLut);
    // Clears the operating-time counters the run's result names, recording each.
    void clearCounters(int result);

    zo::port::Pier* m_pier;
    boost::shared_ptr<zo::port::RemoteControl> m_remoteControl;
    boost::shared_ptr<zo::port::SubsystemManager> m_subsystemManager;
    boost::shared_ptr<zo::port::ChassisDescription> m_chassisDescription;
    boost::shared_ptr<zo::port::Factory> m_factory;
    boost::shared_ptr<zo::port::FrontPanel> m_frontPanel;
    boost::shared_ptr<zo::port::FactoryManager> m_factoryManager;
    boost::shared_ptr<zo::port::HdmiSwitch> m_hdmi;
    boost::shared_ptr<zo::port::Opc> m_opc;
    // Replaced by setLnbPower while other calls copy it: only through boost::atomic_load/store.
    boost::shared_ptr<zo::port::Antenna> m_antenna;
    boost::shared_ptr<zo::port::CredentialsState> m_credentialsState;
    boost::shared_ptr<zo::port::VodState> m_vodState;
    boost::shared_ptr<zo::port::Uart> m_uart;
    boost::shared_ptr<zo::port::FarField> m_farField;
    boost::shared_ptr<zo::port::ScreenCapture> m_screenCapture;
    boost::shared_ptr<zo::port::OledPanel> m_oledPanel;
    boost::shared_ptr<zo::port::OperationHours> m_operationHours;
    boost::shared_ptr<zo::port::EventManager> m_eventManager;
    boost::shared_ptr<PortObserver> m_observer;
    std::vector<ClientInterfacePtr> m_clients;
    PMRecordList m_pmRecords[PMR_TYPE_COUNT];
    frame::InterfacePtr m_pierInterface;
    uint32_t m_maintFlags;
    // Written by the caller that starts a run and by the run's thread at its end.
    std::atomic<bool> m_maintRunning;
};

}  // namespace sysctrlservice

// The plug-in's entries: a new, zero-filled array of two slots, the first holding a new
// Application, the second null. The framework owns both.
extern "C" __attribute__((visibility("default"))) frame::AbstractApplication**
CreateSysctrlserviceApplication();
extern "C" __attribute__((visibility("default"))) frame::AbstractApplication**
frameCreateApplicationArray();

#endif
