#include "DbusServe.h"

#include <dlfcn.h>
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <mutex>

#include "frame/AbstractApplication.h"
#include "zo/host/Host.h"

namespace desk {
namespace {

// The bridge logs under this module (DbusLog.h), its failures at the service's error level.
const uint32_t kBridgeModule = 254;
const uint16_t kErrorLevel = 3000;

// The transports of D-Bus addresses that the bridge's bus library connects to.
const char* const kTransports[] = {"unix:", "tcp:", "unixexec:", "x-machine-unix:", "vsock:"};

// How many single-letter edits turn `a` into `b`.
size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
            diagonal = above;
        }
    }
    return row[b.size()];
}

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

// The bridge's error messages while it starts, kept whatever the log level and --only let through,
// so that a bridge that did not start can say why; what the user asked to see is still printed.
// The threshold and the sink in force before are put back at the end.
class StartErrors {
  public:
    StartErrors() : m_kept(new Kept), m_sink(zo::host::debugSink()) {
        m_threshold = zo::host::debugThreshold();
        std::shared_ptr<Kept> kept = m_kept;
        const zo::host::DebugSink sink = m_sink;
        const uint16_t threshold = m_threshold;
        zo::host::setDebugSink(
            [kept, sink, threshold](uint32_t levelWord, const std::string& text) {
                const uint16_t level = levelWord & 0xFFFF;
                if ((levelWord >> 16) == kBridgeModule && level <= kErrorLevel) {
                    std::lock_guard<std::mutex> lock(kept->mutex);
                    kept->messages.push_back(text);
                }
                if (level > threshold) {
                    return;
                }
                if (sink) {
                    sink(levelWord, text);
                } else {
                    std::fprintf(stderr, "[%u/%u] %s", levelWord >> 16, level, text.c_str());
                }
            });
        zo::host::setDebugThreshold(std::max(m_threshold, kErrorLevel));
    }

    ~StartErrors() {
        zo::host::setDebugThreshold(m_threshold);
        zo::host::setDebugSink(m_sink);
    }

    // The messages, each without the place it was logged from ("File.cpp:12:start(): ").
    std::string reasons() const {
        std::lock_guard<std::mutex> lock(m_kept->mutex);
        std::string text;
        for (std::string message : m_kept->messages) {
            const size_t place = message.find("(): ");
            if (place != std::string::npos) {
                message.erase(0, place + 4);
            }
            message.erase(message.find_last_not_of("\n") + 1);
            text += (text.empty() ? "" : "; ") + message;
        }
        return text;
    }

  private:
    // Shared with the sink, which a thread of the bridge may still be calling after the end.
    struct Kept {
        std::mutex mutex;
        std::vector<std::string> messages;
    };
    std::shared_ptr<Kept> m_kept;
    zo::host::DebugSink m_sink;
    uint16_t m_threshold;
};

// Why `bus` cannot be reached before anything tries to, when that is plain: a session or system
// bus that the bus library would not find. Empty when the bus may be there.
std::string missingBus(const std::string& bus) {
    std::error_code ignored;
    if (bus == "session" && environment("DBUS_SESSION_BUS_ADDRESS").empty()) {
        const std::string runtime = environment("XDG_RUNTIME_DIR");
        if (!runtime.empty() && std::filesystem::exists(runtime + "/bus", ignored)) {
            return std::string();
        }
        return "there is no session bus: DBUS_SESSION_BUS_ADDRESS is not set, and " +
               (runtime.empty() ? std::string("neither is XDG_RUNTIME_DIR")
                                : "there is no " + runtime + "/bus") +
               ". Run the desk host in a session bus of its own:\n"
               "  dbus-run-session -- sysctrl-sim --dbus session ...\n"
               "or give the address of a running bus: --dbus unix:path=...\n";
    }
    if (bus == "system" && environment("DBUS_SYSTEM_BUS_ADDRESS").empty() &&
        !std::filesystem::exists("/run/dbus/system_bus_socket", ignored)) {
        return "there is no system bus: DBUS_SYSTEM_BUS_ADDRESS is not set, and there is no "
               "/run/dbus/system_bus_socket (the machine's system bus, the dbus service, does not "
               "run). Start it, or serve on a session bus: --dbus session\n";
    }
    return std::string();
}

// The bridge plug-in, loaded and driven like the service.
class Bridge {
  public:
    ~Bridge() { destroy(); }

    bool start(const std::string& path) {
        m_library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (m_library == nullptr) {
            const char* reason = dlerror();
            std::cerr << "sysctrl-sim: cannot load the bridge " << path << ": "
                      << (reason != nullptr ? reason : "?") << "\n";
            return false;
        }
        const auto entry = reinterpret_cast<frame::CreateApplicationArrayFunction>(
            dlsym(m_library, "frameCreateApplicationArray"));
        m_applications = entry != nullptr ? entry() : nullptr;
        if (m_applications == nullptr || m_applications[0] == nullptr) {
            std::cerr << "sysctrl-sim: the bridge plug-in created no application\n";
            return false;
        }
        const StartErrors errors;
        m_started = m_applications[0]->setupDone() >= 0 && m_applications[0]->start() >= 0;
        if (!m_started) {
            const std::string reasons = errors.reasons();
            std::cerr << "sysctrl-sim: the bridge did not start: "
                      << (reasons.empty() ? "it gave no reason" : reasons) << "\n";
        }
        return m_started;
    }

