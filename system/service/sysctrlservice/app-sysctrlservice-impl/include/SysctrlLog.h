#ifndef SYSCTRLSERVICE_SYSCTRLLOG_H
#define SYSCTRLSERVICE_SYSCTRLLOG_H

#include <cstdint>
#include <cstring>

#include "zo/Debug.h"

namespace sysctrlservice {

// Debug module numbers of the service's messages.
enum LogModule : uint16_t {
    LOG_MODULE_SYSCTRL = 253,
    LOG_MODULE_CAPTURE = 398,  // the screen-capture entry trace only
};

// Level numbers; a higher number is more verbose.
enum LogLevel : uint16_t {
    LOG_NOTICE = 1,         // value-setting notices
    LOG_PORT_ERROR = 1000,  // port failures and missing objects
    LOG_ERROR = 3000,       // framework failures and the "failed." texts of the command operations
    LOG_TRACE = 4000,       // "Called." entry traces and progress
    LOG_FINE = 5000,        // fine progress of file writing
};

// The file name without its directories, for the "%s:%d:%s(): " prefix of every message.
inline const char* logBaseName(const char* path) {
    const char* slash = std::strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

}  // namespace sysctrlservice

// Logs a message whose format starts with "%s:%d:%s(): "; the macro supplies the file's base name,
// the line and `function`. Arguments are evaluated only when the level is enabled.
#define SYSCTRL_LOG_FOR(module, level, function, format, ...)                                      \
    do {                                                                                           \
        const uint32_t sysctrlLevelWord_ = ::zo::debug::levelWord((module), (level));              \
        if (::zo::debug::isEnabled(sysctrlLevelWord_)) {                                           \
            ::zo::debug::print(sysctrlLevelWord_, format, ::sysctrlservice::logBaseName(__FILE__), \
                               __LINE__, (function), ##__VA_ARGS__);                               \
        }                                                                                          \
    } while (0)

// The same under the enclosing function's name.
#define SYSCTRL_LOG_IN(module, level, format, ...) \
    SYSCTRL_LOG_FOR(module, level, __func__, format, ##__VA_ARGS__)

#define SYSCTRL_LOG(level, format, ...) \
    SYSCTRL_LOG_IN(::sysctrlservice::LOG_MODULE_SYSCTRL, level, format, ##__VA_ARGS__)

// A step of a long operation, kept in a function of its own, logs under the operation's name
// (`function`), so that its messages read as they always have.
#define SYSCTRL_LOG_AS(function, level, format, ...) \
    SYSCTRL_LOG_FOR(::sysctrlservice::LOG_MODULE_SYSCTRL, level, function, format, ##__VA_ARGS__)

#endif
