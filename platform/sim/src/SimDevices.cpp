// The simulated objects' operations that are more than a few lines.
#include "SimDevices.h"

#include "TestCard.h"
#include "zo/host/Host.h"

namespace sim {

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

int SimSigner::signMessage(int key, const uint8_t* message, uint32_t messageLength,
                           uint8_t* signature, uint32_t signatureLength) {
    const std::string text(reinterpret_cast<const char*>(message),
                           message != nullptr ? messageLength : 0);
    Call call(*this, "signMessage", {key, textOrHex(text), messageLength, signatureLength});
    // FNV-1a over the key and the message seeds a xorshift stream.
    uint64_t hash = 1469598103934665603ULL;
    for (uint8_t byte : stateAs<std::vector<uint8_t>>("key")) {
        hash = (hash ^ byte) * 1099511628211ULL;
    }
    for (char byte : text) {
        hash = (hash ^ static_cast<uint8_t>(byte)) * 1099511628211ULL;
    }
    std::vector<uint8_t> own(signatureLength);
    for (uint8_t& byte : own) {
        hash ^= hash << 13;
        hash ^= hash >> 7;
        hash ^= hash << 17;
        byte = static_cast<uint8_t>(hash >> 24);
    }
    const std::vector<uint8_t> bytes = call.output(own);
    if (signature != nullptr) {
        std::copy(bytes.begin(), bytes.begin() + std::min<size_t>(bytes.size(), signatureLength),
                  signature);
    }
    return call.result(0);
}

int SimConfig::readInt(const std::string& file, const std::string& section, const std::string& key,
                       int& value) {
    Call call(*this, "readInt", {file, section, key});
    int read = value;
    const int found = zo::host::readIniInt(file, section, key, read);
    const bool scripted = call.hasScriptedOutput();
    const int filled = call.output(read);
    const int status = call.result(found);
    if (found != 0 || scripted) {
        value = filled;
    }
    return status;
}

int SimThreads::create(zo::thread::Entry entry, void* argument, int priority, const char* name) {
    Call call(*this, "create", {name != nullptr ? name : "", priority});
    if (call.hasScriptedResult()) {
        return call.result(0);
    }
    return call.result(zo::host::startThread(entry, argument, name));
}

uint64_t SimClock::getUtcTime() {
    Call call(*this, "getUtcTime");
    const json& fixed = state("utcTime");
    const uint64_t own = fixed.is_number() ? fixed.get<uint64_t>() : zo::host::systemUtcTime();
    return call.result(own);
}

}  // namespace sim
