// Any command line and data string, of any length and bytes, gets exactly one reply of the
// language's shape and status 0, whatever the ports answer, and with no port at all.
#include <random>
#include <regex>
#include <set>

#include "TextCommandTest.h"
#include "commandcontrol.h"
#include "zo/Base64.h"

namespace sysctrltest {
namespace {

using sim::json;

const char* const kPieces[] = {"startOpc",
                               "getOpcState",
                               "getOpcDimmingRate",
                               "writeUart",
                               "writeUartFactory",
                               "readUart",
                               "readUartFactory",
                               "initUart",
                               "initUartFactory",
                               "startTest",
                               "stopTest",
                               "power",
                               "mute",
                               "led",
                               "upgrade",
                               "getSwitchStatus",
                               "mode",
                               "resume",
                               "reinit",
                               "getTriggerDuration",
                               "getUpgradeProgress",
                               "getVersion",
                               "micMeter",
                               "setLedColor",
                               "iic",
                               "getSignalInfo",
                               "1",
                               "0",
                               "-1",
                               "+7",
                               "2147483648",
                               "-2147483649",
                               "0x10",
                               "aGVsbG8=",
                               "QQ",
                               "=",
                               "BAUDRATE_9600",
                               "9BITS",
                               "PARITY_ODD",
                               ",",
                               " ",
                               "  ",
                               "\t",
                               "\n",
                               "grüße",
                               "\xff\xfe"};

// The first kCommandWords pieces are command words.
const size_t kCommandWords = 26;

// Random text that starts with a command word two times in three.
std::string randomText(std::mt19937& random) {
    std::string text;
    if (random() % 3 != 0) {
        text = std::string(kPieces[random() % kCommandWords]) + (random() % 2 == 0 ? " " : "");
    }
    const int pieces = static_cast<int>(random() % 8);
    for (int i = 0; i < pieces; ++i) {
        switch (random() % 4) {
            case 0:
                text.push_back(static_cast<char>(random() % 256));  // NUL included
                break;
            case 1:
                text.append(random() % 2 == 0 ? " " : ",");
                break;
            default:
                text.append(kPieces[random() % (sizeof kPieces / sizeof kPieces[0])]);
                break;
        }
    }
    return text;
}

// Port operations whose integer results are scripted at random.
const char* const kAnswers[] = {"Opc.start",
                                "Opc.stop",
                                "Opc.getState",
                                "Uart.read",
                                "Uart.write",
                                "Uart.configure",
                                "Uart.getMode",
                                "FarField.reinit",
                                "FarField.setPower",
                                "FarField.setMode",
                                "FarField.getMicMeter",
                                "FarField.setLedColor",
                                "HdmiSwitch.getSignalInfo",
                                "FactoryManager.setGpio",
                                "zoshell.zoshellExecuteCmd"};

class Fuzz : public TextCommandTest {
  protected:
    // Runs `rounds` random calls over the text operations and checks every reply.
    void run(int rounds, uint32_t seed, bool scriptAnswers) {
        startService();
        const auto client = addClient("A");
        std::mt19937 random(seed);
        frame::MsgIds ids = msgIds(1);
        for (int round = 0; round < rounds; ++round) {
            if (scriptAnswers && random() % 3 == 0) {
                const int result = static_cast<int>(random() % 1200) - 600;
                setAnswer(kAnswers[random() % (sizeof kAnswers / sizeof kAnswers[0])], result);
            }
            if (scriptAnswers && random() % 4 == 0) {
                std::string waiting;
                for (size_t i = random() % 700; i > 0; --i) {
                    waiting += "0123456789abcdef"[random() % 16];
                    waiting += "0123456789abcdef"[random() % 16];
                }
                setState("Uart.rxData", waiting);
            }
            const std::string command = randomText(random);
            const std::string data = randomText(random);
            const size_t before = client->received().size();
            int status = -99;
            switch (round % 8) {
                case 0:
                    status = service().controlOpc(ids, transport(1), command);
                    break;
                case 1:
                    status = service().controlUart(ids, transport(1), command, data);
                    break;
                case 2:
                    status = service().controlFarField(ids, transport(1), command, data);
                    break;
                case 3:
                    status = service().setGpio(ids, transport(1), command);
                    break;
                case 4:
                    status = service().getGpio(ids, transport(1), command);
                    break;
                case 5:
                    status = service().controlIic(ids, transport(1), command);
                    break;
                case 6:
                    status = service().controlHdmi(ids, transport(1), command);
                    break;
                default:
                    status = service().executeZoshell(ids, transport(1), command);
                    break;
            }
            ASSERT_EQ(status, 0) << ::testing::PrintToString(command);
            ASSERT_EQ(client->received().size(), before + 1) << ::testing::PrintToString(command);
        }
        checkShapes(*client);
    }

