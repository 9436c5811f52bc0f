// Resident memory over a long run: one process calls getChipID on the service straight through its
// interface, CALLS times (1,000,000 by default), over the simulated set with one recording client
// registered, and prints the process's resident size every STEP calls. Each call makes two port
// calls (Factory.getHardwareInfo, HardwareInfo.getChipId) and delivers one callback.
//
// usage: sysctrl-soak [--keep N|all] [CALLS [STEP]]
//   --keep N   the set's journal and the client keep the last N calls and callbacks (default: as
//              the set and the client keep them); 0 is what the desk host keeps, `all` keeps
//              everything, as the set did before its journal was bounded
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <string>

#include <boost/shared_ptr.hpp>

#include "Application.h"
#include "RecordingClient.h"
#include "sim/SimSet.h"
#include "zo/host/Host.h"

namespace {

// The process's resident set, in KiB, from /proc/self/status.
long residentKiB() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.compare(0, 6, "VmRSS:") == 0) {
            return std::strtol(line.c_str() + 6, nullptr, 10);
        }
    }
    return -1;
}

struct Options {
    bool keepGiven = false;
    size_t keep = 0;
    long calls = 1000000;
    long step = 100000;
};

bool readOptions(int argc, char** argv, Options& options) {
    int i = 1;
    if (i + 1 < argc && std::strcmp(argv[i], "--keep") == 0) {
        options.keepGiven = true;
        options.keep = std::strcmp(argv[i + 1], "all") == 0
                           ? std::numeric_limits<size_t>::max()
                           : static_cast<size_t>(std::strtoul(argv[i + 1], nullptr, 10));
        i += 2;
    }
    if (i < argc) {
        options.calls = std::atol(argv[i++]);
    }
    if (i < argc) {
        options.step = std::atol(argv[i++]);
    }
    return options.calls > 0 && options.step > 0 && i == argc;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!readOptions(argc, argv, options)) {
        std::fputs("usage: sysctrl-soak [--keep N|all] [CALLS [STEP]]\n", stderr);
        return 2;
    }
    // Every message is still formatted, as a desk host's would be, and then dropped.
    zo::host::setDebugSink([](uint32_t, const std::string&) {});
    sim::SimSet set;
    const boost::shared_ptr<sim::RecordingClient> client(new sim::RecordingClient("soak", &set));
    if (options.keepGiven) {
        set.setJournalLimit(options.keep);
        client->setKeepLimit(options.keep);
    }
    frame::AbstractApplication** applications = CreateSysctrlserviceApplication();
    auto* service = dynamic_cast<sysctrlservice::Application*>(applications[0]);
    if (service == nullptr || service->setupDone() != 0 || service->start() != 0 ||
        service->addClient(client) != 0) {
        std::fputs("sysctrl-soak: the service did not start\n", stderr);
        return 1;
    }
    std::printf("calls 0: resident %ld KiB (started)\n", residentKiB());
    auto begin = std::chrono::steady_clock::now();
    for (long k = 1; k <= options.calls; ++k) {
        frame::MsgIds ids{{static_cast<int32_t>(k), 0}};
        const frame::TransportInfo transport{{static_cast<int32_t>(k), 0, 0, 0, 0, 0, 0}};
        service->getChipID(ids, transport);
        if (k % options.step == 0) {
            const auto now = std::chrono::steady_clock::now();
            const double perCall =
                std::chrono::duration<double, std::micro>(now - begin).count() / options.step;
            std::printf("calls %ld: resident %ld KiB, %.1f us/call\n", k, residentKiB(), perCall);
            std::fflush(stdout);
            begin = std::chrono::steady_clock::now();
        }
    }
    // Read last: a copy of a journal that keeps everything would double the process.
    std::printf("journal %zu calls, client %zu callbacks\n", set.journal().size(),
                client->received().size());
    service->removeClient(client);
    service->stop();
    zo::host::waitForThreads();
    delete service;
    delete[] applications;
    return 0;
}
