// System restart, panel power and the boot and hardware options.
#include "Application.h"

namespace sysctrlservice {

int Application::restartSystem(frame::MsgIds&, const frame::TransportInfo&) { return 0; }

int Application::controlPanelPower(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::setBootEnvDbtable(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::controlComEnabled(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::controlUartState(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::setGpioStatus(frame::MsgIds&, const frame::TransportInfo&, int, int) { return 0; }

}  // namespace sysctrlservice
