// Screen capture into an image file.
#include "Application.h"

#include "EntryGuard.h"
#include "SysctrlLog.h"
#include "screencapture.h"

namespace sysctrlservice {

// Without a capture port the controller reports the capture as not available.
int Application::cmdCaptureScreen(frame::MsgIds&, const frame::TransportInfo&,
                                  const std::string& path, const std::string& name,
                                  CaptureType_t type) try {
    SYSCTRL_LOG_IN(LOG_MODULE_CAPTURE, LOG_TRACE, "%s:%d:%s(): Called.\n");
    // The outcome shows in the log and in the file system only; the caller always gets 0.
    screencapture capture(m_screenCapture);
    capture.do_capture(path, name, type);
    return 0;
}
// Even a capture that ran out of memory is only logged.
SYSCTRL_ENTRY_GUARD(0)

}  // namespace sysctrlservice
