// OLED panel information, version, operating times and error reports.
#include "OledCareFixture.h"

namespace sysctrltest {
namespace {

using sim::json;
typedef boost::shared_ptr<sim::RecordingClient> ClientPtr;

// The reports on a service that is not started and has no clients.
class OledReports : public OledCareFixture {};

class OledInfo : public OledCareFixture {
  protected:
    void SetUp() override {
        OledCareFixture::SetUp();
        startService();
        m_a = addClient("A");
        m_b = addClient("B");
        sim().clearJournal();
        clearLogs();
    }

    // Both clients got exactly `callback` once, with `args` and the identifiers `ids`.
    void expectBothGot(const char* callback, const json& args, const std::vector<int32_t>& ids,
                       const std::vector<int32_t>& transport) {
        for (const ClientPtr& client : {m_a, m_b}) {
            const auto received = client->received();
            ASSERT_EQ(received.size(), 1u) << client->name();
            EXPECT_EQ(received[0].callback, callback);
            EXPECT_EQ(received[0].args, args);
            EXPECT_EQ(received[0].msgIds, ids);
            EXPECT_EQ(received[0].transport, transport);
        }
    }

    ClientPtr m_a;
    ClientPtr m_b;
};

TEST_F(OledInfo, VersionFormatsSevenBytesWithTheCallersIds) {
    const struct {
        const char* record;  // 22 bytes as hex
        int result;
        const char* text;
    } cases[] = {
        {"0102030400000a00000000000b00000000000000000c", 0, "040302010a0b0c"},
        {"a0b0c0d0ffff01ffffffffff02ffffffffffffffff03", 0, "d0c0b0a0010203"},
        {"0102030400000a00000000000b00000000000000000c", -1, "00000000000000"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.record);
        m_a->clear();
        m_b->clear();
        clearLogs();
        setAnswer("OledPanel.getVersion", c.result, json::array({c.record}));
        frame::MsgIds ids = msgIds(7);
        EXPECT_EQ(service().getPanelVersion(ids, transport(7)), 0);
        expectBothGot("getPanelVersionResult", json::array({c.text}), {7, 0},
                      {7, 0, 0, 0, 0, 0, 0});
        EXPECT_EQ(messagesAt(1000), c.result != 0 ? Texts{"Oled getVersion failed.\n"} : Texts{});
    }
}

TEST_F(OledInfo, PanelInformationGoesToEveryClientUnsolicited) {
    // Its result is not examined: the values are passed on as the panel filled them.
    setAnswer("OledPanel.getPanelInfo", -1, json::array({json::array({7, -1, 2147483647, 0, 5})}));
    frame::MsgIds ids = msgIds(3);
    EXPECT_EQ(service().requestOledPanelInfo(ids, transport(3)), 0);

    expectBothGot("oledPanelInfoResult", json::array({json::array({7, -1, 2147483647, 0, 5})}),
                  kUnsolicitedIds, kUnsolicitedTransport);
    EXPECT_EQ(messages(), (std::vector<std::pair<uint16_t, std::string>>{{4000, "notify\n"}}));
    EXPECT_EQ(logsContaining("updateOledPanelInfo(): notify").size(), 1u);
}

TEST_F(OledInfo, WithoutPanelVersionIsSilentAndInformationTellsNobody) {
    setAbsent("OledPanel");
    frame::MsgIds ids = msgIds(1);
    EXPECT_EQ(service().getPanelVersion(ids, transport(1)), 0);
    EXPECT_TRUE(logs().empty());
    EXPECT_EQ(app().updateOledPanelInfo(), 0);
    EXPECT_TRUE(m_a->received().empty());
    EXPECT_EQ(messagesAt(1000), Texts{"Cannot get oled panel object\n"});
}

TEST_F(OledInfo, OperatingTimesAreReadInOrderAndCarryTheCallersIds) {
    setState("OperationHours.times", json::array({5, 4, 3, 2, 1}));
    setState("OperationHours.text", "5h");
    frame::MsgIds ids = msgIds(4);
    EXPECT_EQ(service().requestOptimeInfo(ids, transport(4)), 0);

    EXPECT_EQ(
        callsOf({"OperationHours"}),
        (Texts{"OperationHours.getOperationTime(0)", "OperationHours.getOperationTime(1)",
               "OperationHours.getOperationTime(2)", "OperationHours.getOperationTime(3)",
               "OperationHours.getOperationTime(4)", "OperationHours.getOperationTimeText()"}));
    expectBothGot("requestOptimeInfoResult",
                  json::array({json{{"times", {5, 4, 3, 2, 1}}, {"text", "5h"}}}), {4, 0},
                  {4, 0, 0, 0, 0, 0, 0});
}

TEST_F(OledReports, WithoutClientsTheOperationsStillAskThePanel) {
    startService();
    frame::MsgIds ids = msgIds(1);
    EXPECT_EQ(service().requestOptimeInfo(ids, transport(1)), 0);
    EXPECT_EQ(service().getPanelVersion(ids, transport(1)), 0);
    EXPECT_EQ(service().requestOledPanelInfo(ids, transport(1)), 0);
    EXPECT_EQ(sim().calls("OperationHours", "getOperationTime").size(), 5u);
    EXPECT_EQ(sim().calls("OledPanel", "getVersion").size(), 1u);
    EXPECT_EQ(sim().calls("OledPanel", "getPanelInfo").size(), 1u);
}

TEST_F(OledReports, OperatingTimesWithoutTheObjectAnswerZeros) {
    setAbsent("OperationHours");
    startService();
    const ClientPtr a = addClient("A");
    clearLogs();
    frame::MsgIds ids = msgIds(2);
    EXPECT_EQ(service().requestOptimeInfo(ids, transport(2)), 0);

    const auto received = a->received("requestOptimeInfoResult");
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0].args[0], (json{{"times", {0, 0, 0, 0, 0}}, {"text", ""}}));
    EXPECT_EQ(messagesAt(1000), Texts{"Cannot get operation hours object\n"});
}

// Error reports; tests/scripts/oled-errors.sim follows a whole sequence in a fresh process. The
// previous mask lives as long as the process, across tests; starting the service hands the
// panel's current bits (0 here) to the callback, which brings it back to 0 whatever an earlier
// test left, as long as the display is there.
TEST_F(OledInfo, ErrorBitsThatChangeTogetherAreHandledFromBitTwoDown) {
    ASSERT_TRUE(sim().raiseOledError(0));
    ASSERT_TRUE(m_a->received().empty()) << "the previous mask was not 0";
    ASSERT_TRUE(sim().raiseOledError(5));
    sim().clearJournal();
    // High bits are told but have no status code.
    ASSERT_TRUE(sim().raiseOledError(0x80000006u));
    ASSERT_TRUE(sim().raiseOledError(0x80000006u));

    EXPECT_EQ(callsOf({"StatusDisplay", "OledPanel"}),
              (Texts{"StatusDisplay.showStatus(13)", "OledPanel.markPanelEvent(4)",
                     "StatusDisplay.hideStatus(15)"}));
    std::vector<int> told;
    for (const auto& received : m_b->received("oledErrorResult")) {
        EXPECT_EQ(received.msgIds, kUnsolicitedIds);
        EXPECT_EQ(received.transport, kUnsolicitedTransport);
        told.push_back(received.args[0].get<int>());
    }
    EXPECT_EQ(told, (std::vector<int>{5, static_cast<int>(0x80000006u)}));
    ASSERT_TRUE(sim().raiseOledError(0));
}

}  // namespace
}  // namespace sysctrltest
