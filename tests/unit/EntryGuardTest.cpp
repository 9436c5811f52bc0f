// The guard at every way into the service: whatever throws inside ends as a logged failure.
#include <functional>
#include <stdexcept>

#include "OledCareFixture.h"

namespace sysctrltest {
namespace {

using sim::json;

class EntryGuard : public OledCareFixture {
  protected:
    void SetUp() override {
        OledCareFixture::SetUp();
        startService();
        m_client = addClient("A");
        quiet();
    }

    // The messages at level 3000 that report an exception, with their "function(): " kept.
    std::vector<std::string> exceptionLines() const {
        std::vector<std::string> found;
        for (const LogLine& line : logs()) {
            const size_t at = line.text.find("(): exception");
            if (line.level == 3000 && at != std::string::npos) {
                const size_t start = line.text.rfind(':', at) + 1;
                found.push_back(line.text.substr(start));
            }
        }
        return found;
    }

    boost::shared_ptr<sim::RecordingClient> m_client;
};

struct ThrowingPortCase {
    const char* what;
    const char* port;
    std::function<int(sysctrlservice::ServiceInterface&, frame::MsgIds&, frame::TransportInfo&)>
        call;
    int status;
    // The result the client gets ("" for none) and the guard's log line.
    const char* reply;
    const char* logged;
};

TEST_F(EntryGuard, APortThatThrowsEndsTheOperationOnItsFailurePath) {
    const ThrowingPortCase cases[] = {
        {"plain operation", "FactoryManager.readEaromBlock",
         [](auto& s, auto& ids, auto& t) { return s.readEarom(ids, t, 0, 4); }, -1, "",
         "readEarom(): exception: boom\n"},
        {"OPC command", "Opc.getState",
         [](auto& s, auto& ids, auto& t) { return s.controlOpc(ids, t, "getOpcState"); }, 0,
         "err: command returns error", "runCommand(): exception: boom\n"},
        {"antenna command", "Antenna.getTerrestrialParams",
         [](auto& s, auto& ids, auto& t) {
             return s.controlAntenna(ids, t, "getTerrestrialAntenna");
         },
         0, "err: command returns error", "runCommand(): exception: boom\n"},
        {"screen capture", "ScreenCapture.capture",
         [](auto& s, auto& ids, auto& t) {
             return s.cmdCaptureScreen(ids, t, "/tmp", "shot.png", sysctrlservice::CAPTURE_TYPE_1);
         },
         0, "", "cmdCaptureScreen(): exception: boom\n"},
    };
    for (const ThrowingPortCase& c : cases) {
        SCOPED_TRACE(c.what);
        quiet();
        m_client->clear();
        setThrow(c.port, "boom");
        frame::MsgIds ids = msgIds(1);
        frame::TransportInfo where = transport(1);
        EXPECT_EQ(c.call(service(), ids, where), c.status);
        EXPECT_EQ(exceptionLines(), std::vector<std::string>{c.logged});
        const auto received = m_client->received();
        if (*c.reply == '\0') {
            EXPECT_TRUE(received.empty());
        } else {
            ASSERT_EQ(received.size(), 1u);
            EXPECT_EQ(received[0].args[0], c.reply);
        }
        clearAnswer(c.port);
    }
    // The service is whole afterwards.
    frame::MsgIds ids = msgIds(2);
    EXPECT_EQ(service().controlOpc(ids, transport(2), "getOpcState"), 0);
    EXPECT_EQ(m_client->received("controlOpcResult").back().args[0], "0");
}

TEST_F(EntryGuard, AClientThatThrowsCostsTheOthersNothing) {
    m_client->setReaction(
        [](const sim::RecordingClient::Received&) { throw std::runtime_error("gone"); });
    const auto other = addClient("B");
    frame::MsgIds ids = msgIds(1);
    EXPECT_EQ(service().controlOpc(ids, transport(1), "getOpcState"), 0);
    EXPECT_EQ(m_client->received("controlOpcResult").size(), 1u);
    EXPECT_EQ(other->received("controlOpcResult").size(), 1u);
    EXPECT_EQ(exceptionLines(), std::vector<std::string>{"deliverToClients(): exception: gone\n"});
}

TEST_F(EntryGuard, AnEventWhoseHandlingThrowsIsRefusedNotPropagated) {
    setThrow("OperationHours.getOperationTime", "boom");
    std::vector<sim::SimSet::Delivery> deliveries;
    std::string error;
    ASSERT_TRUE(sim().fireEvent("operationHours", 1, 1, deliveries, error)) << error;
    ASSERT_EQ(deliveries.size(), 1u);
    EXPECT_EQ(deliveries[0].status, -1);
    EXPECT_EQ(exceptionLines(), std::vector<std::string>{"onEvent(): exception: boom\n"});
    EXPECT_TRUE(m_client->received().empty());
}

TEST_F(EntryGuard, AnErrorReportWhoseDisplayThrowsIsLoggedOnThePlatformThread) {
    setThrow("StatusDisplay.showStatus", "boom");
    ASSERT_TRUE(sim().raiseOledError(1));
    EXPECT_EQ(exceptionLines(), std::vector<std::string>{"oledErrorCallback(): exception: boom\n"});
    clearAnswer("StatusDisplay.showStatus");
    // Back to no error bits, for the tests that follow in this process.
    ASSERT_TRUE(sim().raiseOledError(0));
}

TEST_F(EntryGuard, AMaintenanceRunThatThrowsStillLetsTheNextRunStart) {
    setThrow("OledPanel.runMaintenance", "boom");
    runMaintenance(1);
    EXPECT_EQ(exceptionLines(),
              std::vector<std::string>{"runOledMaintenance(): exception: boom\n"});
    clearAnswer("OledPanel.runMaintenance");
    sim().clearJournal();
    runMaintenance(1, 2);
    EXPECT_EQ(callsOf({"OledPanel.runMaintenance"}).size(), 1u);
}

}  // namespace
}  // namespace sysctrltest
