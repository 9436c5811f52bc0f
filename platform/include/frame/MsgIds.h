#ifndef FRAME_MSGIDS_H
#define FRAME_MSGIDS_H

#include <cstdint>

namespace frame {

// Identifies one remote call, so that a reply can be matched to its request. Opaque to services.
struct MsgIds {
    int32_t word[2];
};

}  // namespace frame

#endif
