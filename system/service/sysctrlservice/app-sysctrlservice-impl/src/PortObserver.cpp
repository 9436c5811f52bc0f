#include "PortObserver.h"

#include "Application.h"
#include "EntryGuard.h"
#include "StatusCodes.h"

namespace sysctrlservice {

PortObserver::PortObserver(const std::string& name, Application* application)
    : zo::port::EventObserver(name), m_application(application) {}

PortObserver::~PortObserver() = default;

int PortObserver::onEvent(zo::port::eventClass_enum eventClass,
                          boost::shared_ptr<zo::port::EventSubject> subject, int eventId) try {
    if (m_application == nullptr) {
        return 0;
    }
    return m_application->notify(eventClass, subject, eventId);
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

}  // namespace sysctrlservice