    void checkShapes(const sim::RecordingClient& client) {
        const std::regex number("-?[0-9]+");
        const std::set<std::string> opc = {"ok", "err:no Command", "err:unknown command",
                                           "err: insufficient arguments", "err: get failed"};
        for (const auto& reply : replies(client, "controlOpcResult")) {
            EXPECT_TRUE(opc.count(reply[0]) == 1 || std::regex_match(reply[0], number)) << reply[0];
        }
        const std::set<std::string> uart = {"ok", "err:no Command", "err: unknown command",
                                            "err: command returns error"};
        for (const auto& reply : replies(client, "controlUartResult")) {
            EXPECT_EQ(uart.count(reply[0]), 1u) << reply[0];
            unsigned char* bytes = nullptr;
            const int length = zo::base64::decode(reply[1].data(), reply[1].size(), &bytes);
            zo::base64::release(bytes);
            EXPECT_TRUE(length >= 0 && length <= 512 && (length > 0) == !reply[1].empty());
        }
        const std::set<std::string> farField = {"ok",
                                                "err:no Command",
                                                "err: unknown command",
                                                "err: command returns error",
                                                "err:invalid param",
                                                ""};
        for (const auto& reply : replies(client, "controlFarFieldResult")) {
            EXPECT_EQ(farField.count(reply[0]), 1u) << reply[0];
        }
    }
};

TEST_F(Fuzz, RandomLinesWithRandomPortAnswers) {
    run(2400, 1234567u, true);
}

TEST_F(Fuzz, RandomLinesWithoutAnyPort) {
    for (const char* object : {"Opc", "Uart", "FarField", "FactoryManager", "HdmiSwitch"}) {
        setAbsent(object);
    }
    run(800, 89u, false);
}

TEST_F(Fuzz, AMegabyteOfCommasInEveryLanguage) {
    startService();
    const auto client = addClient("A");
    frame::MsgIds ids = msgIds(1);
    const std::string commas(1 << 20, ',');
    service().controlOpc(ids, transport(1), commas);
    service().controlUart(ids, transport(1), commas, commas);
    service().controlUart(ids, transport(1), "writeUart", commas);
    service().controlFarField(ids, transport(1), commas, commas);
    service().controlFarField(ids, transport(1), "setLedColor", commas);
    service().controlIic(ids, transport(1), "iic" + commas);
    EXPECT_EQ(replies(*client, "controlOpcResult"),
              std::vector<std::vector<std::string>>{{"err:unknown command"}});
    EXPECT_EQ(replies(*client, "controlUartResult"),
              (std::vector<std::vector<std::string>>{{"err: unknown command", ""}, {"ok", ""}}));
    EXPECT_EQ(replies(*client, "controlFarFieldResult"),
              (std::vector<std::vector<std::string>>{{"err: unknown command", ""},
                                                     {"ok", "setLedColor"}}));
    EXPECT_EQ(callArgs("FarField", "setLedColor"), std::vector<json>{json::array({0, 0})});
    EXPECT_TRUE(callArgs("Uart", "write").empty());
    EXPECT_EQ(client->received("controlIicResult").size(), 1u);
}

TEST_F(TextCommandTest, AnExceptionOfACommandBecomesAFailedCommand) {
    std::string result = "partial";
    EXPECT_EQ(sysctrlservice::runCommand([]() -> int32_t { throw std::bad_alloc(); }, result), 0);
    EXPECT_EQ(result, "err: command returns error");
    EXPECT_EQ(countMessages(3000, "exception: std::bad_alloc\n"), 1u);
    EXPECT_EQ(sysctrlservice::runCommand([]() -> int32_t { throw 5; }, result), 0);
    result = "kept";
    EXPECT_EQ(sysctrlservice::runCommand([] { return int32_t{-14}; }, result), -14);
    EXPECT_EQ(result, "kept");
}

}  // namespace
}  // namespace sysctrltest
