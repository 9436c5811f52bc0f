// OLED panel information, version, operating times and error reports.
#include "OledCareTest.h"

namespace sysctrltest {
namespace {

using sim::json;
typedef boost::shared_ptr<sim::RecordingClient> ClientPtr;

const std::vector<int32_t> kUnsolicitedIds = {-1, -1};
const std::vector<int32_t> kUnsolicitedTransport = {-1, -1, 0, -1, -1, -1, -1};

class OledInfo : public OledCareTest {
  protected:
    void SetUp() override {
        OledCareTest::SetUp();
        startService();
        sim().clearJournal();
        clearLogs();
    }
};

// Version records and the text they give.
struct VersionCase {
    const char* name;
    const char* record;  // 22 bytes as hex
    int result;
    const char* text;
};

void PrintTo(const VersionCase& c, std::ostream* os) {
    *os << c.name;
}

class OledVersion : public OledInfo, public ::testing::WithParamInterface<VersionCase> {};

TEST_P(OledVersion, FormatsSevenBytesForEveryClientWithTheCallersIds) {
    const VersionCase& c = GetParam();
    const ClientPtr a = addClient("A");
    const ClientPtr b = addClient("B");
    setAnswer("OledPanel.getVersion", c.result, json::array({c.record}));

    frame::MsgIds ids = msgIds(7);
    EXPECT_EQ(service().getPanelVersion(ids, transport(7)), 0);

    for (const ClientPtr& client : {a, b}) {
        const auto received = client->received();
        ASSERT_EQ(received.size(), 1u);
        EXPECT_EQ(received[0].callback, "getPanelVersionResult");
        EXPECT_EQ(received[0].args, json::array({c.text}));
        EXPECT_EQ(received[0].msgIds, (std::vector<int32_t>{7, 0}));
        EXPECT_EQ(received[0].transport, (std::vector<int32_t>{7, 0, 0, 0, 0, 0, 0}));
    }
    const std::vector<std::string> failed =
        c.result != 0 ? std::vector<std::string>{"Oled getVersion failed.\n"}
                      : std::vector<std::string>{};
    EXPECT_EQ(messagesAt(1000), failed);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, OledVersion,
    ::testing::Values(
        VersionCase{"WordReversedThenBytesSixTwelveTwentyOne",
                    "0102030400000a00000000000b00000000000000000c", 0, "040302010a0b0c"},
        VersionCase{"OtherBytesDoNotShow", "a0b0c0d0ffff01ffffffffff02ffffffffffffffff03", 0,
                    "d0c0b0a0010203"},
        VersionCase{"HighBytesInLowerCase", "ffffffffffffffffffffffffffffffffffffffffffff", 0,
                    "ffffffffffffff"},
        VersionCase{"FailedReadSendsZeros", "0102030400000a00000000000b00000000000000000c", -1,
                    "00000000000000"}),
    [](const ::testing::TestParamInfo<VersionCase>& info) { return info.param.name; });

TEST_F(OledInfo, VersionWithoutPanelIsSilent) {
    const ClientPtr a = addClient("A");
    setAbsent("OledPanel");
    frame::MsgIds ids = msgIds(1);
    EXPECT_EQ(service().getPanelVersion(ids, transport(1)), 0);
    EXPECT_TRUE(a->received().empty());
    EXPECT_TRUE(logs().empty());
}

TEST_F(OledInfo, PanelInformationGoesToEveryClientUnsolicited) {
    const ClientPtr a = addClient("A");
    const ClientPtr b = addClient("B");
    // Its result is not examined: the values are passed on as the panel filled them.
    setAnswer("OledPanel.getPanelInfo", -1, json::array({json::array({7, -1, 2147483647, 0, 5})}));

    frame::MsgIds ids = msgIds(3);
    EXPECT_EQ(service().requestOledPanelInfo(ids, transport(3)), 0);

    for (const ClientPtr& client : {a, b}) {
        const auto received = client->received();
        ASSERT_EQ(received.size(), 1u);
        EXPECT_EQ(received[0].callback, "oledPanelInfoResult");
        EXPECT_EQ(received[0].args, json::array({json::array({7, -1, 2147483647, 0, 5})}));
        EXPECT_EQ(received[0].msgIds, kUnsolicitedIds);
        EXPECT_EQ(received[0].transport, kUnsolicitedTransport);
    }
    EXPECT_EQ(messages(), (std::vector<std::pair<uint16_t, std::string>>{{4000, "notify\n"}}));
    EXPECT_EQ(logsContaining("updateOledPanelInfo(): notify").size(), 1u);
}

TEST_F(OledInfo, PanelInformationWithoutPanelTellsNobody) {
    const ClientPtr a = addClient("A");
    setAbsent("OledPanel");
    EXPECT_EQ(app().updateOledPanelInfo(), 0);
    EXPECT_TRUE(a->received().empty());
    EXPECT_EQ(messagesAt(1000), (std::vector<std::string>{"Cannot get oled panel object\n"}));
}

TEST_F(OledInfo, OperatingTimesAreReadInOrderAndCarryTheCallersIds) {
    const ClientPtr a = addClient("A");
    const ClientPtr b = addClient("B");
    setState("OperationHours.times", json::array({5, 4, 3, 2, 1}));
    setState("OperationHours.text", "5h");

    frame::MsgIds ids = msgIds(4);
    EXPECT_EQ(service().requestOptimeInfo(ids, transport(4)), 0);

    EXPECT_EQ(callsOf({"OperationHours"}),
              (std::vector<std::string>{
                  "OperationHours.getOperationTime(0)", "OperationHours.getOperationTime(1)",
                  "OperationHours.getOperationTime(2)", "OperationHours.getOperationTime(3)",
                  "OperationHours.getOperationTime(4)", "OperationHours.getOperationTimeText()"}));
    for (const ClientPtr& client : {a, b}) {
        const auto received = client->received("requestOptimeInfoResult");
        ASSERT_EQ(received.size(), 1u);
        EXPECT_EQ(received[0].args[0], (json{{"times", {5, 4, 3, 2, 1}}, {"text", "5h"}}));
        EXPECT_EQ(received[0].msgIds, (std::vector<int32_t>{4, 0}));
    }
}

TEST_F(OledInfo, WithoutClientsTheOperationsStillAskThePanel) {
    frame::MsgIds ids = msgIds(1);
    EXPECT_EQ(service().requestOptimeInfo(ids, transport(1)), 0);
    EXPECT_EQ(service().getPanelVersion(ids, transport(1)), 0);
    EXPECT_EQ(service().requestOledPanelInfo(ids, transport(1)), 0);
    EXPECT_EQ(sim().calls("OperationHours").size(), 6u);
    EXPECT_EQ(sim().calls("OledPanel", "getVersion").size(), 1u);
    EXPECT_EQ(sim().calls("OledPanel", "getPanelInfo").size(), 1u);
}

class OledInfoNoHours : public OledCareTest {};

TEST_F(OledInfoNoHours, OperatingTimesWithoutTheObjectAnswerZeros) {
    setAbsent("OperationHours");
    startService();
    const ClientPtr a = addClient("A");
    clearLogs();

    frame::MsgIds ids = msgIds(2);
    EXPECT_EQ(service().requestOptimeInfo(ids, transport(2)), 0);

    const auto received = a->received("requestOptimeInfoResult");
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0].args[0], (json{{"times", {0, 0, 0, 0, 0}}, {"text", ""}}));
    EXPECT_EQ(messagesAt(1000), (std::vector<std::string>{"Cannot get operation hours object\n"}));
}

