// OLED panel factory tuning: the AS run, manual gains and the LEA and CPC switches.
#include "Application.h"

namespace sysctrlservice {

int Application::startOledAs(frame::MsgIds&, const frame::TransportInfo&) { return 0; }

int Application::saveOledManualGain(frame::MsgIds&, const frame::TransportInfo&, unsigned int, unsigned int, unsigned int, unsigned int) { return -1; }

int Application::setOledManualGainSetting(frame::MsgIds&, const frame::TransportInfo&, unsigned int, unsigned int) { return -1; }

int Application::getOledManualGainSetting(frame::MsgIds&, const frame::TransportInfo&, unsigned int) { return 0; }

int Application::setOledManualGainEnable(frame::MsgIds&, const frame::TransportInfo&, int) { return -1; }

int Application::getOledManualGainEnable(frame::MsgIds&, const frame::TransportInfo&) { return 0; }

int Application::setOledLeaEnable(frame::MsgIds&, const frame::TransportInfo&, unsigned char) { return 0; }

int Application::setOledCpcEnable(frame::MsgIds&, const frame::TransportInfo&, unsigned char) { return 0; }

}  // namespace sysctrlservice