    void stop() {
        if (m_started) {
            m_applications[0]->stop();
            m_started = false;
        }
    }

    void destroy() {
        stop();
        if (m_applications != nullptr) {
            delete m_applications[0];
            delete[] m_applications;
            m_applications = nullptr;
        }
        if (m_library != nullptr) {
            dlclose(m_library);
            m_library = nullptr;
        }
    }

  private:
    void* m_library = nullptr;
    frame::AbstractApplication** m_applications = nullptr;
    bool m_started = false;
};

// Waits up to `waitMilliseconds` (-1: for ever) for a stop signal, printing what the service
// writes meanwhile; true when one came.
bool stopRequested(int stopSignals, ServiceOutput& output, int waitMilliseconds) {
    while (true) {
        pollfd entries[2] = {{stopSignals, POLLIN, 0}, {output.descriptor(), POLLIN, 0}};
        if (poll(entries, 2, waitMilliseconds) < 0) {
            continue;
        }
        if ((entries[1].revents & POLLIN) != 0) {
            output.drain();
        }
        if ((entries[0].revents & POLLIN) != 0) {
            return true;
        }
        if (waitMilliseconds >= 0) {
            return false;
        }
    }
}

// Runs standard input's lines as they come; false when a stop signal ended the reading.
bool runStandardInput(DeskHost& host, ServiceOutput& output, int stopSignals) {
    const bool prompt = isatty(STDIN_FILENO) != 0;
    std::string pending;
    int number = 0;
    while (true) {
        if (prompt) {
            std::cerr << "sysctrl> " << std::flush;
        }
        pollfd entries[3] = {
            {STDIN_FILENO, POLLIN, 0}, {stopSignals, POLLIN, 0}, {output.descriptor(), POLLIN, 0}};
        if (poll(entries, 3, -1) < 0) {
            continue;
        }
        if ((entries[1].revents & POLLIN) != 0) {
            return false;
        }
        if ((entries[2].revents & POLLIN) != 0) {
            output.drain();
        }
        if ((entries[0].revents & (POLLIN | POLLHUP | POLLERR)) == 0) {
            continue;
        }
        char buffer[4096];
        const ssize_t count = read(STDIN_FILENO, buffer, sizeof buffer);
        if (count <= 0) {
            if (!pending.empty()) {
                host.runLine(pending, ++number);
                output.drain();
            }
            return true;
        }
        pending.append(buffer, static_cast<size_t>(count));
        for (size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
            host.runLine(pending.substr(0, end), ++number);
            output.drain();
            pending.erase(0, end + 1);
        }
    }
}

}  // namespace

bool isBusName(const std::string& bus) {
    if (bus == "session" || bus == "system") {
        return true;
    }
    for (const char* transport : kTransports) {
        if (bus.rfind(transport, 0) == 0 &&
            bus.size() > std::char_traits<char>::length(transport)) {
            return true;
        }
    }
    return false;
}

std::string badBusMessage(const std::string& bus) {
    std::string message =
        "--dbus takes session, system or the address of a bus (unix:path=FILE, "
        "unix:abstract=NAME, tcp:host=HOST,port=PORT); \"" +
        bus + "\" is none of these";
    for (const char* name : {"session", "system"}) {
        if (editDistance(bus, name) <= 2) {
            message += std::string(" (did you mean ") + name + "?)";
            break;
        }
    }
    return message + "\n";
}

int catchStopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    if (pthread_sigmask(SIG_BLOCK, &signals, nullptr) != 0) {
        return -1;
    }
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

int serveDbus(DeskHost& host, ServiceOutput& output, const std::string& bus,
              const std::string& bridgePath, const std::vector<std::string>& scripts,
              int stopSignals) {
    const std::string missing = missingBus(bus);
    if (!missing.empty()) {
        std::cerr << "sysctrl-sim: " << missing;
        return 1;
    }
    setenv("SYSCTRL_DBUS_BUS", bus.c_str(), 1);
    host.runLine("start", 0);
    Bridge bridge;
    if (!bridge.start(bridgePath)) {
        return 1;
    }
    // A script that destroys the service takes the bridge down first: it holds the service.
    host.setBeforeDestroy([&bridge] { bridge.destroy(); });
    std::cerr << "sysctrl-sim: serving zorbel.lm.sysctrlservice on the " << bus << " bus\n";

    bool stopped = false;
    for (const std::string& script : scripts) {
        if (stopped) {
            break;
        }
        if (script == "-") {
            stopped = !runStandardInput(host, output, stopSignals);
            continue;
        }
        std::ifstream in(script);
        if (!in) {
            std::cerr << "sysctrl-sim: cannot open " << script << "\n";
            continue;
        }
        std::string line;
        for (int number = 1; !stopped && std::getline(in, line); ++number) {
            host.runLine(line, number);
            output.drain();
            stopped = stopRequested(stopSignals, output, 0);
        }
    }
    if (!stopped) {
        stopRequested(stopSignals, output, -1);
    }
    std::cerr << "sysctrl-sim: stopping\n";
    bridge.stop();
    host.stopIfStarted();
    bridge.destroy();
    host.setBeforeDestroy(nullptr);
    return 0;
}

}  // namespace desk
