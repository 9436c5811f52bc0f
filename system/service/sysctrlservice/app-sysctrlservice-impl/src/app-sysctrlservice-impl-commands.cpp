// The text-command operations: OPC, UART, far field, GPIO, I2C, HDMI and the shell.
#include "Application.h"

namespace sysctrlservice {

int Application::controlOpc(frame::MsgIds&, const frame::TransportInfo&, const std::string&) { return 0; }

int Application::controlUart(frame::MsgIds&, const frame::TransportInfo&, const std::string&, const std::string&) { return 0; }

int Application::controlFarField(frame::MsgIds&, const frame::TransportInfo&, const std::string&, const std::string&) { return 0; }

int Application::registerFarFieldCallback(frame::MsgIds&, const frame::TransportInfo&, int, const std::string&) { return 0; }

int Application::unregisterFarFieldCallback(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::setGpio(frame::MsgIds&, const frame::TransportInfo&, const std::string&) { return 0; }

int Application::getGpio(frame::MsgIds&, const frame::TransportInfo&, const std::string&) { return 0; }

int Application::controlIic(frame::MsgIds&, const frame::TransportInfo&, const std::string&) { return 0; }

int Application::controlHdmi(frame::MsgIds&, const frame::TransportInfo&, const std::string&) { return 0; }

int Application::executeZoshell(frame::MsgIds&, const frame::TransportInfo&, const std::string&) { return 0; }

}  // namespace sysctrlservice
