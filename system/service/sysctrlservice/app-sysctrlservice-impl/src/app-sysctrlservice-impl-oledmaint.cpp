// OLED panel maintenance runs on a thread of their own.
#include "Application.h"

namespace sysctrlservice {

int Application::controlOledMaint(frame::MsgIds&, const frame::TransportInfo&, unsigned int) { return 0; }

void* Application::oledMaintThread(void*) { return nullptr; }

}  // namespace sysctrlservice
