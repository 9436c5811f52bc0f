// The antenna operations: the antenna command language and LNB power.
#include "Application.h"

namespace sysctrlservice {

int Application::controlAntenna(frame::MsgIds&, const frame::TransportInfo&, const std::string&) { return 0; }

int Application::setLnbPower(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

}  // namespace sysctrlservice
