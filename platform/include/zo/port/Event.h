#ifndef ZO_PORT_EVENT_H
#define ZO_PORT_EVENT_H

#include <cstdint>

#include "zo/port/Object.h"

namespace zo {
namespace port {

// The classes of platform events; an event's id is a bit set whose meaning belongs to its class.
enum eventClass_enum : int32_t {
    EVENT_CLASS_NONE = 0,
    EVENT_CLASS_OPERATION_HOURS = 1,
    EVENT_CLASS_OLED_PANEL = 25,
};

// An object whose changes are announced as events.
class EventSubject : public Object {
  public:
    explicit EventSubject(const std::string& className);
    ~EventSubject() override;
};

// Receives the events of the subjects it was registered with (see EventManager). The name given at
// construction is its class name.
class EventObserver : public Object {
  public:
    explicit EventObserver(const std::string& name);
    ~EventObserver() override;

    // Called on the event manager's thread for each event of a registered subject.
    virtual int onEvent(eventClass_enum eventClass, boost::shared_ptr<EventSubject> subject,
                        int eventId) = 0;
};

}  // namespace port
}  // namespace zo

#endif
