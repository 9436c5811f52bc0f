#ifndef SYSCTRL_DBUS_DBUSLOG_H
#define SYSCTRL_DBUS_DBUSLOG_H

#include "EntryGuard.h"
#include "SysctrlLog.h"

namespace sysctrlservice {
namespace dbus {

// The bridge's debug module number; its levels are the service's.
constexpr uint16_t LOG_MODULE_DBUS = 254;

}  // namespace dbus
}  // namespace sysctrlservice

#define DBUS_LOG(level, format, ...) \
    SYSCTRL_LOG_IN(::sysctrlservice::dbus::LOG_MODULE_DBUS, level, format, ##__VA_ARGS__)

// The guard at every way into the bridge (the bus thread's handler, its own threads, the
// callbacks the service makes, the plug-in's entries): the service's, under the bridge's module.
#define DBUS_ENTRY_GUARD(...) \
    SYSCTRL_ENTRY_GUARD_IN(::sysctrlservice::dbus::LOG_MODULE_DBUS, __VA_ARGS__)

#endif
