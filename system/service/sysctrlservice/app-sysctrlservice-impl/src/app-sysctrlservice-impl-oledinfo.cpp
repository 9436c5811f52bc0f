// OLED panel information, version, errors and operating-time reports.
#include "Application.h"

namespace sysctrlservice {

int Application::requestOledPanelInfo(frame::MsgIds&, const frame::TransportInfo&) { return 0; }

int Application::updateOledPanelInfo() { return 0; }

int Application::getPanelVersion(frame::MsgIds&, const frame::TransportInfo&) { return 0; }

int Application::requestOptimeInfo(frame::MsgIds&, const frame::TransportInfo&) { return 0; }

void Application::oledErrorCallback(uint32_t, void*) {}

}  // namespace sysctrlservice
