// The OPC command language and its operation controlOpc.
#include "opccontrol.h"

#include "TextCommandTest.h"
#include "zo/port/Opc.h"

namespace sysctrltest {
namespace {

using sim::json;

struct OpcCase {
    std::string line;
    std::string reply;
    int32_t status;
    json calls;  // [operation, args] of each port call
};

void PrintTo(const OpcCase& c, std::ostream* os) {
    *os << ::testing::PrintToString(c.line);
}

class OpcLanguage : public TextCommandTest, public ::testing::WithParamInterface<OpcCase> {};

TEST_P(OpcLanguage, RepliesAndDrivesThePort) {
    sysctrlservice::opccontrol controller(port<zo::port::Opc>("Opc"));
    std::string result;
    EXPECT_EQ(controller.do_cmd(GetParam().line, result), GetParam().status);
    EXPECT_EQ(result, GetParam().reply);
    json calls = json::array();
    for (const sim::PortCall& call : sim().calls("Opc")) {
        calls.push_back({call.operation, call.args});
    }
    EXPECT_EQ(calls, GetParam().calls);
}

// One port call without arguments, or start(mode).
json only(const char* operation) {
    return json::array({json::array({operation, json::array()})});
}
json start(int mode) {
    return json::array({json::array({"start", json::array({mode})})});
}
const json kNoCall = json::array();
const json kStop = only("stop");

INSTANTIATE_TEST_SUITE_P(
    Lines, OpcLanguage,
    ::testing::Values(
        OpcCase{"", "err:no Command", 0, kNoCall}, OpcCase{"   ", "err:no Command", 0, kNoCall},
        OpcCase{"startopc 1", "err:unknown command", 0, kNoCall},
        OpcCase{"startOpc\t1", "err:unknown command", 0, kNoCall},
        OpcCase{"startOpc", "err: insufficient arguments", 0, kNoCall},
        OpcCase{"  startOpc   3  ", "ok", 1, start(2)}, OpcCase{"startOpc,3", "ok", 1, start(254)},
        OpcCase{"startOpc 1", "ok", 1, start(0)}, OpcCase{"startOpc 256", "ok", 1, start(255)},
        OpcCase{"startOpc 257", "ok", 1, start(0)}, OpcCase{"startOpc -1", "ok", 1, start(254)},
        OpcCase{"startOpc abc", "ok", 1, start(254)},
        OpcCase{"startOpc 2147483648", "ok", 1, start(254)},
        OpcCase{"startOpc -2147483648", "ok", 1, start(255)}, OpcCase{"startOpc 0", "ok", 1, kStop},
        OpcCase{"startOpc +0", "ok", 1, kStop}, OpcCase{"startOpc -0 9", "ok", 1, kStop},
        OpcCase{"getOpcState 1 2 3", "0", 1, only("getState")},
        OpcCase{"getOpcDimmingRate", "100", 1, only("getDimmingRate")}));

TEST_F(TextCommandTest, OpcBadNumberIsLoggedAndReadsAsMinusOne) {
    sysctrlservice::opccontrol controller(port<zo::port::Opc>("Opc"));
    std::string result;
    controller.do_cmd("startOpc 0x10", result);
    EXPECT_EQ(logsContaining("opccontrol.cpp:").size(), 1u);
    EXPECT_EQ(logsContaining("getIntArgument(): error parsing process smaps.\n").size(), 1u);
    EXPECT_EQ(countMessages(3000, "error parsing process smaps.\n"), 1u);
    EXPECT_EQ(controller.getIntArgument(5), -1);  // past the last word
}

TEST_F(TextCommandTest, OpcPortFailuresAndValuesAreReplied) {
    sysctrlservice::opccontrol controller(port<zo::port::Opc>("Opc"));
    std::string result;
    setAnswer("Opc.start", -1);
    EXPECT_EQ(controller.do_cmd("startOpc 2", result), 0);
    EXPECT_EQ(result, "err: get failed");
    setAnswer("Opc.stop", 3);
    EXPECT_EQ(controller.do_cmd("startOpc 0", result), 0);
    EXPECT_EQ(result, "err: get failed");
    setAnswer("Opc.getState", -5);
    EXPECT_EQ(controller.do_cmd("getOpcState", result), 1);
    EXPECT_EQ(result, "-5");
    setAnswer("Opc.getDimmingRate", INT32_MIN);
    EXPECT_EQ(controller.do_cmd("getOpcDimmingRate", result), 1);
    EXPECT_EQ(result, "-2147483648");
}

TEST_F(TextCommandTest, OpcAppendsOnlyTheTwoTextsOfLinesThatRunNothing) {
    sysctrlservice::opccontrol controller(port<zo::port::Opc>("Opc"));
    std::string result = "x";
    controller.do_cmd(" ", result);
    EXPECT_EQ(result, "xerr:no Command");
    result = "x";
    controller.do_cmd("stop", result);
    EXPECT_EQ(result, "xerr:unknown command");
    controller.do_cmd("startOpc 1", result);
    EXPECT_EQ(result, "ok");
}

TEST_F(TextCommandTest, ControlOpcRepliesToEveryClientAndLogsFailures) {
    startService();
    const auto a = addClient("A");
    const auto b = addClient("B");
    frame::MsgIds ids = msgIds(7);
    clearLogs();
    EXPECT_EQ(service().controlOpc(ids, transport(7), "startOpc 3"), 0);
    EXPECT_EQ(sim().getState("Opc.mode"), 2);
    EXPECT_EQ(countMessages(4000, "Called.\n"), 1u);
    EXPECT_EQ(countMessages(3000, "failed.\n"), 0u);
    for (const auto& client : {a, b}) {
        const auto received = client->received("controlOpcResult");
        ASSERT_EQ(received.size(), 1u);
        EXPECT_EQ(received[0].msgIds, (std::vector<int32_t>{7, 0}));
        EXPECT_EQ(received[0].transport, (std::vector<int32_t>{7, 0, 0, 0, 0, 0, 0}));
        EXPECT_EQ(received[0].args, json::array({"ok"}));
    }

    for (const char* line : {"", "bogus", "startOpc"}) {
        clearLogs();
        EXPECT_EQ(service().controlOpc(ids, transport(8), line), 0);
        EXPECT_EQ(countMessages(3000, "failed.\n"), 1u) << line;
    }
    EXPECT_EQ(
        replies(*b, "controlOpcResult"),
        (std::vector<std::vector<std::string>>{
            {"ok"}, {"err:no Command"}, {"err:unknown command"}, {"err: insufficient arguments"}}));
}

TEST_F(TextCommandTest, ControlOpcWithoutThePortRepliesAFailure) {
    setAbsent("Opc");
    startService();
    const auto a = addClient("A");
    frame::MsgIds ids = msgIds(1);
    for (const char* line : {"startOpc 1", "getOpcState", "getOpcDimmingRate"}) {
        EXPECT_EQ(service().controlOpc(ids, transport(1), line), 0);
    }
    service().controlOpc(ids, transport(1), "startOpc");
    EXPECT_EQ(replies(*a, "controlOpcResult"),
              (std::vector<std::vector<std::string>>{{"err: get failed"},
                                                     {"err: get failed"},
                                                     {"err: get failed"},
                                                     {"err: insufficient arguments"}}));
    EXPECT_EQ(countMessages(1000, "Cannot get opc object\n"), 3u);
    EXPECT_EQ(countMessages(3000, "failed.\n"), 4u);
}

}  // namespace
}  // namespace sysctrltest
