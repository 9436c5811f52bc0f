#ifndef SYSCTRL_SIM_DBUSSERVE_H
#define SYSCTRL_SIM_DBUSSERVE_H

#include <string>
#include <vector>

#include "DeskHost.h"
#include "ServiceOutput.h"

namespace desk {

// Blocks SIGINT and SIGTERM in this thread and every thread started after it, and returns a
// descriptor that becomes readable when one arrives; -1 on failure. Call before any thread starts.
int catchStopSignals();

// Serves the desk host's service on a bus ("session", "system" or an address) through the bridge
// plug-in at `bridgePath`, loaded and driven as a framework would: starts the service, then the
// bridge; runs `scripts` ("-" or none: standard input) while D-Bus clients call; keeps serving
// until SIGINT or SIGTERM; then stops the bridge and the service and destroys the bridge. What the
// service writes to standard output is printed after each script line and, while serving, as it
// comes. The caller destroys the service with DeskHost::finish(). 0, or 1 when the bridge could
// not serve.
int serveDbus(DeskHost& host, ServiceOutput& output, const std::string& bus,
              const std::string& bridgePath, const std::vector<std::string>& scripts,
              int stopSignals);

}  // namespace desk

#endif
