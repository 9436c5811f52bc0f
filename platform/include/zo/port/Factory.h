#ifndef ZO_PORT_FACTORY_H
#define ZO_PORT_FACTORY_H

#include <boost/shared_ptr.hpp>

#include "zo/port/Object.h"

namespace zo {
namespace port {

class Antenna;
class CredentialsState;
class FactoryManager;
class FarField;
class FrontPanel;
class HardwareInfo;
class HdmiSwitch;
class OledPanel;
class Opc;
class OperationHours;
class RemoteControl;
class ScreenCapture;
class Signer;
class StatusDisplay;
class SystemControl;
class Uart;
class Video;
class VodState;
class ZamControl;

// Hands out the platform's device objects. A getter returns an empty handle when the set has no
// such device.
class Factory : public Object {
  public:
    Factory();
    ~Factory() override;

    virtual boost::shared_ptr<FrontPanel> getFrontPanel() = 0;
    virtual boost::shared_ptr<FactoryManager> getFactoryManager() = 0;
    virtual boost::shared_ptr<HdmiSwitch> getHdmi() = 0;
    virtual boost::shared_ptr<Opc> getOpc() = 0;
    virtual boost::shared_ptr<Antenna> getAntenna() = 0;
    virtual boost::shared_ptr<CredentialsState> getCredentialsState() = 0;
    virtual boost::shared_ptr<VodState> getVodState() = 0;
    virtual boost::shared_ptr<Uart> getUart() = 0;
    virtual boost::shared_ptr<ScreenCapture> getScreenCapture() = 0;
    virtual boost::shared_ptr<OledPanel> getOledPanel() = 0;
    virtual boost::shared_ptr<FarField> getFarField() = 0;
    virtual boost::shared_ptr<OperationHours> getOperationHours() = 0;
    virtual boost::shared_ptr<RemoteControl> getRemoteControl() = 0;
    virtual boost::shared_ptr<SystemControl> getSystemControl() = 0;
    virtual boost::shared_ptr<ZamControl> getZamControl() = 0;
    virtual boost::shared_ptr<Video> getVideo(int screen) = 0;
    virtual boost::shared_ptr<StatusDisplay> getStatusDisplay() = 0;
    virtual boost::shared_ptr<HardwareInfo> getHardwareInfo() = 0;
    virtual boost::shared_ptr<Signer> getSigner() = 0;
};

}  // namespace port
}  // namespace zo

#endif
