#ifndef SYSCTRL_SIM_DBUSSERVE_H
#define SYSCTRL_SIM_DBUSSERVE_H

#include <string>
#include <vector>

#include "DeskHost.h"
#include "ServiceOutput.h"

namespace desk {

// Whether --dbus can serve on `bus`: "session", "system", or a D-Bus address of a transport the
// bus library knows ("unix:path=...", "tcp:host=...,port=...", ...). Anything else is most likely a
// misspelt name, which the library would take for an address and fail to connect to.
bool isBusName(const std::string& bus);
// What to tell the user about a `bus` that is not one: the forms accepted, and the name meant when
// `bus` is close to one.
std::string badBusMessage(const std::string& bus);

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
