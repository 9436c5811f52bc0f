#include "HostState.h"

#include <mutex>

namespace zo {
namespace host {
namespace {

std::mutex& hooksMutex() {
    static std::mutex mutex;
    return mutex;
}

Hooks& hooks() {
    static Hooks instance;
    return instance;
}

}  // namespace

void setHooks(const Hooks& newHooks) {
    std::lock_guard<std::mutex> lock(hooksMutex());
    hooks() = newHooks;
}

void clearHooks() {
    setHooks(Hooks());
}

Hooks currentHooks() {
    std::lock_guard<std::mutex> lock(hooksMutex());
    return hooks();
}

}  // namespace host
}  // namespace zo
