// The UART command language and its operation controlUart.
#include "uartcontrol.h"

#include "TextCommandFixture.h"
#include "zo/port/Uart.h"

namespace sysctrltest {
namespace {

using sim::json;

class UartCommands : public TextCommandFixture {
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

TEST_F(UartCommands, InitFindsTheSettingWordsAnywhere) {
    // Settings, and the arguments of the configuration: frame format, baud-rate index, odd
    // parity, two stop bits, 1, 1.
    const std::pair<const char*, const char*> cases[] = {
        {"BAUDRATE_9600 PARITY_ODD STOPBITS_2 7BITS_PARITY", "[1,2,1,1,1,1]"},
        {"", "[0,8,0,0,1,1]"},
        {"8BITS_ASYNCHRON_PARITY PARITY_EVEN STOPBITS_1 BAUDRATE_2400", "[0,0,0,0,1,1]"},
        {"BAUDRATE_115200,BAUDRATE_2400", "[0,8,0,0,1,1]"},
        {"BAUDRATE_4800 BAUDRATE_2400", "[0,1,0,0,1,1]"},
        {"9BITS 7BITS_PARITY", "[2,8,0,0,1,1]"},
        {"7BITS_PARITYxBAUDRATE_57600y", "[1,6,0,0,1,1]"},
        {"8_BITS_PARITY\n9BITS", "[3,8,0,0,1,1]"}};
    for (const auto& [settings, config] : cases) {
        EXPECT_EQ(run("initUart", settings), (std::vector<std::string>{"ok", ""})) << settings;
        EXPECT_EQ(callArgs("Uart", "configure").back().dump(), config) << settings;
    }
    EXPECT_EQ(m_status, 1);
}

TEST_F(UartCommands, WritesDecodedBase64AndAlwaysRepliesOk) {
    sysctrlservice::uartcontrol controller(port<zo::port::Uart>("Uart"));
    EXPECT_EQ(controller.writeUart("aGVs bG8=\n"), 0);
    EXPECT_EQ(controller.writeUart(""), 0);
    EXPECT_EQ(controller.writeUart("not base64!"), -5);
    setAnswer("Uart.write", 1);  // short write
    EXPECT_EQ(controller.writeUart("AAEC"), -5);
    EXPECT_EQ(sim().getState("Uart.txData"), "68656c6c6f00");
    for (const std::string count : {"5", "0", "-1", "3"}) {
        EXPECT_EQ(countMessages(4000, count + " bytes written to UART.\n"), 1u) << count;
    }
    // Whatever the write did, the reply is "ok"; words after the command are ignored.
    EXPECT_EQ(run("writeUart extra", "AAEC"), (std::vector<std::string>{"ok", ""}));
    EXPECT_EQ(run("writeUart", "not base64!")[0], "ok");
    EXPECT_EQ(m_status, 1);
}

TEST_F(UartCommands, FactoryVariantsSwitchModeOnceAndEndTheTextWithALineFeed) {
    setState("Uart.mode", 2);  // only mode 0 is switched
    EXPECT_EQ(run("readUartFactory")[0], "ok");
    setState("Uart.mode", 0);
    EXPECT_EQ(run("writeUartFactory", "aGVs\nbG8=")[0], "ok");
    EXPECT_EQ(sim().getState("Uart.txData"), "68656c6c6f");
    EXPECT_EQ(callArgs("Uart", "setMode"), std::vector<json>{json::array({1, 0})});
    EXPECT_EQ(run("initUartFactory", "BAUDRATE_9600")[0], "ok");
    EXPECT_EQ(run("readUartFactory")[0], "ok");
    EXPECT_EQ(callArgs("Uart", "getMode").size(), 4u);
    EXPECT_EQ(callArgs("Uart", "setMode").size(), 1u);  // the mode was 1 from then on
    EXPECT_EQ(callArgs("Uart", "configure")[0][1], 2);
}

TEST_F(UartCommands, ReadsAtMost512BytesAsBase64) {
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

TEST_F(UartCommands, PortFailuresAreRepliedAsErrors) {
    setAnswer("Uart.read", -3);
    EXPECT_EQ(run("readUart"), (std::vector<std::string>{"err: command returns error", ""}));
    setAnswer("Uart.configure", -1);
    EXPECT_EQ(run("initUart")[0], "err: command returns error");
}

TEST_F(UartCommands, UnknownWordsAndEmptyLinesAreRefused) {
    EXPECT_EQ(run("READUART")[0], "err: unknown command");
    EXPECT_EQ(m_status, 1);
    EXPECT_EQ(run(" ")[0], "err:no Command");
    EXPECT_EQ(m_status, 0);
}

TEST_F(UartCommands, TestSwitchesStopAndRestartThePollThread) {
    EXPECT_EQ(run("startTest")[0], "ok");
    EXPECT_EQ(run("stopTest")[0], "ok");
    EXPECT_EQ(countMessages(4000, "Soundprojector poll thread stopped.\n"), 1u);
    EXPECT_EQ(countMessages(4000, "Soundprojector poll thread restarted.\n"), 1u);
}

TEST_F(UartCommands, WithoutThePortOnlyTheTestSwitchesSucceed) {
    setAbsent("Uart");
    startService();
    const auto a = addClient("A");
    frame::MsgIds ids = msgIds(1);
    clearLogs();
    for (const char* command : {"writeUart", "writeUartFactory", "readUart", "readUartFactory",
                                "initUart", "initUartFactory", "startTest", "nope", ""}) {
        EXPECT_EQ(service().controlUart(ids, transport(1), command, "AAEC"), 0);
    }
    Replies expected(6, std::vector<std::string>{"err: command returns error", ""});
    expected.insert(expected.end(),
                    {{"ok", ""}, {"err: unknown command", ""}, {"err:no Command", ""}});
    EXPECT_EQ(replies(*a, "controlUartResult"), expected);
    EXPECT_EQ(countMessages(1000, "Cannot get uart object\n"), 6u);
    // Only the empty line fails; both texts are logged after every command.
    EXPECT_EQ(countMessages(3000, "failed.\n"), 1u);
    EXPECT_EQ(countMessages(4000, "result=err: unknown command\nresultdata="), 1u);

    sysctrlservice::uartcontrol controller{boost::shared_ptr<zo::port::Uart>()};
    std::string out;
    EXPECT_EQ(controller.writeUartFactory("AAEC"), -5);
    EXPECT_EQ(controller.readUartFactory(out), -5);
    EXPECT_EQ(controller.initFactory(""), -5);
}

}  // namespace
}  // namespace sysctrltest
