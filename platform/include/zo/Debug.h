#ifndef ZO_DEBUG_H
#define ZO_DEBUG_H

#include <cstdint>

namespace zo {
namespace debug {

// A level word carries a module number in its upper 16 bits and a level number in its lower 16
// bits; higher level numbers are more verbose.
inline uint32_t levelWord(uint16_t module, uint16_t level) {
    return (static_cast<uint32_t>(module) << 16) | level;
}

// True when the channel currently prints messages of this level word.
bool isEnabled(uint32_t levelWord);

// Prints one printf-formatted message on the channel. Callers check isEnabled() first.
void print(uint32_t levelWord, const char* format, ...) __attribute__((format(printf, 2, 3)));

}  // namespace debug
}  // namespace zo

#endif
