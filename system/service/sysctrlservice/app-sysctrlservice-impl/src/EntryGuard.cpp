#include "EntryGuard.h"

#include <exception>

namespace sysctrlservice {

void logCaughtException(const char* file, int line, const char* function) noexcept {
    const uint32_t levelWord = zo::debug::levelWord(LOG_MODULE_SYSCTRL, LOG_ERROR);
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
