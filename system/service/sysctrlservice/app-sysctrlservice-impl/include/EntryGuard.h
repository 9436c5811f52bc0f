#ifndef SYSCTRLSERVICE_ENTRYGUARD_H
#define SYSCTRLSERVICE_ENTRYGUARD_H

#include <exception>

#include "SysctrlLog.h"

namespace sysctrlservice {

// Logs the exception being handled as "<file>:<line>:<function>(): exception: <what>" at level
// 3000 under `module` ("exception" alone for one that is not a std::exception). Call it from a
// catch handler only. Never throws: a line that cannot be written is dropped. Defined here so that
// the D-Bus bridge, which links none of the service's code, guards its ways in the same way.
inline void logCaughtException(const char* file, int line, const char* function,
                               uint16_t module = LOG_MODULE_SYSCTRL) noexcept {
    const uint32_t levelWord = zo::debug::levelWord(module, LOG_ERROR);
    try {
        if (!zo::debug::isEnabled(levelWord)) {
            return;
        }
        try {
            throw;
        } catch (const std::exception& error) {
            zo::debug::print(levelWord, "%s:%d:%s(): exception: %s\n", file, line, function,
                             error.what());
        } catch (...) {
            zo::debug::print(levelWord, "%s:%d:%s(): exception\n", file, line, function);
        }
    } catch (...) {
        // Out of memory for the line itself.
    }
}

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
#define SYSCTRL_ENTRY_GUARD(...) \
    SYSCTRL_ENTRY_GUARD_IN(::sysctrlservice::LOG_MODULE_SYSCTRL, __VA_ARGS__)

// The same guard, logging under another debug module.
#define SYSCTRL_ENTRY_GUARD_IN(module, ...)                                                     \
    catch (...) {                                                                               \
        ::sysctrlservice::logCaughtException(::sysctrlservice::logBaseName(__FILE__), __LINE__, \
                                             __func__, (module));                               \
        return __VA_ARGS__;                                                                     \
    }

#endif
