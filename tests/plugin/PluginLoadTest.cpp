// The built plug-in, loaded with dlopen and driven through its exported entry like the framework.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <memory>
#include <string>

#include "ServiceInterface.h"
#include "frame/AbstractApplication.h"
#include "sim/SimSet.h"
#include "zo/host/Host.h"

namespace {

TEST(Plugin, ExportsBothEntriesAndRunsOnTheSimulatedSet) {
    zo::host::setDebugSink([](uint32_t, const std::string&) {});
    sim::SimSet set;
    void* library = dlopen(SYSCTRL_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    ASSERT_NE(dlsym(library, "CreateSysctrlserviceApplication"), nullptr);
    const auto entry = reinterpret_cast<frame::CreateApplicationArrayFunction>(
        dlsym(library, "frameCreateApplicationArray"));
    ASSERT_NE(entry, nullptr);

    frame::AbstractApplication** applications = entry();
    ASSERT_NE(applications, nullptr);
    ASSERT_NE(applications[0], nullptr);
    EXPECT_EQ(applications[1], nullptr);

    EXPECT_EQ(applications[0]->setupDone(), 0);
    EXPECT_EQ(applications[0]->start(), 0);
    auto* service = static_cast<sysctrlservice::ServiceInterface*>(
        zo::host::lookupInterface(sysctrlservice::kServiceInterfaceName));
    ASSERT_NE(service, nullptr);
    EXPECT_EQ(service->removeClient(sysctrlservice::ClientInterfacePtr()), -2);
    // Observers on the port objects are the plug-in's own: dynamic casts across the boundary
    // must find the platform's classes.
    std::vector<sim::SimSet::Delivery> deliveries;
    std::string error;
    ASSERT_TRUE(set.fireEvent("operationHours", 1, 1, deliveries, error)) << error;
    ASSERT_EQ(deliveries.size(), 1u);
    EXPECT_EQ(deliveries[0].status, 0);

    EXPECT_EQ(applications[0]->stop(), 0);
    delete applications[0];
    delete[] applications;
    EXPECT_EQ(zo::host::lookupInterface(sysctrlservice::kServiceInterfaceName), nullptr);
    zo::host::setDebugSink(nullptr);
    // The set goes first: its event manager holds the plug-in's observers.
}

// What an integrator's program meets when it loads the plug-in without a simulated set on a PC:
// nothing is registered as the Pier, so setup fails with -2 (ENOENT) and registers nothing, while
// start still succeeds, with no device to attach to. The service's fixed paths are mapped under a
// folder of the test's own, not the machine's /var/tvservice.
TEST(Plugin, WithoutASimulatedSetSetupFailsAndStartSucceeds) {
    struct Root {
        std::string path;
        ~Root() {
            zo::host::setFileSystemRoot("");
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
    } root;
    char pattern[] = "/tmp/sysctrl-plugin-test.XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    root.path = pattern;
    zo::host::setFileSystemRoot(root.path);
    zo::host::setDebugSink([](uint32_t, const std::string&) {});
    void* library = dlopen(SYSCTRL_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto entry = reinterpret_cast<frame::CreateApplicationArrayFunction>(
        dlsym(library, "frameCreateApplicationArray"));
    ASSERT_NE(entry, nullptr);
    frame::AbstractApplication** applications = entry();
    ASSERT_NE(applications, nullptr);
    std::unique_ptr<frame::AbstractApplication> application(applications[0]);
    delete[] applications;

    EXPECT_EQ(application->setupDone(), -2);
    EXPECT_EQ(zo::host::lookupInterface(sysctrlservice::kServiceInterfaceName), nullptr);
    EXPECT_EQ(application->start(), 0);
    EXPECT_EQ(application->stop(), 0);
    application.reset();
    zo::host::setDebugSink(nullptr);
}

}  // namespace
