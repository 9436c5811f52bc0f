#ifndef SYSCTRL_DBUS_DBUSLOG_H
#define SYSCTRL_DBUS_DBUSLOG_H

#include "SysctrlLog.h"

namespace sysctrlservice {
namespace dbus {

// The bridge's debug module number; its levels are the service's.
constexpr uint16_t LOG_MODULE_DBUS = 254;

}  // namespace dbus
}  // namespace sysctrlservice

#define DBUS_LOG(level, format, ...) \
    SYSCTRL_LOG_IN(::sysctrlservice::dbus::LOG_MODULE_DBUS, level, format, ##__VA_ARGS__)

#endif
