#ifndef SIM_SIMFACTORY_H
#define SIM_SIMFACTORY_H

#include "sim/SimSet.h"
#include "zo/port/Factory.h"

namespace sim {

// Hands out the set's device objects; an absent one as an empty handle.
class SimFactory : public zo::port::Factory, public SimObject {
  public:
    SimFactory(SimSet& set, SimSet::Objects& objects);

    boost::shared_ptr<zo::port::FrontPanel> getFrontPanel() override;
    boost::shared_ptr<zo::port::FactoryManager> getFactoryManager() override;
    boost::shared_ptr<zo::port::HdmiSwitch> getHdmi() override;
    boost::shared_ptr<zo::port::Opc> getOpc() override;
    boost::shared_ptr<zo::port::Antenna> getAntenna() override;
    boost::shared_ptr<zo::port::CredentialsState> getCredentialsState() override;
    boost::shared_ptr<zo::port::VodState> getVodState() override;
    boost::shared_ptr<zo::port::Uart> getUart() override;
    boost::shared_ptr<zo::port::ScreenCapture> getScreenCapture() override;
    boost::shared_ptr<zo::port::OledPanel> getOledPanel() override;
    boost::shared_ptr<zo::port::FarField> getFarField() override;
    boost::shared_ptr<zo::port::OperationHours> getOperationHours() override;
    boost::shared_ptr<zo::port::RemoteControl> getRemoteControl() override;
    boost::shared_ptr<zo::port::SystemControl> getSystemControl() override;
    boost::shared_ptr<zo::port::ZamControl> getZamControl() override;
    // The set has one screen, screen 0.
    boost::shared_ptr<zo::port::Video> getVideo(int screen) override;
    boost::shared_ptr<zo::port::StatusDisplay> getStatusDisplay() override;
    boost::shared_ptr<zo::port::HardwareInfo> getHardwareInfo() override;
    boost::shared_ptr<zo::port::Signer> getSigner() override;

  private:
    SimSet::Objects& m_objects;
};

}  // namespace sim

#endif
