// The far-field microphone command language, controlFarField and the callback registrations.
#include "farfieldcontrol.h"

#include "TextCommandTest.h"
#include "zo/port/FarField.h"

namespace sysctrltest {
namespace {

using sim::json;

struct FarFieldCase {
    std::string command;
    std::string data;
    std::string result;
    std::string resultData;
    int32_t code;
    json calls;  // [operation, args] of each port call
};

void PrintTo(const FarFieldCase& c, std::ostream* os) {
    *os << ::testing::PrintToString(c.command) << " " << ::testing::PrintToString(c.data);
}

// Answers scripted for every case: queries give values, setMode and setLedColor fail.
class FarFieldLanguage : public TextCommandTest,
                         public ::testing::WithParamInterface<FarFieldCase> {
  protected:
    void SetUp() override {
        TextCommandTest::SetUp();
        setState("FarField.version", "V2.10.3");
        setState("FarField.upgradeProgress", 42);
        setAnswer("FarField.getTriggerDuration", 0, json::array({300, 4294967295u}));
        setAnswer("FarField.getMicMeter", 7, json::array({-1, 2}));
        setAnswer("FarField.setMode", 3);
        setAnswer("FarField.setLedColor", -1);
    }
};

TEST_P(FarFieldLanguage, RepliesAndDrivesThePort) {
    sysctrlservice::FarFieldControl controller(port<zo::port::FarField>("FarField"));
    std::string result;
    std::string resultData;
    EXPECT_EQ(controller.do_cmd(GetParam().command, GetParam().data, result, resultData),
              GetParam().code);
    EXPECT_EQ(result, GetParam().result);
    EXPECT_EQ(resultData, GetParam().resultData);
    json calls = json::array();
    for (const sim::PortCall& call : sim().calls("FarField")) {
        calls.push_back(json::array({call.operation, call.args}));
    }
    EXPECT_EQ(calls, GetParam().calls);
}

json call(const char* operation, json args = json::array()) {
    return json::array({json::array({operation, args})});
}

INSTANTIATE_TEST_SUITE_P(
    Commands, FarFieldLanguage,
    ::testing::Values(
        FarFieldCase{"power", "1", "ok", "power", 0, call("setPower", {true})},
        FarFieldCase{"power extra words", "1", "ok", "power", 0, call("setPower", {true})},
        FarFieldCase{"power", " 1", "ok", "power", 0, call("setPower", {false})},
        FarFieldCase{"mute", "01", "ok", "mute", 0, call("setMute", {false})},
        FarFieldCase{"led", "on", "ok", "led", 0, call("setLed", {false})},
        FarFieldCase{"upgrade", "", "ok", "upgrade", 0, call("upgrade")},
        FarFieldCase{"getSwitchStatus", "", "ok", "getSwitchStatus 1", 1, call("getSwitchStatus")},
        FarFieldCase{"mode resume", "far", "err: command returns error", "mode far 3", 3,
                     json::array({json::array({"reinit", json::array()}),
                                  json::array({"setMode", {"far"}})})},
        FarFieldCase{"mode", "near", "err: command returns error", "mode near 3", 3,
                     call("setMode", {"near"})},
        FarFieldCase{"reinit", "x", "ok", "reinit x 0", 0, call("reinit")},
        FarFieldCase{"getTriggerDuration", "", "ok", "300 4294967295", 0,
                     call("getTriggerDuration")},
        FarFieldCase{"getUpgradeProgress", "", "ok", "getUpgradeProgress 42", 42,
                     call("getUpgradeProgress")},
        FarFieldCase{"getVersion", "", "ok", "getVersion V2.10.3", 0x000A0300, call("getVersion")},
        FarFieldCase{"micMeter", "", "ok", "micMeter 7 -1 2", 7, call("getMicMeter")},
        FarFieldCase{"setLedColor", "16711680 255", "ok", "setLedColor", -1,
                     call("setLedColor", {16711680, 255})},
        FarFieldCase{"setLedColor", "255,0", "ok", "setLedColor", -1,
                     call("setLedColor", {255, 0})},
        FarFieldCase{"setLedColor", "\t-7x 99999999999", "ok", "setLedColor", -1,
                     call("setLedColor", {-7, 2147483647})},
        FarFieldCase{"setLedColor", "5", "err:invalid param", "", -14, json::array()},
        FarFieldCase{"Power", "1", "err: unknown command", "", 0, json::array()},
        FarFieldCase{"  ", "1", "err:no Command", "", -14, json::array()}));

struct VersionCase {
    std::string text;
    uint32_t packed;
};

void PrintTo(const VersionCase& c, std::ostream* os) {
    *os << ::testing::PrintToString(c.text);
}

class FarFieldVersion : public ::testing::TestWithParam<VersionCase> {};

TEST_P(FarFieldVersion, PacksFourNumbersMostSignificantFirst) {
    EXPECT_EQ(static_cast<uint32_t>(sysctrlservice::FarFieldControl::packVersion(GetParam().text)),
              GetParam().packed)
        << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, FarFieldVersion,
    ::testing::Values(VersionCase{"1.2.3.4", 0x01020304}, VersionCase{"12.5", 0x0C050000},
                      VersionCase{"", 0}, VersionCase{"V2.10.3", 0x000A0300},
                      VersionCase{"1.2.3.4.5", 0x01020304}, VersionCase{"300-1", 0x2C010000},
                      VersionCase{" ..7 ,,8\t9\n10 ", 0x0708090A}, VersionCase{"v1_2", 0x00020000},
                      VersionCase{"4294967296.1", 0xFF010000}, VersionCase{"9a.b9", 0x09000000}));

TEST_F(TextCommandTest, FarFieldWithoutThePortLeavesBothTextsEmpty) {
    sysctrlservice::FarFieldControl controller{boost::shared_ptr<zo::port::FarField>()};
    std::string result;
    std::string resultData;
    EXPECT_EQ(controller.do_cmd("power", "1", result, resultData), -5);
    EXPECT_EQ(result, "");
    EXPECT_EQ(resultData, "");
    EXPECT_EQ(countMessages(1000, "Cannot get far field object\n"), 1u);
}

TEST_F(TextCommandTest, FarFieldLogsItsSteps) {
    sysctrlservice::FarFieldControl controller(port<zo::port::FarField>("FarField"));
    std::string result;
    std::string resultData;
    setAnswer("FarField.getMicMeter", -2, json::array({-1, 16}));
    controller.do_cmd("micMeter", "d", result, resultData);
    EXPECT_EQ(logsContaining("FarFieldControl(): FarFieldControl --> A\n").size(), 1u);
    EXPECT_EQ(logsContaining("do_cmd(): FarFieldControl --> micMeter d\n").size(), 1u);
    EXPECT_EQ(countMessages(4000, "FarFieldControl --> B\n"), 1u);
    EXPECT_EQ(countMessages(4000, "[0xfffffffe] 0xffffffff-0x10\n"), 1u);
    EXPECT_EQ(countMessages(4000, "micMeter -2 -1 16.\n"), 1u);
}

TEST_F(TextCommandTest, ControlFarFieldLogsFailedForCodeZeroAndRepliesToEveryClient) {
    startService();
    const auto a = addClient("A");
    const auto b = addClient("B");
    frame::MsgIds ids = msgIds(4);
    struct Step {
        const char* command;
        const char* data;
        size_t failed;
    };
    for (const Step& step : {Step{"power", "1", 1}, Step{"getSwitchStatus", "", 0},
                             Step{"nothing", "", 1}, Step{"setLedColor", "1", 0}}) {
        clearLogs();
        EXPECT_EQ(service().controlFarField(ids, transport(4), step.command, step.data), 0);
        EXPECT_EQ(countMessages(3000, "failed.\n"), step.failed) << step.command;
    }
    EXPECT_EQ(countMessages(4000, "result=err:invalid param\nresultdata="), 1u);
    EXPECT_EQ(sim().getState("FarField.power"), true);
    for (const auto& client : {a, b}) {
        EXPECT_EQ(replies(*client, "controlFarFieldResult"),
                  (std::vector<std::vector<std::string>>{{"ok", "power"},
                                                         {"ok", "getSwitchStatus 1"},
                                                         {"err: unknown command", ""},
                                                         {"err:invalid param", ""}}));
    }
}

TEST_F(TextCommandTest, FarFieldWithoutThePortRepliesEmptyTexts) {
    setAbsent("FarField");
    startService();
    const auto a = addClient("A");
    frame::MsgIds ids = msgIds(1);
    EXPECT_EQ(service().controlFarField(ids, transport(1), "power", "1"), 0);
    EXPECT_EQ(replies(*a, "controlFarFieldResult"),
              (std::vector<std::vector<std::string>>{{"", ""}}));
}

TEST_F(TextCommandTest, FarFieldCallbackRegistrationsDoNothing) {
    startService();
    const auto a = addClient("A");
    sim().clearJournal();
    clearLogs();
    frame::MsgIds ids = msgIds(1);
    EXPECT_EQ(service().registerFarFieldCallback(ids, transport(1), 3, "name"), 0);
    EXPECT_EQ(service().unregisterFarFieldCallback(ids, transport(1), 3), 0);
    EXPECT_TRUE(logs().empty());
    EXPECT_TRUE(sim().journal().empty());
    EXPECT_TRUE(a->received().empty());
}

}  // namespace
}  // namespace sysctrltest
