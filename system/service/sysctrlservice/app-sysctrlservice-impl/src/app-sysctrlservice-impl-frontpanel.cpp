// Front-panel LEDs, remote control and keypad, and the retired compatibility operations.
#include "Application.h"

namespace sysctrlservice {

int Application::ctrlLedColorState(frame::MsgIds&, const frame::TransportInfo&, int, int, int) { return 0; }

int Application::ctrluseCaseShow(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::ctrluseCaseHide(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::ctrlGpioState(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::ctrlLedFlicker(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::ctrlLogoLedGpioStatus(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::setRemoteControlCode(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::setKeypadLock(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::setQuentaRCSwitch(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::controlPowerMode(frame::MsgIds&, const frame::TransportInfo&, PowerMode_t) { return 0; }

int Application::setOsdOpacity(frame::MsgIds&, const frame::TransportInfo&, int, int) { return 0; }

int Application::getOsdOpacity(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::setQuietBootFlag(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

}  // namespace sysctrlservice
