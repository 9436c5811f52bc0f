// System restart, panel power with its panel-type cache, and the ZAM options.
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>

#include <gtest/gtest-spi.h>

#include "ServiceTest.h"

namespace sysctrltest {
namespace {

using sim::json;
using sysctrlservice::ServiceInterface;
typedef std::pair<uint16_t, std::string> Message;

const char kConfigFile[] = "/quentadata/model/config/config.ini";

// Each port call as [object, operation, args].
json callsOf(const std::vector<sim::PortCall>& calls) {
    json list = json::array();
    for (const sim::PortCall& call : calls) {
        list.push_back({call.object, call.operation, call.args});
    }
    return list;
}

class System : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        startService();
        sim().clearJournal();
        clearLogs();
    }

    // The panel and the standby controller, the objects these operations drive.
    json deviceCalls() {
        std::vector<sim::PortCall> found;
        for (const sim::PortCall& call : sim().journal()) {
            if (call.object == "OledPanel" || call.object == "SystemControl") {
                found.push_back(call);
            }
        }
        return callsOf(found);
    }

    int restart() {
        frame::MsgIds ids = msgIds(1);
        return service().restartSystem(ids, transport(1));
    }
};

TEST_F(System, RestartTurnsThePanelOffFirstAndNeverConsultsThePanelType) {
    writeFile(kConfigFile, "[TVFeature]\nScreenType = 2\n");
    EXPECT_EQ(restart(), 0);

    EXPECT_EQ(deviceCalls(), json({{"OledPanel", "turnOff", json::array()},
                                   {"SystemControl", "restartByStc", json::array()}}));
    const auto getters = sim().calls("Factory");
    ASSERT_EQ(getters.size(), 2u);
    EXPECT_EQ(getters[0].operation, "getOledPanel");
    EXPECT_EQ(getters[1].operation, "getSystemControl");
    EXPECT_TRUE(sim().calls("ConfigUtil").empty());
    EXPECT_EQ(messages(), (std::vector<Message>{{1, "OLED turnOff panel.\n"},
                                                {4000, "Restart system by STC successfully\n"}}));
    EXPECT_EQ(sim().getState("SystemControl.restarts"), 1);
}

TEST_F(System, RestartFailureIsLoggedWithTheResult) {
    setAnswer("SystemControl.restartByStc", -3);
    EXPECT_EQ(restart(), 0);
    EXPECT_EQ(messages(),
              (std::vector<Message>{{1, "OLED turnOff panel.\n"},
                                    {1000, "Restart system by STC failed, ret = -3.\n"}}));
}

TEST_F(System, RestartSkipsOnlyTheStepsOfMissingObjects) {
    setAbsent("OledPanel");
    EXPECT_EQ(restart(), 0);
    EXPECT_EQ(deviceCalls(), json({{"SystemControl", "restartByStc", json::array()}}));

    sim().clearJournal();
    clearLogs();
    std::string error;
    ASSERT_TRUE(sim().setPresent("OledPanel", true, error)) << error;
    setAbsent("SystemControl");
    EXPECT_EQ(restart(), 0);
    EXPECT_EQ(deviceCalls(), json({{"OledPanel", "turnOff", json::array()}}));
    EXPECT_EQ(messages(), (std::vector<Message>{{1, "OLED turnOff panel.\n"}}));

    sim().clearJournal();
    clearLogs();
    setAbsent("OledPanel");
    EXPECT_EQ(restart(), 0);
    EXPECT_EQ(deviceCalls(), json::array());
    EXPECT_TRUE(logs().empty());
}

// The ZAM options: one call each, arguments unchanged, a failure text only when ZAM says non-zero.
struct ZamCase {
    const char* name;
    std::function<int(ServiceInterface&, frame::MsgIds&, const frame::TransportInfo&)> call;
    const char* operation;
    json args;
    std::vector<Message> entry;
    std::string failure;  // for a ZAM result of -7
};

void PrintTo(const ZamCase& c, std::ostream* os) {
    *os << c.name;
}

class SystemZam : public System, public ::testing::WithParamInterface<ZamCase> {
  protected:
    int run() {
        frame::MsgIds ids = msgIds(2);
        return GetParam().call(service(), ids, transport(2));
    }
};

