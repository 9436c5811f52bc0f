// The far-field microphone command language, controlFarField and the callback registrations.
#include "farfieldcontrol.h"

#include "TextCommandFixture.h"
#include "zo/port/FarField.h"

namespace sysctrltest {
namespace {

using sim::json;
using sysctrlservice::FarFieldControl;

class FarFieldCommands : public TextCommandFixture {};

TEST_F(FarFieldCommands, LanguageRepliesAndDrivesThePort) {
    // Queries give values; setMode and setLedColor fail.
    setState("FarField.version", "V2.10.3");
    setState("FarField.upgradeProgress", 42);
    setAnswer("FarField.getTriggerDuration", 0, json::array({300, 4294967295u}));
    setAnswer("FarField.getMicMeter", 7, json::array({-1, 2}));
    setAnswer("FarField.setMode", 3);
    setAnswer("FarField.setLedColor", -1);
    // Command, data, result, result data, status, and the operation and arguments of each port
    // call.
    const std::tuple<const char*, const char*, const char*, const char*, int32_t, const char*>
        cases[] = {
            {"power", "1", "ok", "power", 0, "setPower[true]"},
            {"power extra words", "1", "ok", "power", 0, "setPower[true]"},
            {"power", " 1", "ok", "power", 0, "setPower[false]"},
            {"mute", "01", "ok", "mute", 0, "setMute[false]"},
            {"led", "on", "ok", "led", 0, "setLed[false]"},
            {"upgrade", "", "ok", "upgrade", 0, "upgrade[]"},
            {"getSwitchStatus", "", "ok", "getSwitchStatus 1", 1, "getSwitchStatus[]"},
            {"mode resume", "far", "err: command returns error", "mode far 3", 3,
             "reinit[] setMode[\"far\"]"},
            {"mode", "near", "err: command returns error", "mode near 3", 3, "setMode[\"near\"]"},
            {"reinit", "x", "ok", "reinit x 0", 0, "reinit[]"},
            {"getTriggerDuration", "", "ok", "300 4294967295", 0, "getTriggerDuration[]"},
            {"getUpgradeProgress", "", "ok", "getUpgradeProgress 42", 42, "getUpgradeProgress[]"},
            {"getVersion", "", "ok", "getVersion V2.10.3", 0x000A0300, "getVersion[]"},
            {"micMeter", "", "ok", "micMeter 7 -1 2", 7, "getMicMeter[]"},
            {"setLedColor", "16711680 255", "ok", "setLedColor", -1, "setLedColor[16711680,255]"},
            {"setLedColor", "255,0", "ok", "setLedColor", -1, "setLedColor[255,0]"},
            {"setLedColor", "\t-7x 99999999999", "ok", "setLedColor", -1,
             "setLedColor[-7,2147483647]"},
            {"setLedColor", "5", "err:invalid param", "", -14, ""},
            {"Power", "1", "err: unknown command", "", 0, ""},
            {"  ", "1", "err:no Command", "", -14, ""},
        };
    for (const auto& [command, data, result, resultData, code, calls] : cases) {
        SCOPED_TRACE(std::string(command) + " / " + data);
        sim().clearJournal();
        FarFieldControl controller(port<zo::port::FarField>("FarField"));
        std::string replied;
        std::string repliedData;
        EXPECT_EQ(controller.do_cmd(command, data, replied, repliedData), code);
        EXPECT_EQ(replied, result);
        EXPECT_EQ(repliedData, resultData);
        EXPECT_EQ(callsOf("FarField"), calls);
    }
}

TEST(FarFieldVersion, PacksFourNumbersMostSignificantFirst) {
    const std::pair<const char*, uint32_t> cases[] = {
        {"1.2.3.4", 0x01020304},          {"12.5", 0x0C050000},  {"1.2.3.4.5", 0x01020304},
        {" ..7 ,,8\t9\n10 ", 0x0708090A}, {"300-1", 0x2C010000}, {"v1_2", 0x00020000},
        {"4294967296.1", 0xFF010000},     {"9a.b9", 0x09000000}, {"", 0}};
    for (const auto& [text, packed] : cases) {
        EXPECT_EQ(static_cast<uint32_t>(FarFieldControl::packVersion(text)), packed) << text;
    }
}

TEST_F(FarFieldCommands, LogsItsSteps) {
    FarFieldControl controller(port<zo::port::FarField>("FarField"));
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

TEST_F(FarFieldCommands, OperationLogsFailedForCodeZeroAndRepliesToEveryClient) {
    startService();
    const auto a = addClient("A");
    const auto b = addClient("B");
    frame::MsgIds ids = msgIds(4);
    const std::tuple<const char*, const char*, size_t> steps[] = {
        {"power", "1", 1}, {"getSwitchStatus", "", 0}, {"nothing", "", 1}, {"setLedColor", "1", 0}};
    for (const auto& [command, data, failed] : steps) {
        clearLogs();
        EXPECT_EQ(service().controlFarField(ids, transport(4), command, data), 0);
        EXPECT_EQ(countMessages(3000, "failed.\n"), failed) << command;
    }
    EXPECT_EQ(countMessages(4000, "result=err:invalid param\nresultdata="), 1u);
    EXPECT_EQ(sim().getState("FarField.power"), true);

    // The callback registrations are accepted and do nothing.
    sim().clearJournal();
    clearLogs();
    EXPECT_EQ(service().registerFarFieldCallback(ids, transport(1), 3, "name"), 0);
    EXPECT_EQ(service().unregisterFarFieldCallback(ids, transport(1), 3), 0);
    EXPECT_TRUE(logs().empty());
    EXPECT_TRUE(sim().journal().empty());
    for (const auto& client : {a, b}) {
        EXPECT_EQ(replies(*client, "controlFarFieldResult"), (Replies{{"ok", "power"},
                                                                      {"ok", "getSwitchStatus 1"},
                                                                      {"err: unknown command", ""},
                                                                      {"err:invalid param", ""}}));
    }
}

TEST_F(FarFieldCommands, WithoutThePortLeavesBothTextsEmpty) {
    setAbsent("FarField");
    startService();
    const auto a = addClient("A");
    frame::MsgIds ids = msgIds(1);
    EXPECT_EQ(service().controlFarField(ids, transport(1), "power", "1"), 0);
    EXPECT_EQ(replies(*a, "controlFarFieldResult"), (Replies{{"", ""}}));
    EXPECT_EQ(countMessages(1000, "Cannot get far field object\n"), 1u);

    FarFieldControl controller{boost::shared_ptr<zo::port::FarField>()};
    std::string result;
    std::string resultData;
    EXPECT_EQ(controller.do_cmd("power", "1", result, resultData), -5);
}

}  // namespace
}  // namespace sysctrltest
