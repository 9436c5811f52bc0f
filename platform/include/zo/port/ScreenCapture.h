#ifndef ZO_PORT_SCREENCAPTURE_H
#define ZO_PORT_SCREENCAPTURE_H

#include <cstdint>

#include <boost/shared_ptr.hpp>

#include "zo/port/Object.h"

namespace zo {
namespace port {

// What a capture takes; the flags can be combined in a support mask.
enum screenCaptureType_enum : uint32_t {
    SCREEN_CAPTURE_TYPE_NONE = 0,
    SCREEN_CAPTURE_TYPE_1 = 2,
    SCREEN_CAPTURE_TYPE_2 = 4,
    SCREEN_CAPTURE_TYPE_3 = 8,
    SCREEN_CAPTURE_TYPE_4 = 16,
};

// What the capture port can do.
struct screenCaptureSupportType {
    uint32_t supportedTypes;  // mask of screenCaptureType_enum flags
    uint32_t maxWidth;
    uint32_t maxHeight;
};

// One captured frame. The caller provides the buffer; the port fills it with width x height pixels
// of 4 bytes each (blue, green, red, alpha), top row first, rows without padding.
struct screenCaptureData {
    uint8_t* buffer;
    uint32_t stride;  // set by the port
    uint32_t width;
    uint32_t height;
};

// Takes pictures of what the set shows.
class ScreenCapture : public Object {
  public:
    ScreenCapture();
    ~ScreenCapture() override;

    virtual int getSupportInfo(boost::shared_ptr<screenCaptureSupportType> info) = 0;
    virtual bool isAvailable(screenCaptureType_enum type) = 0;
    virtual bool capture(screenCaptureType_enum type,
                         boost::shared_ptr<screenCaptureData> data) = 0;
};

}  // namespace port
}  // namespace zo

#endif
