#include "SimScreenCapture.h"

#include <algorithm>
#include <cstring>

#include "TestCard.h"

namespace sim {

SimScreenCapture::SimScreenCapture(SimSet& set)
    : SimObject(set, "ScreenCapture",
                {{"getSupportInfo", Kind::Int, {Kind::SupportInfo}},
                 {"isAvailable", Kind::Bool, {}},
                 {"capture", Kind::Bool, {Kind::UInt, Kind::UInt}}},
                {{"availableTypes", Kind::UInt, 30},
                 {"width", Kind::UInt, 64},
                 {"height", Kind::UInt, 36},
                 {"pattern", Kind::String, "gradient"},
                 {"color", Kind::Bytes, "102030ff"}}) {}

int SimScreenCapture::getSupportInfo(boost::shared_ptr<zo::port::screenCaptureSupportType> info) {
    Call call(*this, "getSupportInfo");
    zo::port::screenCaptureSupportType own{stateAs<unsigned int>("availableTypes"), 1920, 1080};
    const json filled = call.output(json(own));
    if (info) {
        filled.get_to(*info);
    }
    return call.result(0);
}

bool SimScreenCapture::isAvailable(zo::port::screenCaptureType_enum type) {
    Call call(*this, "isAvailable", {static_cast<unsigned int>(type)});
    return call.result((stateAs<unsigned int>("availableTypes") & type) != 0);
}

bool SimScreenCapture::capture(zo::port::screenCaptureType_enum type,
                               boost::shared_ptr<zo::port::screenCaptureData> data) {
    Call call(*this, "capture", {static_cast<unsigned int>(type)});
    const uint32_t width = call.output(stateAs<unsigned int>("width"));
    const uint32_t height = call.output(stateAs<unsigned int>("height"));
    const uint64_t bytes = static_cast<uint64_t>(width) * height * 4;
    // A real port never writes beyond the buffer it was given.
    const bool fits = data && data->buffer != nullptr && bytes <= kBufferCapacity;
    const bool captured =
        call.result(fits && (stateAs<unsigned int>("availableTypes") & type) != 0);
    if (!captured || !fits) {
        return false;
    }
    data->width = width;
    data->height = height;
    data->stride = width * 4;

    const std::string pattern = stateAs<std::string>("pattern");
    if (pattern == "none") {
        return true;  // the frame is what the buffer held
    }
    if (pattern == "testcard") {
        drawTestCard(data->buffer, width, height, data->stride);
        return true;
    }
    std::vector<uint8_t> color = stateAs<std::vector<uint8_t>>("color");
    color.resize(4, 0xFF);
    uint8_t* pixel = data->buffer;
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x, pixel += 4) {
            if (pattern == "solid") {
                std::copy(color.begin(), color.end(), pixel);
            } else if (pattern == "checker") {
                const uint8_t level = ((x / 8 + y / 8) % 2) != 0 ? 0xFF : 0x00;
                pixel[0] = pixel[1] = pixel[2] = level;
                pixel[3] = 0xFF;
            } else {
                pixel[0] = static_cast<uint8_t>(width > 1 ? x * 255 / (width - 1) : 0);
                pixel[1] = static_cast<uint8_t>(height > 1 ? y * 255 / (height - 1) : 0);
                pixel[2] = static_cast<uint8_t>(x + y);
                pixel[3] = 0xFF;
            }
        }
    }
    return true;
}

}  // namespace sim
