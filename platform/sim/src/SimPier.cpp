#include "SimPier.h"

#include <algorithm>
#include <cstring>

#include "HandOut.h"
#include "SimSetObjects.h"

namespace sim {

SimChassisDescription::SimChassisDescription(SimSet& set)
    : SimObject(set, "ChassisDescription", {}, {}) {}

SimSubsystemManager::SimSubsystemManager(SimSet& set)
    : SimObject(set, "SubsystemManager", {}, {}) {}

SimPier::SimPier(SimSet& set, SimSet::Objects& objects)
    : SimObject(set, "Pier",
                {{"getChassisDescription", Kind::Object, {}},
                 {"getSubsystemManager", Kind::Object, {}},
                 {"getFactory", Kind::Object, {}},
                 {"getEventManager", Kind::Object, {}}},
                {}),
      m_objects(objects) {}

boost::shared_ptr<zo::port::ChassisDescription> SimPier::getChassisDescription() {
    return handOut(*this, "getChassisDescription", m_objects.chassisDescription);
}

boost::shared_ptr<zo::port::SubsystemManager> SimPier::getSubsystemManager() {
    return handOut(*this, "getSubsystemManager", m_objects.subsystemManager);
}

boost::shared_ptr<zo::port::EventManager> SimPier::getEventManager() {
    return handOut(*this, "getEventManager", m_objects.eventManager);
}

boost::shared_ptr<zo::port::Factory> SimPier::getFactory() {
    return handOut(*this, "getFactory", m_objects.factory);
}

}  // namespace sim
