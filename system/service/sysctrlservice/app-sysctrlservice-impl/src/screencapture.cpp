// One screen capture: the capture port fills a buffer, PictureGenerator stores it.
#include "screencapture.h"

#include <cstdlib>

#include "SysctrlLog.h"
#include "picturegenerator.h"

// Levels: progress 4000; the port's refusals 1000; bad input and a file not written 3000.

namespace sysctrlservice {

void screencapture::FreeBytes::operator()(uint8_t* bytes) const {
    std::free(bytes);
}

screencapture::screencapture(boost::shared_ptr<zo::port::ScreenCapture> port) : m_capture(port) {}

screencapture::~screencapture() {}

int screencapture::do_capture(const std::string& path, const std::string& name,
                              CaptureType_t type) {
    const zo::port::screenCaptureType_enum flag = convertType(type);
    if (!checkAvailable(flag)) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Fail: Current is not available\n");
        return 0;
    }

    boost::shared_ptr<zo::port::screenCaptureData> data(new zo::port::screenCaptureData());
    // calloc: zeroed pages that the port's frame is the first to touch.
    m_buffer.reset(static_cast<uint8_t*>(std::calloc(kBufferSize, 1)));
    if (!m_buffer) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Fail: Capture failed!\n");
        return 0;
    }
    data->buffer = m_buffer.get();

    if (!m_capture->capture(flag, data)) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Fail: Capture failed!\n");
        m_buffer.reset();
        return 0;
    }
    // Logged before the file is stored, so it also precedes a storing failure.
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Success: Capture Success. path: %s name: %s\n",
                path.c_str(), name.c_str());
    const int stored = storeCapture(data, path, name);
    m_buffer.reset();
    return stored;
}

zo::port::screenCaptureType_enum screencapture::convertType(CaptureType_t type) {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): In convertType type :%d.\n", static_cast<int>(type));
    switch (type) {
        case CAPTURE_TYPE_1:
            return zo::port::SCREEN_CAPTURE_TYPE_1;
        case CAPTURE_TYPE_2:
            return zo::port::SCREEN_CAPTURE_TYPE_2;
        case CAPTURE_TYPE_3:
            return zo::port::SCREEN_CAPTURE_TYPE_3;
        case CAPTURE_TYPE_4:
            return zo::port::SCREEN_CAPTURE_TYPE_4;
        default:
            break;
    }
    SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Error: can't convertType\n");
    return zo::port::SCREEN_CAPTURE_TYPE_NONE;
}

bool screencapture::checkAvailable(zo::port::screenCaptureType_enum type) {
    if (!m_capture) {
        return false;
    }
    return m_capture->isAvailable(type);
}

int screencapture::storeCapture(boost::shared_ptr<zo::port::screenCaptureData> data,
                                std::string path, std::string name) {
    PictureGenerator generator(data);
    if (generator.generate(path, name) == -1) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): ERROR: can't generatePNG\n");
        return 0;
    }
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s():  generate success\n");
    return 1;
}

void screencapture::getSupportInfo() {
    if (!m_capture) {
        return;
    }
    boost::shared_ptr<zo::port::screenCaptureSupportType> info(
        new zo::port::screenCaptureSupportType());
    m_capture->getSupportInfo(info);
    m_supportInfo = info;
}

bool screencapture::checkSupport(zo::port::screenCaptureType_enum type) {
    if (!m_supportInfo) {
        return false;
    }
    return (m_supportInfo->supportedTypes & type) != 0;
}

void screencapture::printSupportInfo() {}

}  // namespace sysctrlservice
