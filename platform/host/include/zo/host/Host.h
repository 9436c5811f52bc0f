#ifndef ZO_HOST_HOST_H
#define ZO_HOST_HOST_H

// Controls of the PC host runtime, for the programs that play the framework (the desk host, the
// tests). The service never includes this header.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "zo/Thread.h"

namespace zo {
namespace host {

// Debug channel. The sink receives every message that passes the threshold, formatted; without a
// sink messages go to standard error. The threshold passes level numbers up to `maxLevel`; by
// default every level passes.
typedef std::function<void(uint32_t levelWord, const std::string& text)> DebugSink;
void setDebugSink(DebugSink sink);
void setDebugThreshold(uint16_t maxLevel);
// The sink and the threshold in force, for a host that changes them for a while and puts them back.
DebugSink debugSink();
uint16_t debugThreshold();

// File-system root: where the system's fixed absolute paths are mapped. Empty means the real root.
void setFileSystemRoot(const std::string& directory);
std::string getFileSystemRoot();

// Framework registry, for the platform's own interfaces (the Pier) and for callers of a service.
int registerInterface(const std::string& name, void* implementation);
int unregisterInterface(const std::string& name);
// The implementation registered under `name`, or null.
void* lookupInterface(const std::string& name);

// Results of the framework's own steps, so that a host can make them fail. 0 by default.
enum class FrameStep { PerformSetupDone, PerformStarting, PerformStopping, RegisterInterface };
void setFrameStepResult(FrameStep step, int32_t result);
void resetFrameStepResults();

// Platform calls that a host may answer itself (a simulated set journals and scripts them). An
// empty function leaves the call to the runtime's own implementation, which is also reachable
// below so that a hook can fall back on it.
struct Hooks {
    std::function<int(zo::thread::Entry entry, void* argument, int priority, const char* name)>
        createThread;
    std::function<uint64_t()> getUtcTime;
    std::function<int(const std::string& file, const std::string& section, const std::string& key,
                      int& value)>
        readInt;
    std::function<int(const char* command, size_t length, int mode, int flags)> executeShell;
    std::function<void(unsigned int milliseconds)> sleep;
};
void setHooks(const Hooks& hooks);
void clearHooks();

// The runtime's own implementations.
int startThread(zo::thread::Entry entry, void* argument, const char* name);
void sleepThread(unsigned int milliseconds);
uint64_t systemUtcTime();
int readIniInt(const std::string& file, const std::string& section, const std::string& key,
               int& value);
int runShellCommand(const char* command, size_t length);

// Blocks until every thread started through zo::thread::create has returned.
void waitForThreads();

}  // namespace host
}  // namespace zo

#endif
