// The OPC command language and its operation controlOpc.
#include "opccontrol.h"

#include "TextCommandFixture.h"
#include "zo/port/Opc.h"

namespace sysctrltest {
namespace {

using sysctrlservice::opccontrol;

class OpcCommands : public TextCommandFixture {};

TEST_F(OpcCommands, LanguageRepliesAndDrivesThePort) {
    // Line, result, status, and the port calls. The result starts as "x": only the texts of lines
    // that run nothing are appended to it, every other reply replaces it. tests/scripts/
    // opc-uart-commands.sim runs more lines through the service.
    const std::tuple<const char*, const char*, int32_t, const char*> cases[] = {
        {"   ", "xerr:no Command", 0, ""},
        {"startOpc\t1", "xerr:unknown command", 0, ""},
        {"startOpc", "err: insufficient arguments", 0, ""},
        {"startOpc,3", "ok", 1, "start[254]"},
        {"startOpc 1", "ok", 1, "start[0]"},
        {"startOpc 256", "ok", 1, "start[255]"},
        {"startOpc 257", "ok", 1, "start[0]"},
        {"startOpc -1", "ok", 1, "start[254]"},
        {"startOpc abc", "ok", 1, "start[254]"},
        {"startOpc 2147483648", "ok", 1, "start[254]"},
        {"startOpc -2147483648", "ok", 1, "start[255]"},
        {"startOpc 0", "ok", 1, "stop[]"},
        {"startOpc +0", "ok", 1, "stop[]"},
        {"startOpc -0 9", "ok", 1, "stop[]"},
        {"getOpcState 1 2 3", "0", 1, "getState[]"},
        {"getOpcDimmingRate", "100", 1, "getDimmingRate[]"}};
    for (const auto& [line, reply, status, calls] : cases) {
        SCOPED_TRACE(line);
        sim().clearJournal();
        opccontrol controller(port<zo::port::Opc>("Opc"));
        std::string result = "x";
        EXPECT_EQ(controller.do_cmd(line, result), status);
        EXPECT_EQ(result, reply);
        EXPECT_EQ(callsOf("Opc"), calls);
    }
    // The three bad numbers above read as -1, each logged as ever.
    EXPECT_EQ(countMessages(3000, "error parsing process smaps.\n"), 3u);
    EXPECT_EQ(logsContaining("opccontrol.cpp:").size(), 3u);
    EXPECT_EQ(logsContaining("getIntArgument(): error parsing process smaps.\n").size(), 3u);
    EXPECT_EQ(opccontrol(port<zo::port::Opc>("Opc")).getIntArgument(5), -1);  // past the end
}

TEST_F(OpcCommands, PortFailuresAndValuesAreReplied) {
    setAnswer("Opc.start", -1);
    setAnswer("Opc.stop", 3);
    setAnswer("Opc.getState", -5);
    setAnswer("Opc.getDimmingRate", INT32_MIN);
    opccontrol controller(port<zo::port::Opc>("Opc"));
    const std::tuple<const char*, const char*, int32_t> cases[] = {
        {"startOpc 2", "err: get failed", 0},
        {"startOpc 0", "err: get failed", 0},
        {"getOpcState", "-5", 1},
        {"getOpcDimmingRate", "-2147483648", 1}};
    for (const auto& [line, reply, status] : cases) {
        std::string result;
        EXPECT_EQ(controller.do_cmd(line, result), status) << line;
        EXPECT_EQ(result, reply) << line;
    }
}

TEST_F(OpcCommands, OperationLogsFailedForEveryErrorReply) {
    startService();
    frame::MsgIds ids = msgIds(7);
    const std::pair<const char*, size_t> lines[] = {
        {"startOpc 3", 0}, {"", 1}, {"bogus", 1}, {"startOpc", 1}};
    for (const auto& [line, failed] : lines) {
        clearLogs();
        EXPECT_EQ(service().controlOpc(ids, transport(7), line), 0);
        EXPECT_EQ(countMessages(4000, "Called.\n"), 1u);
        EXPECT_EQ(countMessages(3000, "failed.\n"), failed) << line;
    }
}

TEST_F(OpcCommands, OperationWithoutThePortRepliesAFailure) {
    setAbsent("Opc");
    startService();
    const auto a = addClient("A");
    frame::MsgIds ids = msgIds(1);
    for (const char* line : {"startOpc 1", "getOpcState", "getOpcDimmingRate", "startOpc"}) {
        EXPECT_EQ(service().controlOpc(ids, transport(1), line), 0);
    }
    EXPECT_EQ(replies(*a, "controlOpcResult"), (Replies{{"err: get failed"},
                                                        {"err: get failed"},
                                                        {"err: get failed"},
                                                        {"err: insufficient arguments"}}));
    EXPECT_EQ(countMessages(1000, "Cannot get opc object\n"), 3u);
    EXPECT_EQ(countMessages(3000, "failed.\n"), 4u);
}

}  // namespace
}  // namespace sysctrltest