// Error reports. The previous mask lives as long as the process, across tests; starting the
// service hands the panel's current bits (0 here) to the callback, which brings it back to 0
// whatever an earlier test left, as long as the display is there. Each test checks that first.
class OledErrors : public OledInfo {
  protected:
    void SetUp() override {
        OledInfo::SetUp();
        m_client = addClient("A");
        raise(0);
        ASSERT_TRUE(m_client->received().empty()) << "the previous mask was not 0";
        ASSERT_TRUE(sim().calls("StatusDisplay").empty());
    }

    void raise(uint32_t mask) { ASSERT_TRUE(sim().raiseOledError(mask)); }

    // The masks the client was told, in order, checking that each was unsolicited.
    std::vector<int> told() const {
        std::vector<int> masks;
        for (const auto& received : m_client->received("oledErrorResult")) {
            EXPECT_EQ(received.msgIds, kUnsolicitedIds);
            EXPECT_EQ(received.transport, kUnsolicitedTransport);
            masks.push_back(received.args[0].get<int>());
        }
        return masks;
    }

    std::vector<std::string> displayAndPanelCalls() {
        return callsOf({"StatusDisplay", "OledPanel"});
    }

    ClientPtr m_client;
};

TEST_F(OledErrors, RaisedBitsShowInOrderAndClearedOnesHide) {
    raise(7);
    EXPECT_EQ(
        displayAndPanelCalls(),
        (std::vector<std::string>{"StatusDisplay.showStatus(14)", "StatusDisplay.showStatus(13)",
                                  "OledPanel.markPanelEvent(4)", "StatusDisplay.showStatus(15)"}));
    sim().clearJournal();

    raise(2);
    EXPECT_EQ(displayAndPanelCalls(), (std::vector<std::string>{"StatusDisplay.hideStatus(14)",
                                                                "StatusDisplay.hideStatus(15)"}));
    EXPECT_EQ(told(), (std::vector<int>{7, 2}));
    EXPECT_EQ(sim().getState("StatusDisplay.shown"), json::array({13}));
    raise(0);
}

