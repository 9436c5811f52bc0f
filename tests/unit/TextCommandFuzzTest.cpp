// Any command line and data string, of any length and bytes, gets exactly one reply of the
// language's shape and status 0, whatever the ports answer, and with no port at all.
#include <functional>
#include <random>
#include <regex>

#include "CommandControl.h"
#include "TextCommandFixture.h"

namespace sysctrltest {
namespace {

using sim::json;

std::vector<std::string> splitPieces(const std::string& text) {
    std::vector<std::string> pieces;
    for (size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = text.find('|', begin);
        pieces.push_back(text.substr(begin, end - begin));
    }
    return pieces;
}

// Pieces of command lines, separated by "|": the command words first, then arguments and odd
// characters.
const std::vector<std::string> kPieces = splitPieces(
    "startOpc|getOpcState|getOpcDimmingRate|writeUart|writeUartFactory|readUart|readUartFactory|"
    "initUart|initUartFactory|startTest|stopTest|power|mute|led|upgrade|getSwitchStatus|mode|"
    "resume|reinit|getTriggerDuration|getUpgradeProgress|getVersion|micMeter|setLedColor|iic|"
    "getSignalInfo|1|0|-1|+7|2147483648|-2147483649|0x10|aGVsbG8=|QQ|=|BAUDRATE_9600|9BITS|"
    "PARITY_ODD|,| |  |\t|\n|grüße|\xff\xfe");
const size_t kCommandWords = 26;

// Random text that starts with a command word two times in three.
std::string randomText(std::mt19937& random) {
    std::string text;
    if (random() % 3 != 0) {
        text = kPieces[random() % kCommandWords] + (random() % 2 == 0 ? " " : "");
    }
    for (int pieces = static_cast<int>(random() % 8); pieces > 0; --pieces) {
        const unsigned int kind = random() % 4;
        if (kind == 0) {
            text.push_back(static_cast<char>(random() % 256));  // NUL included
        } else {
            text +=
                kind == 1 ? (random() % 2 == 0 ? " " : ",") : kPieces[random() % kPieces.size()];
        }
    }
    return text;
}

// Port operations whose integer results are scripted at random.
const std::vector<std::string> kAnswers = splitPieces(
    "Opc.start|Opc.stop|Opc.getState|Uart.read|Uart.write|Uart.configure|Uart.getMode|"
    "FarField.reinit|FarField.setPower|FarField.setMode|FarField.getMicMeter|FarField.setLedColor|"
    "HdmiSwitch.getSignalInfo|FactoryManager.setGpio|zoshell.zoshellExecuteCmd");

class Fuzz : public TextCommandFixture {
  protected:
    // Runs `rounds` random calls over the text operations and checks every reply.
    void run(int rounds, uint32_t seed, bool scriptAnswers) {
        startService();
        const auto client = addClient("A");
        std::mt19937 random(seed);
        frame::MsgIds ids = msgIds(1);
        // Each takes the command line and the data string.
        const std::vector<std::function<int(const std::string&, const std::string&)>> operations = {
            [&](auto& c, auto&) { return service().controlOpc(ids, transport(1), c); },
            [&](auto& c, auto& d) { return service().controlUart(ids, transport(1), c, d); },
            [&](auto& c, auto& d) { return service().controlFarField(ids, transport(1), c, d); },
            [&](auto& c, auto&) { return service().setGpio(ids, transport(1), c); },
            [&](auto& c, auto&) { return service().getGpio(ids, transport(1), c); },
            [&](auto& c, auto&) { return service().controlIic(ids, transport(1), c); },
            [&](auto& c, auto&) { return service().controlHdmi(ids, transport(1), c); },
            [&](auto& c, auto&) { return service().executeZoshell(ids, transport(1), c); }};
        for (int round = 0; round < rounds; ++round) {
            if (scriptAnswers && random() % 3 == 0) {
                const int result = static_cast<int>(random() % 1200) - 600;
                setAnswer(kAnswers[random() % kAnswers.size()], result);
            }
            if (scriptAnswers && random() % 4 == 0) {
                setState("Uart.rxData", std::string(2 * (random() % 700), 'e'));  // 0xee bytes
            }
            const std::string command = randomText(random);
            const std::string data = randomText(random);
            const size_t before = client->received().size();
            ASSERT_EQ(operations[round % operations.size()](command, data), 0)
                << ::testing::PrintToString(command);
            ASSERT_EQ(client->received().size(), before + 1) << ::testing::PrintToString(command);
        }
        checkShapes(*client, "controlOpcResult",
                    "ok|err:no Command|err:unknown command|err: insufficient arguments|"
                    "err: get failed|-?[0-9]+");
        checkShapes(*client, "controlUartResult",
                    "ok|err:no Command|err: unknown command|err: command returns error");
        checkShapes(*client, "controlFarFieldResult",
                    "|ok|err:no Command|err: unknown command|err: command returns error|"
                    "err:invalid param");
        // Data read is whole Base64 of at most 512 bytes.
        const std::regex base64("([A-Za-z0-9+/]{4})*([A-Za-z0-9+/]{2}==|[A-Za-z0-9+/]{3}=)?");
        for (const auto& reply : replies(*client, "controlUartResult")) {
            EXPECT_TRUE(std::regex_match(reply[1], base64) && reply[1].size() <= 684) << reply[1];
        }
    }

    // Every reply text of `callback` matches `shapes`.
    void checkShapes(const sim::RecordingClient& client, const char* callback, const char* shapes) {
        const std::regex shape(shapes);
        for (const auto& reply : replies(client, callback)) {
            EXPECT_TRUE(std::regex_match(reply[0], shape)) << callback << ": " << reply[0];
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
    EXPECT_EQ(replies(*client, "controlOpcResult"), Replies{{"err:unknown command"}});
    EXPECT_EQ(replies(*client, "controlUartResult"),
              (Replies{{"err: unknown command", ""}, {"ok", ""}}));
    EXPECT_EQ(replies(*client, "controlFarFieldResult"),
              (Replies{{"err: unknown command", ""}, {"ok", "setLedColor"}}));
    EXPECT_EQ(callArgs("FarField", "setLedColor"), std::vector<json>{json::array({0, 0})});
    EXPECT_TRUE(callArgs("Uart", "write").empty());
    EXPECT_EQ(client->received("controlIicResult").size(), 1u);
}

// The boundary every text command runs inside.
class CommandBoundary : public TextCommandFixture {};

TEST_F(CommandBoundary, AnExceptionOfACommandBecomesAFailedCommand) {
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
