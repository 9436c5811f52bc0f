#ifndef ZO_PORT_PIER_H
#define ZO_PORT_PIER_H

#include <boost/shared_ptr.hpp>

#include "zo/port/Event.h"
#include "zo/port/Object.h"

namespace zo {
namespace port {

class Factory;

// Describes the chassis the software runs on.
class ChassisDescription : public Object {
  public:
    ChassisDescription();
    ~ChassisDescription() override;
};

// Manages the platform's subsystems.
class SubsystemManager : public Object {
  public:
    SubsystemManager();
    ~SubsystemManager() override;
};

// Delivers platform events to observers.
class EventManager : public Object {
  public:
    EventManager();
    ~EventManager() override;

    // From now on, events of `subject` are delivered to `observer`. The manager keeps both handles.
    virtual int registerObserver(boost::shared_ptr<EventSubject> subject,
                                 boost::shared_ptr<EventObserver> observer) = 0;
};

// The name under which the platform's root object is registered in the framework.
constexpr char kPierInterfaceName[] = "zorbel.lm.interfaces.port.pier";

// The platform's root object, registered in the framework as kPierInterfaceName.
class Pier : public Object {
  public:
    Pier();
    ~Pier() override;

    virtual boost::shared_ptr<ChassisDescription> getChassisDescription() = 0;
    virtual boost::shared_ptr<SubsystemManager> getSubsystemManager() = 0;
    virtual boost::shared_ptr<Factory> getFactory() = 0;
    virtual boost::shared_ptr<EventManager> getEventManager() = 0;
};

}  // namespace port
}  // namespace zo

#endif
