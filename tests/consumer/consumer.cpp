// A program built outside the service's tree against its installed packages: loads the plug-in
// the way the framework does, on the simulated set, and asks it for one result.
// Usage: consumer PLUGIN. Exits 0 when the service answered through a registered client.
#include <dlfcn.h>
#include <stdlib.h>

#include <filesystem>
#include <iostream>

#include "RecordingClient.h"
#include "ServiceInterface.h"
#include "frame/AbstractApplication.h"
#include "sim/SimSet.h"
#include "zo/host/Host.h"

namespace {

int fail(const std::string& what) {
    std::cerr << "consumer: " << what << "\n";
    return 1;
}

// A fresh folder that stands for the set's file system while it lives: the service's fixed paths
// (/var/tvservice/...) are mapped under it instead of the machine's own.
struct FileSystemRoot {
    std::string path;

    FileSystemRoot() {
        char pattern[] = "/tmp/consumer.XXXXXX";
        if (mkdtemp(pattern) != nullptr) {
            path = pattern;
            std::filesystem::create_directories(path + "/var/tvservice");
            zo::host::setFileSystemRoot(path);
        }
    }
    ~FileSystemRoot() {
        zo::host::setFileSystemRoot("");
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        return fail("usage: consumer PLUGIN");
    }
    FileSystemRoot root;
    if (root.path.empty()) {
        return fail("no folder for the file-system root");
    }
    // The simulated set registers the Pier that the service looks up at setup: it must exist
    // before setupDone.
    sim::SimSet set;
    void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        return fail(dlerror());
    }
    const auto entry = reinterpret_cast<frame::CreateApplicationArrayFunction>(
        dlsym(library, "frameCreateApplicationArray"));
    if (entry == nullptr) {
        return fail("no frameCreateApplicationArray");
    }
    // The array is the caller's, made with new[]; the application is deleted on its own.
    frame::AbstractApplication** applications = entry();
    if (applications == nullptr || applications[0] == nullptr) {
        return fail("frameCreateApplicationArray made no application");
    }
    frame::AbstractApplication* application = applications[0];
    delete[] applications;
    if (application->setupDone() != 0 || application->start() != 0) {
        return fail("the application did not start");
    }
    // The application is the service: the cast needs the platform's type information, which the
    // installed package must have linked in.
    auto* service = dynamic_cast<sysctrlservice::ServiceInterface*>(application);
    if (service == nullptr) {
        return fail("the application is not a ServiceInterface");
    }
    boost::shared_ptr<sim::RecordingClient> client(new sim::RecordingClient("consumer"));
    frame::MsgIds ids = {{7, 8}};
    const frame::TransportInfo transport = {{1, 2, 3, 4, 5, 6, 7}};
    const int added = service->addClient(client);
    const int status = service->controlAntenna(ids, transport, "getSatelliteAntenna");
    const auto results = client->received("controlAntennaResult");
    application->stop();
    delete application;
    if (added != 0 || status != 0 || results.size() != 1) {
        return fail("no result: addClient " + std::to_string(added) + ", controlAntenna " +
                    std::to_string(status) + ", results " + std::to_string(results.size()));
    }
    std::cout << "controlAntennaResult " << results[0].args.dump() << "\n";
    return results[0].msgIds == std::vector<int32_t>{7, 8} ? 0 : fail("the result lost its ids");
}
