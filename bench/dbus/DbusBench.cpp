// The D-Bus bridge under load: 8 callers, each with a connection of its own, call result-delivering
// operations on a private bus for a few seconds; prints calls per second and the median and
// 99th-percentile latency of a call (from sending it to reading its reply).
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
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

}  // namespace

int main(int argc, char** argv) {
    const int callers = 8;
    const double seconds = argc > 1 ? std::atof(argv[1]) : 5.0;
    zo::host::setDebugSink([](uint32_t, const std::string&) {});
    zo::host::setDebugThreshold(0);

    sysctrltest::PrivateBus bus;
    if (bus.address().empty()) {
        std::fprintf(stderr, "dbus-daemon did not start\n");
        return 1;
    }
    sim::SimSet set;
    frame::AbstractApplication** applications = frameCreateApplicationArray();
    applications[0]->setupDone();
    applications[0]->start();
    auto* service = static_cast<sysctrlservice::ServiceInterface*>(
        zo::host::lookupInterface(sysctrlservice::kServiceInterfaceName));
    sysctrlservice::dbus::DbusBridge::Options options;
    options.bus = bus.address();
    sysctrlservice::dbus::DbusBridge bridge([service] { return service; }, options);
    if (bridge.start() != 0) {
        std::fprintf(stderr, "the bridge did not start\n");
        return 1;
    }

    std::atomic<bool> failed{false};
    std::vector<std::vector<double>> latencies(callers);
    std::vector<std::thread> threads;
    const Clock::time_point start = Clock::now();
    const Clock::time_point end =
        start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    for (int c = 0; c < callers; ++c) {
        threads.emplace_back([&, c] {
            auto proxy = sdbus::createProxy(
                sdbus::createSessionBusConnectionWithAddress(bus.address()), kBusName, kObjectPath);
            try {
                for (int i = 0; Clock::now() < end; ++i) {
                    const Clock::time_point sent = Clock::now();
                    int32_t status = 0;
                    if (i % 2 == 0) {
                        std::string state;
                        proxy->callMethod("ControlOpc")
                            .onInterface(kInterface)
                            .withArguments(std::string("getOpcState"))
                            .storeResultsTo(status, state);
                    } else {
                        std::vector<uint8_t> chipId;
                        proxy->callMethod("GetChipID")
                            .onInterface(kInterface)
                            .storeResultsTo(status, chipId);
                    }
                    latencies[c].push_back(
                        std::chrono::duration<double, std::micro>(Clock::now() - sent).count());
                }
            } catch (const sdbus::Error& e) {
                std::fprintf(stderr, "caller %d: %s\n", c, e.getMessage().c_str());
                failed = true;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    bridge.stop();
    applications[0]->stop();
    zo::host::waitForThreads();
    delete applications[0];
    delete[] applications;

    std::vector<double> all;
    for (const auto& each : latencies) {
        all.insert(all.end(), each.begin(), each.end());
    }
    if (all.empty() || failed) {
        return 1;
    }
    std::sort(all.begin(), all.end());
    std::printf("callers %d, calls %zu in %.2f s: %.0f calls/s, median %.0f us, p99 %.0f us\n",
                callers, all.size(), elapsed, all.size() / elapsed, all[all.size() / 2],
                all[all.size() * 99 / 100]);
    return 0;
}
