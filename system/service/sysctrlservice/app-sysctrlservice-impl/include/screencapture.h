#ifndef SYSCTRLSERVICE_SCREENCAPTURE_H
#define SYSCTRLSERVICE_SCREENCAPTURE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include <boost/shared_ptr.hpp>

#include "SysctrlTypes.h"
#include "zo/port/ScreenCapture.h"

namespace sysctrlservice {

// Takes one picture through the platform's capture port and stores it as a file. Made for one
// request and not shared.
class screencapture {
  public:
    // Room for 1920 x 1080 pixels of 4 bytes: the port keeps every frame within it.
    static const size_t kBufferSize = 0x800000;

    // `port` may be empty: captures then fail as "not available" and nothing is written.
    explicit screencapture(boost::shared_ptr<zo::port::ScreenCapture> port);
    ~screencapture();

    screencapture(const screencapture&) = delete;
    screencapture& operator=(const screencapture&) = delete;

    // Captures a picture of `type` into "path/name"; returns 1 when the file was written, 0
    // otherwise. The pixel buffer lives only during the call.
    int do_capture(const std::string& path, const std::string& name, CaptureType_t type);

    // The platform flag of a capture type 1 to 4; SCREEN_CAPTURE_TYPE_NONE (0) for any other.
    zo::port::screenCaptureType_enum convertType(CaptureType_t type);

    // The port's answer whether a capture of `type` can be taken now; false without a port.
    bool checkAvailable(zo::port::screenCaptureType_enum type);

    // Writes the captured frame as "path/name"; returns 1 on success, 0 on failure.
    int storeCapture(boost::shared_ptr<zo::port::screenCaptureData> data, std::string path,
                     std::string name);

    // Asks the port what it supports and keeps the answer.
    void getSupportInfo();
    // Whether `type`'s flag is in the kept support mask; false before getSupportInfo has run.
    bool checkSupport(zo::port::screenCaptureType_enum type);
    // Prints nothing.
    void printSupportInfo();

    // Whether a pixel buffer is held (only while do_capture runs).
    bool holdsBuffer() const { return m_buffer != nullptr; }

  private:
    struct FreeBytes {
        void operator()(uint8_t* bytes) const;
    };

    boost::shared_ptr<zo::port::ScreenCapture> m_capture;
    std::unique_ptr<uint8_t, FreeBytes> m_buffer;
    boost::shared_ptr<zo::port::screenCaptureSupportType> m_supportInfo;
};

}  // namespace sysctrlservice

#endif
