#include "BridgeApplication.h"

#include <cstdlib>
#include <memory>
#include <string>

#include "DbusLog.h"

frame::AbstractApplication** frameCreateApplicationArray() try {
    std::unique_ptr<frame::AbstractApplication*[]> applications(
        new frame::AbstractApplication*[2]());
    applications[0] = new sysctrlservice::dbus::BridgeApplication();
    return applications.release();
}
DBUS_ENTRY_GUARD(nullptr)

namespace sysctrlservice {
namespace dbus {

namespace {

DbusBridge::Options optionsFromEnvironment() {
    DbusBridge::Options options;
    if (const char* bus = std::getenv("SYSCTRL_DBUS_BUS")) {
        if (*bus != '\0') {
            options.bus = bus;
        }
    }
    if (const char* timeout = std::getenv("SYSCTRL_DBUS_TIMEOUT_MS")) {
        char* end = nullptr;
        const long milliseconds = std::strtol(timeout, &end, 10);
        if (end != timeout && *end == '\0' && milliseconds > 0) {
            options.timeout = std::chrono::milliseconds(milliseconds);
        }
    }
    return options;
}

}  // namespace

BridgeApplication::BridgeApplication() = default;

BridgeApplication::~BridgeApplication() {
    m_bridge.reset();
}

ServiceInterface* BridgeApplication::findService() {
    frame::InterfacePtr reference;
    if (getInterfaceReference(sysctrlservice::kServiceInterfaceName, reference) < 0 || !reference) {
        return nullptr;
    }
    return static_cast<ServiceInterface*>(reference->getImplementation());
}

int32_t BridgeApplication::performStarting() try {
    DBUS_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    const int32_t status = frame::AbstractApplication::performStarting();
    if (status < 0) {
        DBUS_LOG(LOG_ERROR, "%s:%d:%s(): Parent class performStarting() returned %d.\n", status);
        return status;
    }
    m_bridge.reset(new DbusBridge([this] { return findService(); }, optionsFromEnvironment()));
    return m_bridge->start();
}
DBUS_ENTRY_GUARD(-1)

int32_t BridgeApplication::performStopping() try {
    DBUS_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    if (m_bridge) {
        m_bridge->stop();
    }
    return frame::AbstractApplication::performStopping();
}
DBUS_ENTRY_GUARD(-1)

}  // namespace dbus
}  // namespace sysctrlservice
