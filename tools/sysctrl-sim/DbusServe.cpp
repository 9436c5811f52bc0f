#include "DbusServe.h"

#include <dlfcn.h>
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>

#include "frame/AbstractApplication.h"

namespace desk {
namespace {

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
        m_started = m_applications[0]->setupDone() >= 0 && m_applications[0]->start() >= 0;
        if (!m_started) {
            std::cerr << "sysctrl-sim: the bridge did not start (its log says why)\n";
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