TEST_F(OledErrors, SameMaskTwiceIsToldOnce) {
    raise(4);
    raise(4);
    EXPECT_EQ(told(), (std::vector<int>{4}));
    EXPECT_EQ(sim().calls("StatusDisplay").size(), 1u);
    raise(0);
}

TEST_F(OledErrors, BitsThatChangeTogetherAreHandledFromBitTwoDown) {
    raise(5);
    sim().clearJournal();
    raise(6);
    EXPECT_EQ(displayAndPanelCalls(), (std::vector<std::string>{"StatusDisplay.showStatus(13)",
                                                                "OledPanel.markPanelEvent(4)",
                                                                "StatusDisplay.hideStatus(15)"}));
    EXPECT_EQ(told(), (std::vector<int>{5, 6}));
    raise(0);
}

TEST_F(OledErrors, HighBitsAreToldButNotShown) {
    raise(0x80000008u);
    EXPECT_TRUE(sim().calls("StatusDisplay", "showStatus").empty());
    EXPECT_EQ(told(), (std::vector<int>{static_cast<int>(0x80000008u)}));
    raise(0);
}

TEST_F(OledErrors, WithoutDisplayTheChangeWaitsForTheNextReport) {
    setAbsent("StatusDisplay");
    raise(5);
    EXPECT_TRUE(told().empty());
    EXPECT_TRUE(sim().calls("OledPanel", "markPanelEvent").empty());

    // The previous mask stayed 0: the same change is handled in full once the display is back.
    ASSERT_TRUE(sim().find("StatusDisplay") != nullptr);
    sim().find("StatusDisplay")->setPresent(true);
    raise(5);
    EXPECT_EQ(
        callsOf({"StatusDisplay"}),
        (std::vector<std::string>{"StatusDisplay.showStatus(14)", "StatusDisplay.showStatus(15)"}));
    EXPECT_EQ(told(), (std::vector<int>{5}));
    raise(0);
}

}  // namespace
}  // namespace sysctrltest
