// The built plug-in, loaded with dlopen and driven through its exported entry like the framework.
#include <dlfcn.h>
#include <gtest/gtest.h>

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

}  // namespace
