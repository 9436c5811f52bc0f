#include "zo/Debug.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <vector>

#include "zo/host/Host.h"

namespace zo {
namespace {

std::atomic<uint16_t> g_maxLevel{0xFFFF};

std::mutex& sinkMutex() {
    static std::mutex mutex;
    return mutex;
}

host::DebugSink& sink() {
    static host::DebugSink instance;
    return instance;
}

}  // namespace

namespace debug {

bool isEnabled(uint32_t levelWord) {
    return (levelWord & 0xFFFF) <= g_maxLevel.load(std::memory_order_relaxed);
}

void print(uint32_t levelWord, const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string text;
    if (length > 0) {
        std::vector<char> buffer(static_cast<size_t>(length) + 1);
        std::vsnprintf(buffer.data(), buffer.size(), format, args);
        text.assign(buffer.data(), static_cast<size_t>(length));
    }
    va_end(args);

    host::DebugSink current;
    {
        std::lock_guard<std::mutex> lock(sinkMutex());
        current = sink();
    }
    if (current) {
        current(levelWord, text);
        return;
    }
    std::fprintf(stderr, "[%u/%u] %s", levelWord >> 16, levelWord & 0xFFFF, text.c_str());
}

}  // namespace debug

namespace host {

void setDebugSink(DebugSink newSink) {
    std::lock_guard<std::mutex> lock(sinkMutex());
    sink() = std::move(newSink);
}

void setDebugThreshold(uint16_t maxLevel) {
    g_maxLevel.store(maxLevel, std::memory_order_relaxed);
}

DebugSink debugSink() {
    std::lock_guard<std::mutex> lock(sinkMutex());
    return sink();
}

uint16_t debugThreshold() {
    return g_maxLevel.load(std::memory_order_relaxed);
}

}  // namespace host
}  // namespace zo
