#ifndef SYSCTRL_DBUS_BRIDGEAPPLICATION_H
#define SYSCTRL_DBUS_BRIDGEAPPLICATION_H

#include <memory>

#include "DbusBridge.h"
#include "frame/AbstractApplication.h"

// The plug-in's entry: one BridgeApplication.
extern "C" __attribute__((visibility("default"))) frame::AbstractApplication**
frameCreateApplicationArray();

namespace sysctrlservice {
namespace dbus {

// The D-Bus bridge as a framework application, loaded beside the service. Starting finds the
// service in the framework's registry, joins its clients and serves on the bus named by the
// environment: SYSCTRL_DBUS_BUS ("system" by default, "session", or a bus address) and
// SYSCTRL_DBUS_TIMEOUT_MS (how long a call waits for its result; 10000 by default). Stopping
// leaves the bus and the client list. The framework stops the bridge before it destroys the
// service.
class BridgeApplication : public frame::AbstractApplication {
  public:
    BridgeApplication();
    ~BridgeApplication() override;

  protected:
    int32_t performStarting() override;
    int32_t performStopping() override;

  private:
    ServiceInterface* findService();

    std::unique_ptr<DbusBridge> m_bridge;
};

}  // namespace dbus
}  // namespace sysctrlservice

#endif
