#ifndef ZO_HOST_HOSTSTATE_H
#define ZO_HOST_HOSTSTATE_H

// Shared by the runtime's own translation units.

#include "zo/host/Host.h"

namespace zo {
namespace host {

// A copy of the hooks in force, taken under the runtime's lock.
Hooks currentHooks();

int32_t frameStepResult(FrameStep step);

}  // namespace host
}  // namespace zo

#endif
