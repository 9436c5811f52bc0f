#include "SimFactory.h"

#include "HandOut.h"
#include "SimSetObjects.h"

namespace sim {

SimFactory::SimFactory(SimSet& set, SimSet::Objects& objects)
    : SimObject(set, "Factory",
                {{"getFrontPanel", Kind::Object, {}},
                 {"getFactoryManager", Kind::Object, {}},
                 {"getHdmi", Kind::Object, {}},
                 {"getOpc", Kind::Object, {}},
                 {"getAntenna", Kind::Object, {}},
                 {"getCredentialsState", Kind::Object, {}},
                 {"getVodState", Kind::Object, {}},
                 {"getUart", Kind::Object, {}},
                 {"getScreenCapture", Kind::Object, {}},
                 {"getOledPanel", Kind::Object, {}},
                 {"getFarField", Kind::Object, {}},
                 {"getOperationHours", Kind::Object, {}},
                 {"getRemoteControl", Kind::Object, {}},
                 {"getSystemControl", Kind::Object, {}},
                 {"getZamControl", Kind::Object, {}},
                 {"getVideo", Kind::Object, {}},
                 {"getStatusDisplay", Kind::Object, {}},
                 {"getHardwareInfo", Kind::Object, {}},
                 {"getSigner", Kind::Object, {}}},
                {}),
      m_objects(objects) {}

boost::shared_ptr<zo::port::FrontPanel> SimFactory::getFrontPanel() {
    return handOut(*this, "getFrontPanel", m_objects.frontPanel);
}

boost::shared_ptr<zo::port::FactoryManager> SimFactory::getFactoryManager() {
    return handOut(*this, "getFactoryManager", m_objects.factoryManager);
}

boost::shared_ptr<zo::port::HdmiSwitch> SimFactory::getHdmi() {
    return handOut(*this, "getHdmi", m_objects.hdmi);
}

boost::shared_ptr<zo::port::Opc> SimFactory::getOpc() {
    return handOut(*this, "getOpc", m_objects.opc);
}

boost::shared_ptr<zo::port::Antenna> SimFactory::getAntenna() {
    return handOut(*this, "getAntenna", m_objects.antenna);
}

boost::shared_ptr<zo::port::CredentialsState> SimFactory::getCredentialsState() {
    return handOut(*this, "getCredentialsState", m_objects.credentialsState);
}

boost::shared_ptr<zo::port::VodState> SimFactory::getVodState() {
    return handOut(*this, "getVodState", m_objects.vodState);
}

boost::shared_ptr<zo::port::Uart> SimFactory::getUart() {
    return handOut(*this, "getUart", m_objects.uart);
}

boost::shared_ptr<zo::port::ScreenCapture> SimFactory::getScreenCapture() {
    return handOut(*this, "getScreenCapture", m_objects.screenCapture);
}

boost::shared_ptr<zo::port::OledPanel> SimFactory::getOledPanel() {
    return handOut(*this, "getOledPanel", m_objects.oledPanel);
}

boost::shared_ptr<zo::port::FarField> SimFactory::getFarField() {
    return handOut(*this, "getFarField", m_objects.farField);
}

boost::shared_ptr<zo::port::OperationHours> SimFactory::getOperationHours() {
    return handOut(*this, "getOperationHours", m_objects.operationHours);
}

boost::shared_ptr<zo::port::RemoteControl> SimFactory::getRemoteControl() {
    return handOut(*this, "getRemoteControl", m_objects.remoteControl);
}

boost::shared_ptr<zo::port::SystemControl> SimFactory::getSystemControl() {
    return handOut(*this, "getSystemControl", m_objects.systemControl);
}

boost::shared_ptr<zo::port::ZamControl> SimFactory::getZamControl() {
    return handOut(*this, "getZamControl", m_objects.zamControl);
}

boost::shared_ptr<zo::port::Video> SimFactory::getVideo(int screen) {
    return handOut(*this, "getVideo", screen == 0 ? m_objects.video : boost::shared_ptr<SimVideo>(),
                   json::array({screen}));
}

boost::shared_ptr<zo::port::StatusDisplay> SimFactory::getStatusDisplay() {
    return handOut(*this, "getStatusDisplay", m_objects.statusDisplay);
}

boost::shared_ptr<zo::port::HardwareInfo> SimFactory::getHardwareInfo() {
    return handOut(*this, "getHardwareInfo", m_objects.hardwareInfo);
}

boost::shared_ptr<zo::port::Signer> SimFactory::getSigner() {
    return handOut(*this, "getSigner", m_objects.signer);
}

}  // namespace sim
