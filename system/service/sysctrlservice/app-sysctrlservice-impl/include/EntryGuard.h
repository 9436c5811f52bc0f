#ifndef SYSCTRLSERVICE_ENTRYGUARD_H
#define SYSCTRLSERVICE_ENTRYGUARD_H

#include "SysctrlLog.h"

namespace sysctrlservice {

// Logs the exception being handled as "<file>:<line>:<function>(): exception: <what>" at level
// 3000 ("exception" alone for one that is not a std::exception). Call it from a catch handler
// only. Never throws: a line that cannot be written is dropped.
void logCaughtException(const char* file, int line, const char* function) noexcept;

}  // namespace sysctrlservice

// The guard at every way into the service: the remote operations, the life cycle, the platform's
// event and error callbacks, the maintenance thread and the plug-in's entries. Each is written as
// a function-try-block whose handler is this macro:
//
//     int Application::readEarom(...) try {
//         ...
//     }
//     SYSCTRL_ENTRY_GUARD(kStatusFailed)
//
// An exception from anything inside (std::bad_alloc for a caller-sized text, a platform object
// that throws) is logged under the function's name and the function returns the given value
// instead; nothing escapes into the RPC layer or onto a platform thread. A void function passes
// nothing. Clients get no result for a call that ended here: it had none to give.
#define SYSCTRL_ENTRY_GUARD(...)                                                                \
    catch (...) {                                                                               \
        ::sysctrlservice::logCaughtException(::sysctrlservice::logBaseName(__FILE__), __LINE__, \
                                             __func__);                                         \
        return __VA_ARGS__;                                                                     \
    }

#endif
