#include "SimSetterDevice.h"

#include <algorithm>
#include <cstring>

namespace sim {

int SimSetterDevice::store(const char* operation, const char* key, const json& args) {
    Call call(*this, operation, args);
    const int status = call.result(0);
    if (status == 0) {
        state(key) = args.size() == 1 ? args[0] : args;
    }
    return status;
}

}  // namespace sim
