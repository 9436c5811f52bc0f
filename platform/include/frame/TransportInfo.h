#ifndef FRAME_TRANSPORTINFO_H
#define FRAME_TRANSPORTINFO_H

#include <cstdint>

namespace frame {

// Identifies the sender of a remote call and the way back to it. Opaque to services.
struct TransportInfo {
    int32_t word[7];
};

}  // namespace frame

#endif
