#ifndef ZO_CLOCK_H
#define ZO_CLOCK_H

#include <cstdint>

namespace zo {
namespace clock {

// The current UTC time in the platform's unit.
uint64_t getUtcTime();

}  // namespace clock
}  // namespace zo

#endif
