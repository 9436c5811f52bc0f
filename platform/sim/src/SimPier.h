#ifndef SIM_SIMPIER_H
#define SIM_SIMPIER_H

#include "sim/SimSet.h"
#include "zo/port/Pier.h"

namespace sim {

class SimChassisDescription : public zo::port::ChassisDescription, public SimObject {
  public:
    explicit SimChassisDescription(SimSet& set);
};

class SimSubsystemManager : public zo::port::SubsystemManager, public SimObject {
  public:
    explicit SimSubsystemManager(SimSet& set);
};

// The platform's root object, registered under the Pier's interface name while the set lives.
class SimPier : public zo::port::Pier, public SimObject {
  public:
    SimPier(SimSet& set, SimSet::Objects& objects);

    boost::shared_ptr<zo::port::ChassisDescription> getChassisDescription() override;
    boost::shared_ptr<zo::port::SubsystemManager> getSubsystemManager() override;
    boost::shared_ptr<zo::port::Factory> getFactory() override;
    boost::shared_ptr<zo::port::EventManager> getEventManager() override;

  private:
    SimSet::Objects& m_objects;
};

}  // namespace sim

#endif
