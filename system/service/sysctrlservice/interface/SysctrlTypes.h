#ifndef SYSCTRLSERVICE_SYSCTRLTYPES_H
#define SYSCTRLSERVICE_SYSCTRLTYPES_H

#include <cstdint>
#include <string>

namespace sysctrlservice {

// Power modes of the retired controlPowerMode operation.
enum PowerMode_t : int32_t {
    POWER_MODE_ON = 0,
    POWER_MODE_STANDBY = 1,
    POWER_MODE_OFF = 2,
};

// What cmdCaptureScreen takes; values 1 to 4 are valid. Both enumerations carry any 32-bit value
// a caller sends, so that an invalid one can be recognised rather than being undefined.
enum CaptureType_t : int32_t {
    CAPTURE_TYPE_NONE = 0,
    CAPTURE_TYPE_1 = 1,
    CAPTURE_TYPE_2 = 2,
    CAPTURE_TYPE_3 = 3,
    CAPTURE_TYPE_4 = 4,
};

// One secure fuse item as it crosses the remote interface.
struct fuseitemcontent1_t {
    std::string name;
    std::string value;
};

// A snapshot of the operating-time counters 0 to 4 and the counters' text.
struct OptimeInfo {
    uint32_t time[5] = {0, 0, 0, 0, 0};
    std::string text;
};

}  // namespace sysctrlservice

#endif
