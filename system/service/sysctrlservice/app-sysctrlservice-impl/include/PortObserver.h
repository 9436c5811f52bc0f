#ifndef SYSCTRLSERVICE_PORTOBSERVER_H
#define SYSCTRLSERVICE_PORTOBSERVER_H

#include <string>

#include "zo/port/Event.h"

namespace sysctrlservice {

class Application;

// Passes the platform events of one subject on to the application.
class PortObserver : public zo::port::EventObserver {
  public:
    // `application` is not owned and may be null, in which case events are ignored.
    PortObserver(const std::string& name, Application* application);
    ~PortObserver() override;

    // Returns what Application::notify returns, 0 without an application, or -1 (logged) when
    // handling the event threw.
    int onEvent(zo::port::eventClass_enum eventClass,
                boost::shared_ptr<zo::port::EventSubject> subject, int eventId) override;

  private:
    Application* m_application;
};

}  // namespace sysctrlservice

#endif
