// The UART command language and its operation controlUart.
#include "uartcontrol.h"

#include "TextCommandTest.h"
#include "zo/port/Uart.h"

namespace sysctrltest {
namespace {

using sim::json;

struct InitCase {
    std::string settings;
    std::vector<int> config;  // frame format, baud-rate index, odd parity, two stop bits
};

void PrintTo(const InitCase& c, std::ostream* os) {
    *os << ::testing::PrintToString(c.settings);
}

class UartInit : public TextCommandTest, public ::testing::WithParamInterface<InitCase> {};

TEST_P(UartInit, FindsTheSettingWordsAnywhere) {
    sysctrlservice::uartcontrol controller(port<zo::port::Uart>("Uart"));
    std::string result;
    std::string resultData;
    EXPECT_EQ(controller.do_cmd("initUart", GetParam().settings, result, resultData), 1);
    EXPECT_EQ(result, "ok");
    std::vector<int> expected = GetParam().config;
    expected.insert(expected.end(), {1, 1});
    EXPECT_EQ(callArgs("Uart", "configure"), std::vector<json>{json(expected)});
}

INSTANTIATE_TEST_SUITE_P(
    Settings, UartInit,
    ::testing::Values(InitCase{"BAUDRATE_9600 PARITY_ODD STOPBITS_2 7BITS_PARITY", {1, 2, 1, 1}},
                      InitCase{"", {0, 8, 0, 0}},
                      InitCase{"8BITS_ASYNCHRON_PARITY PARITY_EVEN STOPBITS_1", {0, 8, 0, 0}},
                      InitCase{"BAUDRATE_115200,BAUDRATE_2400", {0, 8, 0, 0}},
                      InitCase{"BAUDRATE_4800 BAUDRATE_2400", {0, 1, 0, 0}},
                      InitCase{"BAUDRATE_2400", {0, 0, 0, 0}},
                      InitCase{"xBAUDRATE_57600y", {0, 6, 0, 0}},
                      InitCase{"BAUDRATE_76800", {0, 7, 0, 0}},
                      InitCase{"9BITS 7BITS_PARITY", {2, 8, 0, 0}},
                      InitCase{"8_BITS_PARITY\n9BITS", {3, 8, 0, 0}}));

class Uart : public TextCommandTest {
  protected:
    // Runs one command on a fresh controller; returns {result, resultData}.
    std::vector<std::string> run(const std::string& command, const std::string& data = "") {
        sysctrlservice::uartcontrol controller(port<zo::port::Uart>("Uart"));
        std::string result;
        std::string resultData;
        m_status = controller.do_cmd(command, data, result, resultData);
        return {result, resultData};
    }
    int32_t m_status = -1;
};

TEST_F(Uart, WritesDecodedBase64AndAlwaysRepliesOk) {
    EXPECT_EQ(run("writeUart extra", "aGVs bG8=\n"), (std::vector<std::string>{"ok", ""}));
    EXPECT_EQ(sim().getState("Uart.txData"), "68656c6c6f");
    EXPECT_EQ(countMessages(4000, "5 bytes written to UART.\n"), 1u);

    EXPECT_EQ(run("writeUart", "not base64!")[0], "ok");  // malformed: nothing written
    EXPECT_EQ(countMessages(4000, "-1 bytes written to UART.\n"), 1u);
    EXPECT_EQ(run("writeUart", "")[0], "ok");
    EXPECT_EQ(countMessages(4000, "0 bytes written to UART.\n"), 1u);
    EXPECT_EQ(callArgs("Uart", "write").size(), 1u);

    setAnswer("Uart.write", 1);  // short write
    EXPECT_EQ(run("writeUart", "AAEC")[0], "ok");
    EXPECT_EQ(m_status, 1);
}

TEST_F(Uart, WriteStatusesAreThePortsOutcome) {
    sysctrlservice::uartcontrol controller(port<zo::port::Uart>("Uart"));
    EXPECT_EQ(controller.writeUart("AAEC"), 0);
    EXPECT_EQ(controller.writeUart(""), 0);
    EXPECT_EQ(controller.writeUart("AAE"), -5);
    setAnswer("Uart.write", 2);
    EXPECT_EQ(controller.writeUart("AAEC"), -5);
    EXPECT_EQ(sim().getState("Uart.txData"), "0001020001");
}

TEST_F(Uart, FactoryVariantsSwitchModeOnceAndEndTheTextWithALineFeed) {
    EXPECT_EQ(run("writeUartFactory", "aGVs\nbG8=")[0], "ok");
    EXPECT_EQ(sim().getState("Uart.txData"), "68656c6c6f");
    EXPECT_EQ(callArgs("Uart", "setMode"), std::vector<json>{json::array({1, 0})});
    EXPECT_EQ(run("initUartFactory", "BAUDRATE_9600")[0], "ok");
    EXPECT_EQ(run("readUartFactory")[0], "ok");
    EXPECT_EQ(callArgs("Uart", "getMode").size(), 3u);
    EXPECT_EQ(callArgs("Uart", "setMode").size(), 1u);  // the mode was 1 from then on
    EXPECT_EQ(callArgs("Uart", "configure")[0][1], 2);
}

TEST_F(Uart, ReadsAtMost512BytesAsBase64) {
    EXPECT_EQ(run("readUart"), (std::vector<std::string>{"ok", ""}));
    EXPECT_EQ(countMessages(4000, "0(encoded:0) bytes read from UART().\n"), 1u);

    setState("Uart.rxData", "68656c6c6f");
    EXPECT_EQ(run("readUart"), (std::vector<std::string>{"ok", "aGVsbG8="}));
    EXPECT_EQ(countMessages(4000, "strlen=8 size=8"), 1u);
    EXPECT_EQ(countMessages(4000, "5(encoded:8) bytes read from UART(aGVsbG8=).\n"), 1u);

    setState("Uart.rxData", std::string(2 * 600, 'a'));
    const std::vector<std::string> first = run("readUart");
    EXPECT_EQ(first[1], std::string(682, 'q') + "o=");  // 512 bytes of 0xaa
    EXPECT_EQ(callArgs("Uart", "read").back(), json::array({512, 1}));
    EXPECT_EQ(sim().getState("Uart.rxData"), std::string(2 * 88, 'a'));

    // A port that claims more than the buffer holds gets only the buffer read.
    setAnswer("Uart.read", 100000, json::array({std::string(2 * 512, 'a')}));
    EXPECT_EQ(run("readUart")[1], first[1]);
}

TEST_F(Uart, FailuresAndOtherCommands) {
    setAnswer("Uart.read", -3);
    EXPECT_EQ(run("readUart"), (std::vector<std::string>{"err: command returns error", ""}));
    setAnswer("Uart.configure", -1);
    EXPECT_EQ(run("initUart")[0], "err: command returns error");
    EXPECT_EQ(run("READUART")[0], "err: unknown command");
    EXPECT_EQ(m_status, 1);
    EXPECT_EQ(run(" ")[0], "err:no Command");
    EXPECT_EQ(m_status, 0);
    EXPECT_EQ(run("startTest")[0], "ok");
    EXPECT_EQ(run("stopTest")[0], "ok");
    EXPECT_EQ(countMessages(4000, "Soundprojector poll thread stopped.\n"), 1u);
    EXPECT_EQ(countMessages(4000, "Soundprojector poll thread restarted.\n"), 1u);
}

TEST_F(Uart, ControlUartRepliesToEveryClientAndLogsBothTexts) {
    startService();
    const auto a = addClient("A");
    const auto b = addClient("B");
    setState("Uart.rxData", "00ff");
    frame::MsgIds ids = msgIds(3);
    clearLogs();
    EXPECT_EQ(service().controlUart(ids, transport(3), "readUart", ""), 0);
    EXPECT_EQ(countMessages(4000, "result=ok\nresultdata=AP8="), 1u);
    EXPECT_EQ(countMessages(3000, "failed.\n"), 0u);
    EXPECT_EQ(service().controlUart(ids, transport(3), "", "x"), 0);
    EXPECT_EQ(countMessages(3000, "failed.\n"), 1u);
    for (const auto& client : {a, b}) {
        EXPECT_EQ(replies(*client, "controlUartResult"),
                  (std::vector<std::vector<std::string>>{{"ok", "AP8="}, {"err:no Command", ""}}));
        EXPECT_EQ(client->received("controlUartResult")[0].msgIds, (std::vector<int32_t>{3, 0}));
    }
}

TEST_F(Uart, WithoutThePortOnlyTheTestSwitchesSucceed) {
    setAbsent("Uart");
    startService();
    const auto a = addClient("A");
    frame::MsgIds ids = msgIds(1);
    for (const char* command : {"writeUart", "writeUartFactory", "readUart", "readUartFactory",
                                "initUart", "initUartFactory", "startTest", "nope"}) {
        EXPECT_EQ(service().controlUart(ids, transport(1), command, "AAEC"), 0);
    }
    std::vector<std::vector<std::string>> expected(
        6, std::vector<std::string>{"err: command returns error", ""});
    expected.push_back({"ok", ""});
    expected.push_back({"err: unknown command", ""});
    EXPECT_EQ(replies(*a, "controlUartResult"), expected);
    EXPECT_EQ(countMessages(1000, "Cannot get uart object\n"), 6u);

    sysctrlservice::uartcontrol controller{boost::shared_ptr<zo::port::Uart>()};
    std::string out;
    EXPECT_EQ(controller.writeUartFactory("AAEC"), -5);
    EXPECT_EQ(controller.readUartFactory(out), -5);
    EXPECT_EQ(controller.initFactory(""), -5);
}

}  // namespace
}  // namespace sysctrltest
