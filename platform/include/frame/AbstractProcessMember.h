#ifndef FRAME_ABSTRACTPROCESSMEMBER_H
#define FRAME_ABSTRACTPROCESSMEMBER_H

#include <cstdint>
#include <string>

#include "frame/Interface.h"

namespace frame {

// A member of a framework process. The framework drives it through setupDone(), start() and
// stop(), each of which runs the matching perform step that a member overrides. Status values are
// 0 or positive for success and negative for failure.
class AbstractProcessMember {
  public:
    AbstractProcessMember();
    virtual ~AbstractProcessMember();

    AbstractProcessMember(const AbstractProcessMember&) = delete;
    AbstractProcessMember& operator=(const AbstractProcessMember&) = delete;

    virtual int32_t attachProcess();
    virtual int32_t detachProcess();
    virtual int32_t setupDone();
    virtual int32_t start();
    virtual int32_t stop();
    virtual int32_t getServiceId();
    virtual int32_t deliverEvent(int32_t eventId, void* data);
    virtual int32_t handleEvent(int32_t eventId, void* data);
    virtual int32_t registerEventHandler(int32_t eventId);
    virtual int32_t unregisterEventHandler(int32_t eventId);
    virtual int32_t deliverInternalEvent(int32_t eventId, void* data);
    virtual int32_t postEvent(int32_t eventId, void* data);
    virtual int32_t postInternalEvent(int32_t eventId, void* data);
    virtual int32_t scheduleEvents();

  protected:
    virtual int32_t performSetupDone();
    virtual int32_t performStarting();
    virtual int32_t performStopping();

    // Looks up an interface registered by any member of the process. Negative when there is none.
    int32_t getInterfaceReference(const std::string& name, InterfacePtr& reference);
    // Makes `implementation` reachable under `name`. Negative when the name is taken.
    int32_t registerInterface(const std::string& name, void* implementation);
    // Withdraws what this member registered under `name`. Negative when it registered nothing.
    int32_t unregisterInterface(const std::string& name);
};

}  // namespace frame

#endif
