// Screen capture into an image file.
#include "Application.h"

namespace sysctrlservice {

int Application::cmdCaptureScreen(frame::MsgIds&, const frame::TransportInfo&, const std::string&, const std::string&, CaptureType_t) { return 0; }

}  // namespace sysctrlservice
