// The D-Bus bridge under load, on a private bus. Scenarios (all of them when none is named):
//   calls [SECONDS]   8 callers, each with a connection of its own, call result-delivering
//                     operations for a few seconds against a bridge in this process; calls per
//                     second and the median and 99th-percentile latency of a call.
//   flood [SECONDS [BYTES]]  against the desk host serving on the bus: 4 callers each keep 16
//                     ControlOpc calls of BYTES (10 MiB unless given) under way while a bystander
//                     calls GetChipID; the bystander's latency, how the flood was answered and the
//                     desk host's memory before, after and at its peak.
//   stop              16 callers queue 1,024 PNG captures in the desk host, which is then told to
//                     stop (SIGTERM): how long it takes and how every caller was answered.
//   soak [CALLS]      8 callers make CALLS calls (200,000 unless given) through the desk host: its
//                     resident memory before and after.
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Application.h"
#include "DbusBridge.h"
#include "PrivateBus.h"
#include "ServiceInterface.h"
#include "frame/AbstractApplication.h"
#include "sim/SimSet.h"
#include "zo/host/Host.h"

namespace {

using Clock = std::chrono::steady_clock;
using sysctrlservice::dbus::kBusName;
using sysctrlservice::dbus::kInterface;
using sysctrlservice::dbus::kObjectPath;

double microsecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

// "median X us, p99 Y us" of a set of latencies.
std::string percentiles(std::vector<double> latencies) {
    if (latencies.empty()) {
        return "no calls";
    }
    std::sort(latencies.begin(), latencies.end());
    char text[96];
    std::snprintf(text, sizeof text, "median %.0f us, p99 %.0f us", latencies[latencies.size() / 2],
                  latencies[latencies.size() * 99 / 100]);
    return text;
}

std::unique_ptr<sdbus::IProxy> newCaller(const std::string& address) {
    return sdbus::createProxy(sdbus::createSessionBusConnectionWithAddress(address), kBusName,
                              kObjectPath);
}

// One call that delivers a result: ControlOpc or GetChipID, alternately.
void callOnce(sdbus::IProxy& proxy, int i) {
    int32_t status = 0;
    if (i % 2 == 0) {
        std::string state;
        proxy.callMethod("ControlOpc")
            .onInterface(kInterface)
            .withArguments(std::string("getOpcState"))
            .storeResultsTo(status, state);
        return;
    }
    std::string chipId;
    proxy.callMethod("GetChipID").onInterface(kInterface).storeResultsTo(status, chipId);
}

// Runs `callers` threads that call until `keepGoing` says no; returns each call's latency.
std::vector<double> callConcurrently(const std::string& address, int callers,
                                     const std::function<bool(int call)>& keepGoing) {
    std::atomic<int> next{0};
    std::mutex mutex;
    std::vector<double> all;
    std::vector<std::thread> threads;
    for (int c = 0; c < callers; ++c) {
        threads.emplace_back([&] {
            std::unique_ptr<sdbus::IProxy> proxy = newCaller(address);
            std::vector<double> own;
            try {
                for (int i = next++; keepGoing(i); i = next++) {
                    const Clock::time_point sent = Clock::now();
                    callOnce(*proxy, i);
                    own.push_back(microsecondsSince(sent));
                }
            } catch (const sdbus::Error& e) {
                std::fprintf(stderr, "caller: %s\n", e.getMessage().c_str());
            }
            std::lock_guard<std::mutex> lock(mutex);
            all.insert(all.end(), own.begin(), own.end());
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return all;
}

// The desk host serving the service on a bus, as a child process with a root of its own.
class DeskHostOnBus {
  public:
    // `script`: desk-host lines run before serving, e.g. to set the simulated set's state.
    explicit DeskHostOnBus(const std::string& address, const std::string& script = "") {
        char pattern[] = "/tmp/sysctrl-bench.XXXXXX";
        if (mkdtemp(pattern) == nullptr) {
            return;
        }
        m_root = pattern;
        const std::string scriptPath = m_root + "/setup.sim";
        std::ofstream(scriptPath) << script;
        m_pid = fork();
        if (m_pid == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (freopen("/dev/null", "w", stdout) == nullptr) {
                _exit(126);
            }
            execl(SYSCTRL_SIM_PATH, SYSCTRL_SIM_PATH, "--root", m_root.c_str(), "--log-level", "0",
                  "--dbus", address.c_str(), scriptPath.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
        waitForName(address);
    }
    ~DeskHostOnBus() {
        stop();
        std::error_code ignored;
        std::filesystem::remove_all(m_root, ignored);
    }
    bool serving() const { return m_serving; }
    const std::string& root() const { return m_root; }

    // Resident memory now, or at its peak ("VmHWM"), in MB.
    double residentMb(const char* field = "VmRSS") const {
        std::ifstream status("/proc/" + std::to_string(m_pid) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.rfind(std::string(field) + ":", 0) == 0) {
                return std::atof(line.c_str() + line.find_first_of("0123456789")) / 1024.0;
            }
        }
        return -1;
    }
    // SIGTERM, then waits for the process to end; the seconds that took.
    double stop() {
        if (m_pid <= 0) {
            return 0;
        }
        const Clock::time_point start = Clock::now();
        kill(m_pid, SIGTERM);
        waitpid(m_pid, nullptr, 0);
        m_pid = -1;
        return microsecondsSince(start) / 1e6;
    }

  private:
    void waitForName(const std::string& address) {
        auto bus = sdbus::createProxy(sdbus::createSessionBusConnectionWithAddress(address),
                                      "org.freedesktop.DBus", "/org/freedesktop/DBus");
        const Clock::time_point guard = Clock::now() + std::chrono::seconds(30);
        while (!m_serving && Clock::now() < guard) {
            bus->callMethod("NameHasOwner")
                .onInterface("org.freedesktop.DBus")
                .withArguments(std::string(kBusName))
                .storeResultsTo(m_serving);
            if (!m_serving) {
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }
        }
    }

    std::string m_root;
    pid_t m_pid = -1;
    bool m_serving = false;
};

// Counts the answers of asynchronous calls by error name ("reply" for a reply).
class Answers {
  public:
    void add(const sdbus::Error* error) {
        std::lock_guard<std::mutex> lock(m_mutex);
        ++m_counts[error != nullptr ? error->getName() : "reply"];
        ++m_total;
        m_changed.notify_all();
    }
    bool waitFor(size_t total, std::chrono::seconds guard) {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, guard, [&] { return m_total >= total; });
    }
    std::string summary() {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::string text;
        for (const auto& [name, count] : m_counts) {
            text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + name;
        }
        return text.empty() ? "none" : text;
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::map<std::string, size_t> m_counts;
    size_t m_total = 0;
};

int benchCalls(double seconds) {
    zo::host::setDebugSink([](uint32_t, const std::string&) {});
    zo::host::setDebugThreshold(0);
    sysctrltest::PrivateBus bus;
    sim::SimSet set;
    frame::AbstractApplication** applications = frameCreateApplicationArray();
    applications[0]->setupDone();
    applications[0]->start();
    auto* service = static_cast<sysctrlservice::ServiceInterface*>(
        zo::host::lookupInterface(sysctrlservice::kServiceInterfaceName));
    sysctrlservice::dbus::DbusBridge::Options options;
    options.bus = bus.address();
    sysctrlservice::dbus::DbusBridge bridge([service] { return service; }, options);
    if (bus.address().empty() || bridge.start() != 0) {
        std::fprintf(stderr, "the bus or the bridge did not start\n");
        return 1;
    }
    const Clock::time_point start = Clock::now();
    const Clock::time_point end =
        start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    const std::vector<double> latencies =
        callConcurrently(bus.address(), 8, [&](int) { return Clock::now() < end; });
    const double elapsed = microsecondsSince(start) / 1e6;
    bridge.stop();
    applications[0]->stop();
    zo::host::waitForThreads();
    delete applications[0];
    delete[] applications;
    std::printf("calls: 8 callers, %zu calls in %.2f s: %.0f calls/s, %s\n", latencies.size(),
                elapsed, latencies.size() / elapsed, percentiles(latencies).c_str());
    return latencies.empty() ? 1 : 0;
}

int benchFlood(double seconds, size_t bytes) {
    sysctrltest::PrivateBus bus;
    DeskHostOnBus host(bus.address());
    if (!host.serving()) {
        std::fprintf(stderr, "the desk host did not serve\n");
        return 1;
    }
    const double before = host.residentMb();
    const std::string tenMb(bytes, ',');
    // What one such call costs alone: mostly the bus daemon's copying it through.
    const Clock::time_point alone = Clock::now();
    try {
        newCaller(bus.address())
            ->callMethod("ControlOpc")
            .onInterface(kInterface)
            .withArguments(tenMb);
    } catch (const sdbus::Error&) {
        // Refused as too large, as expected.
    }
    const double aloneMs = microsecondsSince(alone) / 1000;
    std::atomic<bool> flooding{true};
    Answers flood;
    std::vector<std::thread> flooders;
    for (int f = 0; f < 4; ++f) {
        flooders.emplace_back([&] {
            std::unique_ptr<sdbus::IProxy> proxy = newCaller(bus.address());
            auto waiting = std::make_shared<std::atomic<int>>(0);
            while (flooding) {
                if (*waiting >= 16) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                    continue;
                }
                ++*waiting;
                proxy->callMethodAsync("ControlOpc")
                    .onInterface(kInterface)
                    .withArguments(tenMb)
                    .uponReplyInvoke(
                        [&flood, waiting](const sdbus::Error* error, int32_t, std::string) {
                            flood.add(error);
                            --*waiting;
                        });
            }
        });
    }
    const Clock::time_point end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                                     std::chrono::duration<double>(seconds));
    const std::vector<double> bystander =
        callConcurrently(bus.address(), 1, [&](int) { return Clock::now() < end; });
    const double peak = host.residentMb("VmHWM");
    flooding = false;
    for (std::thread& flooder : flooders) {
        flooder.join();
    }
    std::printf(
        "flood: one call of %zu bytes alone answered in %.1f ms\n"
        "flood: 4 callers of such calls for %.0f s, answered: %s\n"
        "flood: bystander %zu calls, %s\n"
        "flood: desk host resident %.1f MB before, %.1f MB after, peak %.1f MB\n",
        bytes, aloneMs, seconds, flood.summary().c_str(), bystander.size(),
        percentiles(bystander).c_str(), before, host.residentMb(), peak);
    return bystander.empty() ? 1 : 0;
}

int benchStop() {
    sysctrltest::PrivateBus bus;
    DeskHostOnBus host(bus.address(),
                       "state ScreenCapture.width 1920\nstate ScreenCapture.height 1080\n");
    if (!host.serving()) {
        std::fprintf(stderr, "the desk host did not serve\n");
        return 1;
    }
    const std::string folder = host.root() + "/captures";
    std::filesystem::create_directories(folder);
    std::vector<std::unique_ptr<sdbus::IProxy>> callers;
    Answers answers;
    constexpr int kCallers = 16;
    constexpr int kEach = 64;
    for (int c = 0; c < kCallers; ++c) {
        callers.push_back(newCaller(bus.address()));
        for (int i = 0; i < kEach; ++i) {
            callers.back()
                ->callMethodAsync("CmdCaptureScreen")
                .onInterface(kInterface)
                .withArguments(folder, "shot-" + std::to_string(c * kEach + i) + ".png", 2)
                .uponReplyInvoke(
                    [&answers](const sdbus::Error* error, int32_t) { answers.add(error); });
        }
    }
    // The bus keeps each caller's messages in order, and the bus library answers Ping itself:
    // once every caller's Ping is answered, every capture has reached the bridge.
    for (auto& caller : callers) {
        caller->callMethod("Ping").onInterface("org.freedesktop.DBus.Peer");
    }
    const double seconds = host.stop();
    const bool all = answers.waitFor(kCallers * kEach, std::chrono::seconds(30));
    std::printf("stop: %d captures queued, stopped in %.3f s, answered: %s%s\n", kCallers * kEach,
                seconds, answers.summary().c_str(), all ? "" : " (some never)");
    return all ? 0 : 1;
}

int benchSoak(long calls) {
    sysctrltest::PrivateBus bus;
    DeskHostOnBus host(bus.address());
    if (!host.serving()) {
        std::fprintf(stderr, "the desk host did not serve\n");
        return 1;
    }
    // Warm up first, so that what the first calls allocate once is not counted as growth.
    callConcurrently(bus.address(), 8, [](int i) { return i < 10000; });
    const double before = host.residentMb();
    const Clock::time_point start = Clock::now();
    const std::vector<double> latencies =
        callConcurrently(bus.address(), 8, [calls](int i) { return i < calls; });
    const double elapsed = microsecondsSince(start) / 1e6;
    std::printf(
        "soak: %zu calls in %.1f s (%.0f calls/s), desk host resident %.1f MB before, "
        "%.1f MB after\n",
        latencies.size(), elapsed, latencies.size() / elapsed, before, host.residentMb());
    return latencies.size() == static_cast<size_t>(calls) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string scenario = argc > 1 ? argv[1] : "";
    const char* value = argc > 2 ? argv[2] : nullptr;
    int failed = 0;
    if (scenario.empty() || scenario == "calls") {
        failed |= benchCalls(value != nullptr ? std::atof(value) : 5.0);
    }
    if (scenario.empty() || scenario == "flood") {
        const char* bytes = argc > 3 ? argv[3] : nullptr;
        failed |= benchFlood(value != nullptr ? std::atof(value) : 10.0,
                             bytes != nullptr ? std::strtoul(bytes, nullptr, 10) : 10u << 20);
    }
    if (scenario.empty() || scenario == "stop") {
        failed |= benchStop();
    }
    if (scenario.empty() || scenario == "soak") {
        failed |= benchSoak(value != nullptr ? std::atol(value) : 200000);
    }
    if (!scenario.empty() && scenario != "calls" && scenario != "flood" && scenario != "stop" &&
        scenario != "soak") {
        std::fprintf(
            stderr,
            "usage: sysctrl-dbus-bench [calls SECONDS|flood SECONDS BYTES|stop|soak CALLS]\n");
        return 2;
    }
    return failed;
}