TEST_P(SystemZam, SuccessLogsNoFailure) {
    const ZamCase& c = GetParam();
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(callsOf(sim().calls("ZamControl")), json({{"ZamControl", c.operation, c.args}}));
    EXPECT_EQ(messages(), c.entry);
}

TEST_P(SystemZam, NonZeroResultLogsTheFailureText) {
    const ZamCase& c = GetParam();
    setAnswer(std::string("ZamControl.") + c.operation, -7);
    clearLogs();
    EXPECT_EQ(run(), 0);
    std::vector<Message> expected = c.entry;
    expected.emplace_back(1000, c.failure);
    EXPECT_EQ(messages(), expected);
}

TEST_P(SystemZam, WithoutZamNothingHappens) {
    setAbsent("ZamControl");
    EXPECT_EQ(run(), 0);
    EXPECT_TRUE(sim().calls("ZamControl").empty());
    EXPECT_EQ(messages(), GetParam().entry);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SystemZam,
    ::testing::Values(
        ZamCase{"BootEnvDbtable",
                [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                    return s.setBootEnvDbtable(m, t, -1);
                },
                "setBootEnvDbtable",
                {-1},
                {},
                "Set Boot environment db_table to ZAM failed, ret = -7.\n"},
        ZamCase{"ComEnabled",
                [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                    return s.controlComEnabled(m, t, 2147483647);
                },
                "setComEnabled",
                {2147483647},
                {},
                "ZAM Set com enable, ret = -7.\n"},
        // The result fills the text's first slot; the second repeats it.
        ZamCase{"UartStateTextCarriesTheResultOnly",
                [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                    return s.controlUartState(m, t, 9);
                },
                "setUartState",
                {9},
                {},
                "ZAM Set uart to -7 failed, ret = -7.\n"},
        // "success" on failure, as the text always read.
        ZamCase{"GpioStatusSaysSuccessOnFailure",
                [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                    return s.setGpioStatus(m, t, 42, -3);
                },
                "setGpioStatus",
                {42, -3},
                {{4000, "Called,value:-3.\n"}},
                "ZAM set gpio success , ret = -7.\n"}),
    [](const ::testing::TestParamInfo<ZamCase>& info) { return std::string(info.param.name); });

// controlPanelPower keeps the panel type for the life of the process, so each of these tests runs
// its calls in a child process of its own (gtest re-runs the test there), with a fresh cache.
class PanelPower : public System {
  protected:
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        System::SetUp();
    }

    int power(int off) {
        frame::MsgIds ids = msgIds(3);
        return service().controlPanelPower(ids, transport(3), off);
    }

    // Runs `body` in the child; the child exits 0 only when no assertion in it failed, and prints
    // the failures on its standard error (which the parent shows) otherwise.
    void inChild(const std::function<void()>& body) {
        EXPECT_EXIT(
            {
                ::testing::TestPartResultArray failures;
                {
                    ::testing::ScopedFakeTestPartResultReporter reporter(
                        ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD,
                        &failures);
                    body();
                }
                for (int i = 0; i < failures.size(); ++i) {
                    const ::testing::TestPartResult& failure = failures.GetTestPartResult(i);
                    std::fprintf(stderr, "%s:%d: %s\n", failure.file_name(), failure.line_number(),
                                 failure.message());
                }
                // The child leaves without the fixture's tear-down; its root goes here.
                std::error_code ignored;
                std::filesystem::remove_all(m_root, ignored);
                _exit(failures.size() == 0 ? 0 : 1);
            },
            ::testing::ExitedWithCode(0), "");
    }

    size_t configReads() { return sim().calls("ConfigUtil", "readInt").size(); }
};

TEST_F(PanelPower, OnAnOledSetTheArgumentMeansOff) {
    writeFile(kConfigFile, "[TVFeature]\nScreenType = 1\n");
    inChild([this] {
        EXPECT_EQ(power(1), 0);
        EXPECT_EQ(power(0), 0);
        EXPECT_EQ(power(-4), 0);
        EXPECT_EQ(deviceCalls(), json({{"OledPanel", "turnOff", json::array()},
                                       {"OledPanel", "turnOn", json::array()},
                                       {"OledPanel", "turnOff", json::array()}}));
        const auto reads = sim().calls("ConfigUtil", "readInt");
        ASSERT_EQ(reads.size(), 1u);
        EXPECT_EQ(reads[0].args, json({kConfigFile, "TVFeature", "ScreenType"}));
        EXPECT_EQ(messages(), (std::vector<Message>{{1, "set panel power 1, ScreenType 1 \n"},
                                                    {1, "OLED turnOff panel.\n"},
                                                    {1, "set panel power 0, ScreenType 1 \n"},
                                                    {1, "OLED turnOn panel.\n"},
                                                    {1, "set panel power -4, ScreenType 1 \n"},
                                                    {1, "OLED turnOff panel.\n"}}));
    });
}

