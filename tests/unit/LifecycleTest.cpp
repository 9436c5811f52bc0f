// The application's life cycle within the framework: setup, start, stop and destruction.
#include "ServiceTest.h"

#include "zo/host/Host.h"

namespace sysctrltest {
namespace {

using sim::json;

std::vector<std::string> operationsOf(const std::vector<sim::PortCall>& calls) {
    std::vector<std::string> names;
    for (const sim::PortCall& call : calls) {
        names.push_back(call.object + "." + call.operation);
    }
    return names;
}

std::vector<std::string> observersRegistered(sim::SimSet& sim) {
    std::vector<std::string> registered;
    for (const sim::PortCall& call : sim.calls("EventManager", "registerObserver")) {
        registered.push_back(call.args[0].get<std::string>() + "<-" +
                             call.args[1].get<std::string>());
    }
    return registered;
}

class Lifecycle : public ServiceTest {};

TEST_F(Lifecycle, SetupTakesThePortObjectsInOrderAndRegistersTheInterface) {
    EXPECT_EQ(zo::host::lookupInterface(sysctrlservice::kServiceInterfaceName), nullptr);
    ASSERT_EQ(app().setupDone(), 0);

    EXPECT_EQ(operationsOf(sim().journal()),
              (std::vector<std::string>{
                  "Pier.getChassisDescription", "Pier.getSubsystemManager", "Pier.getFactory",
                  "Factory.getFrontPanel", "Factory.getFactoryManager", "Factory.getHdmi",
                  "Factory.getOpc", "Factory.getAntenna", "Factory.getCredentialsState",
                  "Factory.getVodState", "Factory.getUart", "Factory.getScreenCapture",
                  "Pier.getEventManager", "Factory.getOledPanel", "Factory.getFarField",
                  "Factory.getOperationHours", "Factory.getRemoteControl"}));
    EXPECT_EQ(zo::host::lookupInterface(sysctrlservice::kServiceInterfaceName),
              static_cast<sysctrlservice::ServiceInterface*>(&app()));
    EXPECT_EQ(messages().back(), std::make_pair(uint16_t{4000}, std::string("Called.\n")));
}

TEST_F(Lifecycle, BaseSetupFailureStopsBeforeThePier) {
    zo::host::setFrameStepResult(zo::host::FrameStep::PerformSetupDone, -7);

    EXPECT_EQ(app().setupDone(), -7);
    EXPECT_TRUE(sim().journal().empty());
    EXPECT_EQ(zo::host::lookupInterface(sysctrlservice::kServiceInterfaceName), nullptr);
    EXPECT_EQ(
        logsContaining("performSetupDone(): Parent class performSetupDone() returned -7.\n").size(),
        1u);
    EXPECT_EQ(logs().back().level, 3000);
}

TEST_F(Lifecycle, MissingPierFailsWithEnoentAndRegistersNothing) {
    setAbsent("Pier");

    EXPECT_EQ(app().setupDone(), -2);
    EXPECT_EQ(zo::host::lookupInterface(sysctrlservice::kServiceInterfaceName), nullptr);
    ASSERT_EQ(logsContaining("Unable to obtain pier interface: -2.\n").size(), 1u);
    EXPECT_EQ(logs().back().level, 3000);
}

TEST_F(Lifecycle, RegistrationFailureIsReturned) {
    zo::host::setFrameStepResult(zo::host::FrameStep::RegisterInterface, -17);

    EXPECT_EQ(app().setupDone(), -17);
    ASSERT_EQ(logsContaining("Unable to register interface: -17.\n").size(), 1u);
    EXPECT_EQ(logs().back().level, 3000);
}

TEST_F(Lifecycle, AbsentFactoryLeavesEveryDeviceEmptyButSetupSucceeds) {
    setAbsent("Factory");

    EXPECT_EQ(app().setupDone(), 0);
    EXPECT_TRUE(sim().calls("Factory").empty());
    EXPECT_EQ(sim().calls("Pier", "getEventManager").size(), 1u);
}

struct StartCase {
    const char* name;
    std::vector<std::string> absent;
    std::vector<std::string> observers;
    bool readsErrorStatus;
};

void PrintTo(const StartCase& c, std::ostream* os) {
    *os << c.name;
}

class LifecycleStart : public ServiceTest, public ::testing::WithParamInterface<StartCase> {};

TEST_P(LifecycleStart, AttachesTheObserversItsObjectsAllow) {
    for (const std::string& object : GetParam().absent) {
        setAbsent(object);
    }
    ASSERT_EQ(app().setupDone(), 0);
    sim().clearJournal();

    EXPECT_EQ(app().start(), 0);
    EXPECT_EQ(observersRegistered(sim()), GetParam().observers);
    EXPECT_EQ(sim().calls("OledPanel", "getErrorStatus").size(),
              GetParam().readsErrorStatus ? 1u : 0u);
    EXPECT_EQ(sim().calls("OledPanel", "registerErrorCallback").size(),
              GetParam().readsErrorStatus ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Objects, LifecycleStart,
    ::testing::Values(
        StartCase{"All", {}, {"OledPanel<-OledObserver", "OperationHours<-OptimeObserver"}, true},
        StartCase{"NoOledPanel", {"OledPanel"}, {"OperationHours<-OptimeObserver"}, false},
        // Without an event manager even the operating-time observer is skipped.
        StartCase{"NoEventManager", {"EventManager"}, {}, false},
        StartCase{"NoOperationHours", {"OperationHours"}, {"OledPanel<-OledObserver"}, true},
        StartCase{"NoPanelNoManager", {"OledPanel", "EventManager"}, {}, false}),
    [](const ::testing::TestParamInfo<StartCase>& info) { return info.param.name; });

TEST_F(Lifecycle, BaseStartFailureAttachesNothing) {
    ASSERT_EQ(app().setupDone(), 0);
    zo::host::setFrameStepResult(zo::host::FrameStep::PerformStarting, -4);

    EXPECT_EQ(app().start(), -4);
    EXPECT_TRUE(sim().calls("EventManager").empty());
    ASSERT_EQ(logsContaining("Parent class performStarting() returned -4.\n").size(), 1u);
}

TEST_F(Lifecycle, StopTouchesNothingOfItsOwn) {
    startService();
    sim().clearJournal();

    EXPECT_EQ(app().stop(), 0);
    EXPECT_TRUE(sim().journal().empty());
    EXPECT_NE(zo::host::lookupInterface(sysctrlservice::kServiceInterfaceName), nullptr);

    zo::host::setFrameStepResult(zo::host::FrameStep::PerformStopping, -9);
    EXPECT_EQ(app().stop(), -9);
    EXPECT_EQ(logsContaining("Parent class performStopping() returned -9.\n").size(), 1u);
}

TEST_F(Lifecycle, DestructionUnregistersTheInterface) {
    startService();
    clearLogs();

    destroyService();
    EXPECT_EQ(zo::host::lookupInterface(sysctrlservice::kServiceInterfaceName), nullptr);
    ASSERT_FALSE(logs().empty());
    EXPECT_NE(logs().front().text.find("~Application(): Called.\n"), std::string::npos);
}

TEST(PluginEntry, ReturnsANullTerminatedArrayOfOneApplication) {
    frame::AbstractApplication** applications = frameCreateApplicationArray();
    ASSERT_NE(applications, nullptr);
    EXPECT_NE(dynamic_cast<sysctrlservice::Application*>(applications[0]), nullptr);
    EXPECT_EQ(applications[1], nullptr);
    delete applications[0];
    delete[] applications;
}

}  // namespace
}  // namespace sysctrltest
