// Screen capture into an image file.
#include "Application.h"

#include "SysctrlLog.h"
#include "screencapture.h"

namespace sysctrlservice {

// Without a capture port the controller reports the capture as not available.
int Application::cmdCaptureScreen(frame::MsgIds&, const frame::TransportInfo&,
                                  const std::string& path, const std::string& name,
                                  CaptureType_t type) {
    SYSCTRL_LOG_IN(LOG_MODULE_CAPTURE, LOG_TRACE, "%s:%d:%s(): Called.\n");
    // The outcome shows in the log and in the file system only; the caller always gets 0.
    screencapture capture(m_screenCapture);
    capture.do_capture(path, name, type);
    return 0;
}

}  // namespace sysctrlservice