TEST_F(PanelPower, AnyOtherPanelTypeGoesToTheStandbyController) {
    writeFile(kConfigFile, "[TVFeature]\nScreenType = 0\n");
    inChild([this] {
        EXPECT_EQ(power(1), 0);
        EXPECT_EQ(power(-9), 0);
        EXPECT_EQ(deviceCalls(), json({{"SystemControl", "setPanelPower", {1}},
                                       {"SystemControl", "setPanelPower", {-9}}}));
        EXPECT_EQ(configReads(), 1u);
        EXPECT_EQ(messages().front(), Message(1, "set panel power 1, ScreenType 0 \n"));
    });
}

TEST_F(PanelPower, OledTypeWithoutAPanelGoesToTheStandbyController) {
    writeFile(kConfigFile, "[TVFeature]\nScreenType = 1\n");
    setAbsent("OledPanel");
    inChild([this] {
        EXPECT_EQ(power(0), 0);
        EXPECT_EQ(deviceCalls(), json({{"SystemControl", "setPanelPower", {0}}}));
    });
}

TEST_F(PanelPower, WithoutEitherObjectOnlyTheTypeIsRead) {
    writeFile(kConfigFile, "[TVFeature]\nScreenType = 1\n");
    setAbsent("OledPanel");
    setAbsent("SystemControl");
    inChild([this] {
        EXPECT_EQ(power(1), 0);
        EXPECT_EQ(deviceCalls(), json::array());
        EXPECT_EQ(configReads(), 1u);
    });
}

TEST_F(PanelPower, AMissingKeyIsReadAgainOnEveryCallUntilItAppears) {
    writeFile(kConfigFile, "[TVFeature]\nOther = 1\n");
    inChild([this] {
        EXPECT_EQ(power(1), 0);
        EXPECT_EQ(power(1), 0);
        EXPECT_EQ(configReads(), 2u);
        EXPECT_EQ(logsContaining("read ScreenType failed").size(), 2u);
        EXPECT_EQ(messages()[0], Message(1000, "read ScreenType failed\n"));
        EXPECT_EQ(messages()[1], Message(1, "set panel power 1, ScreenType -1 \n"));
        EXPECT_EQ(deviceCalls(), json({{"SystemControl", "setPanelPower", {1}},
                                       {"SystemControl", "setPanelPower", {1}}}));

        // Once a value is read, the file is not read again, even when it changes.
        writeFile(kConfigFile, "[TVFeature]\nScreenType = 1\n");
        sim().clearJournal();
        clearLogs();
        EXPECT_EQ(power(1), 0);
        writeFile(kConfigFile, "[TVFeature]\nScreenType = 0\n");
        EXPECT_EQ(power(0), 0);
        EXPECT_EQ(configReads(), 1u);
        EXPECT_TRUE(logsContaining("read ScreenType failed").empty());
        EXPECT_EQ(deviceCalls(), json({{"OledPanel", "turnOff", json::array()},
                                       {"OledPanel", "turnOn", json::array()}}));
    });
}

TEST_F(PanelPower, AFailedReadKeepsWhatTheUtilityLeft) {
    // A utility that reports failure but wrote a value: the value is kept and not read again.
    setAnswer("ConfigUtil.readInt", 0, json::array({1}));
    inChild([this] {
        EXPECT_EQ(power(1), 0);
        EXPECT_EQ(power(1), 0);
        EXPECT_EQ(configReads(), 1u);
        EXPECT_EQ(logsContaining("read ScreenType failed").size(), 1u);
        EXPECT_EQ(deviceCalls(), json({{"OledPanel", "turnOff", json::array()},
                                       {"OledPanel", "turnOff", json::array()}}));
    });
}

}  // namespace
}  // namespace sysctrltest
