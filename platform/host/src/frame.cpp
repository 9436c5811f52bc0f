#include "frame/AbstractApplication.h"

#include <map>
#include <mutex>

#include "HostState.h"

namespace zo {
namespace host {
namespace {

struct Registry {
    std::mutex mutex;
    std::map<std::string, frame::InterfacePtr> interfaces;
    int32_t stepResults[4] = {0, 0, 0, 0};
};

Registry& registry() {
    static Registry instance;
    return instance;
}

}  // namespace

int registerInterface(const std::string& name, void* implementation) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    if (implementation == nullptr) {
        return -22;
    }
    if (r.interfaces.count(name) != 0) {
        return -17;
    }
    r.interfaces[name].reset(new frame::Interface(name, implementation));
    return 0;
}

int unregisterInterface(const std::string& name) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    return r.interfaces.erase(name) != 0 ? 0 : -2;
}

void* lookupInterface(const std::string& name) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    const auto found = r.interfaces.find(name);
    return found == r.interfaces.end() ? nullptr : found->second->getImplementation();
}

static int getReference(const std::string& name, frame::InterfacePtr& reference) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    const auto found = r.interfaces.find(name);
    if (found == r.interfaces.end()) {
        return -2;
    }
    reference = found->second;
    return 0;
}

void setFrameStepResult(FrameStep step, int32_t result) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    r.stepResults[static_cast<int>(step)] = result;
}

void resetFrameStepResults() {
    for (FrameStep step : {FrameStep::PerformSetupDone, FrameStep::PerformStarting,
                           FrameStep::PerformStopping, FrameStep::RegisterInterface}) {
        setFrameStepResult(step, 0);
    }
}

int32_t frameStepResult(FrameStep step) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    return r.stepResults[static_cast<int>(step)];
}

}  // namespace host
}  // namespace zo

namespace frame {

using zo::host::FrameStep;
using zo::host::frameStepResult;

Interface::Interface(const std::string& name, void* implementation)
    : m_name(name), m_implementation(implementation) {}

Interface::~Interface() = default;

const std::string& Interface::getName() const {
    return m_name;
}

void* Interface::getImplementation() const {
    return m_implementation;
}

AbstractProcessMember::AbstractProcessMember() = default;
AbstractProcessMember::~AbstractProcessMember() = default;

int32_t AbstractProcessMember::attachProcess() {
    return 0;
}

int32_t AbstractProcessMember::detachProcess() {
    return 0;
}

int32_t AbstractProcessMember::setupDone() {
    return performSetupDone();
}

int32_t AbstractProcessMember::start() {
    return performStarting();
}

int32_t AbstractProcessMember::stop() {
    return performStopping();
}

int32_t AbstractProcessMember::getServiceId() {
    return 0;
}

// This runtime has no event loop of its own: members receive platform events through observers.
int32_t AbstractProcessMember::deliverEvent(int32_t, void*) {
    return -38;
}

int32_t AbstractProcessMember::handleEvent(int32_t, void*) {
    return -38;
}

int32_t AbstractProcessMember::registerEventHandler(int32_t) {
    return -38;
}

int32_t AbstractProcessMember::unregisterEventHandler(int32_t) {
    return -38;
}

int32_t AbstractProcessMember::deliverInternalEvent(int32_t, void*) {
    return -38;
}

int32_t AbstractProcessMember::postEvent(int32_t, void*) {
    return -38;
}

int32_t AbstractProcessMember::postInternalEvent(int32_t, void*) {
    return -38;
}

int32_t AbstractProcessMember::scheduleEvents() {
    return -38;
}

int32_t AbstractProcessMember::performSetupDone() {
    return frameStepResult(FrameStep::PerformSetupDone);
}

int32_t AbstractProcessMember::performStarting() {
    return frameStepResult(FrameStep::PerformStarting);
}

int32_t AbstractProcessMember::performStopping() {
    return frameStepResult(FrameStep::PerformStopping);
}

int32_t AbstractProcessMember::getInterfaceReference(const std::string& name,
                                                     InterfacePtr& reference) {
    return zo::host::getReference(name, reference);
}

int32_t AbstractProcessMember::registerInterface(const std::string& name, void* implementation) {
    const int32_t forced = frameStepResult(FrameStep::RegisterInterface);
    if (forced < 0) {
        return forced;
    }
    return zo::host::registerInterface(name, implementation);
}

int32_t AbstractProcessMember::unregisterInterface(const std::string& name) {
    return zo::host::unregisterInterface(name);
}

AbstractApplication::AbstractApplication() = default;
AbstractApplication::~AbstractApplication() = default;

int32_t AbstractApplication::performSetupDone() {
    return AbstractProcessMember::performSetupDone();
}

int32_t AbstractApplication::performStarting() {
    return AbstractProcessMember::performStarting();
}

int32_t AbstractApplication::performStopping() {
    return AbstractProcessMember::performStopping();
}

zo::Mutex& AbstractApplication::getApplicationLock() {
    return m_applicationLock;
}

}  // namespace frame
