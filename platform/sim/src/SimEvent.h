#ifndef SIM_SIMEVENT_H
#define SIM_SIMEVENT_H

#include "sim/SimSet.h"
#include "zo/port/Event.h"
#include "zo/port/Pier.h"

namespace sim {

// An event subject of a type the service does not expect.
class SimOtherSubject : public zo::port::EventSubject {
  public:
    SimOtherSubject();
};

class SimEventManager : public zo::port::EventManager, public SimObject {
  public:
    explicit SimEventManager(SimSet& set);

    int registerObserver(boost::shared_ptr<zo::port::EventSubject> subject,
                         boost::shared_ptr<zo::port::EventObserver> observer) override;

    struct Registration {
        boost::shared_ptr<zo::port::EventSubject> subject;
        boost::shared_ptr<zo::port::EventObserver> observer;
    };
    // Under the set's lock.
    std::vector<Registration> registrations() const;
    // Forgets the registered observers too.
    void reset() override;

  private:
    std::vector<Registration> m_registrations;
};

}  // namespace sim

#endif
