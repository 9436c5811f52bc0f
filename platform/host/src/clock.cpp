#include "zo/Clock.h"

#include <ctime>

#include "HostState.h"

namespace zo {
namespace host {

uint64_t systemUtcTime() {
    return static_cast<uint64_t>(std::time(nullptr));
}

}  // namespace host

namespace clock {

uint64_t getUtcTime() {
    const host::Hooks hooks = host::currentHooks();
    return hooks.getUtcTime ? hooks.getUtcTime() : host::systemUtcTime();
}

}  // namespace clock
}  // namespace zo
