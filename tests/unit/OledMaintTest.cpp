// OLED panel maintenance: the request, the run on its own thread and what each step calls.
#include "OledCareFixture.h"

namespace sysctrltest {
namespace {

using sim::json;
typedef boost::shared_ptr<sim::RecordingClient> ClientPtr;

class OledMaint : public OledCareFixture {
  protected:
    void SetUp() override {
        OledCareFixture::SetUp();
        startService();
        setState("clock.utcTime", 500);
        writeFile(kRunningTime, "77\n");
        sim().clearJournal();
        clearLogs();
    }

    // Every client got the one result of one run, marked unsolicited.
    static void expectToldOnce(const ClientPtr& client, int result) {
        const auto received = client->received("oledMaintResult");
        ASSERT_EQ(received.size(), 1u) << client->name();
        EXPECT_EQ(received[0].args, json::array({result})) << client->name();
        EXPECT_EQ(received[0].msgIds, kUnsolicitedIds);
        EXPECT_EQ(received[0].transport, kUnsolicitedTransport);
    }
};

struct RunCase {
    const char* name;
    int tempLut;  // -1: no board.ini
    unsigned int flag;
    int runResult;
    const char* calls;    // the panel-care calls, operations only, separated by blanks
    const char* records;  // the records file afterwards
};

void PrintTo(const RunCase& c, std::ostream* os) {
    *os << c.name;
}

class OledMaintRuns : public OledMaint, public ::testing::WithParamInterface<RunCase> {};

TEST_P(OledMaintRuns, CallsRecordsAndTellsEveryClient) {
    const RunCase& c = GetParam();
    if (c.tempLut >= 0) {
        setTempLut(c.tempLut);
    }
    setState("OledPanel.maintenanceResult", c.runResult);
    const ClientPtr a = addClient("A");
    const ClientPtr b = addClient("B");

    runMaintenance(c.flag);

    std::string calls;
    for (const std::string& call : panelCareCalls()) {
        calls += (calls.empty() ? "" : " ") + call.substr(call.find('.') + 1);
    }
    EXPECT_EQ(calls, c.calls);
    EXPECT_EQ(readFile(kRecordsLog), c.records);
    expectToldOnce(a, c.runResult);
    expectToldOnce(b, c.runResult);
    EXPECT_EQ(sim().getState("StatusDisplay.shown"), json::array()) << "left on screen";
    // The panel needs a pause of three seconds between the two cycle calls, and only there.
    const std::vector<std::string> cycle =
        callsOf({"OledPanel.panelCycleBegin", "thread.sleep", "OledPanel.panelCycleEnd"});
    if (calls.find("panelCycleBegin") != std::string::npos) {
        EXPECT_EQ(cycle,
                  (std::vector<std::string>{"OledPanel.panelCycleBegin()", "thread.sleep(3000)",
                                            "OledPanel.panelCycleEnd()"}));
    } else {
        EXPECT_EQ(cycle, std::vector<std::string>());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, OledMaintRuns,
    ::testing::Values(
        RunCase{"NoTempLutRecordsMaintenanceWhateverTheFlag", -1, 0, 0,
                "markPanelEvent(0) showStatus(11) runMaintenance(0) hideStatus(11)", "500:77:0\n"},
        RunCase{"TempLutOneWithoutBitZeroRecordsNothing", 1, 0, 0,
                "showStatus(11) runMaintenance(0) hideStatus(11)", "<missing>"},
        RunCase{"TempLutOneWithBitZeroOtherBitsGoToThePanel", 1, 0xF1, 0,
                "markPanelEvent(0) showStatus(11) runMaintenance(241) hideStatus(11)",
                "500:77:0\n"},
        RunCase{"TempLutTwoRefreshRecordsBothAndRefreshClearBitAlone", 2, 2, 0x200,
                "markPanelEvent(0) markPanelEvent(2) showStatus(12) runMaintenance(2) "
                "hideStatus(12) clearOperationTime(4) markPanelEvent(3)",
                "500:77:0\n500:77:2\n500:77:3\n"},
        RunCase{"BothClearBitsClearThreeThenFour", 1, 0, 0x300,
                "showStatus(11) runMaintenance(0) hideStatus(11) clearOperationTime(3) "
                "markPanelEvent(1) clearOperationTime(4) markPanelEvent(3)",
                "500:77:1\n500:77:3\n"},
        RunCase{"PanelCycleResult", 1, 0, 0x10,
                "showStatus(11) runMaintenance(0) showStatus(16) hideStatus(11) panelCycleBegin() "
                "panelCycleEnd() hideStatus(16)",
                "<missing>"},
        RunCase{"ForcedCycleAfterRefreshOnly", 1, 0xA, 0,
                "markPanelEvent(2) showStatus(12) runMaintenance(10) showStatus(16) hideStatus(12) "
                "panelCycleBegin() panelCycleEnd() hideStatus(16)",
                "500:77:2\n"}),
    [](const ::testing::TestParamInfo<RunCase>& info) { return info.param.name; });

TEST_F(OledMaint, WithoutDisplayOrHoursThereIsNoCycleAndNoClearing) {
    const ClientPtr a = addClient("A");
    setAbsent("StatusDisplay");
    setAbsent("OperationHours");
    setTempLut(1);
    setState("OledPanel.maintenanceResult", 0x320);
    runMaintenance(8);

    EXPECT_EQ(panelCareCalls(), Texts{"OledPanel.runMaintenance(8)"});
    EXPECT_EQ(readFile(kRecordsLog), "<missing>");
    expectToldOnce(a, 0x320);
    EXPECT_EQ(messagesAt(1000),
              (Texts{"Cannot get StatusDisplay object\n", "Cannot get operation hours object\n"}));
}

TEST_F(OledMaint, RunStartsItsThreadReadsTheBoardAndLogsEveryStep) {
    // The utility's refusal counts, whatever it filled in.
    setAnswer("ConfigUtil.readInt", 0, json::array({1}));
    setState("OledPanel.maintenanceResult", 0x300);
    runMaintenance(0x80000001u);

    const auto create = sim().calls("thread", "create");
    ASSERT_EQ(create.size(), 1u);
    EXPECT_EQ(create[0].args, json::array({"oledMaintThread", -2}));
    const auto read = sim().calls("ConfigUtil", "readInt");
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0].args, json::array({kBoardIni, "OLED", "OLED_TempLUT"}));
    const std::vector<std::pair<uint16_t, std::string>> expected = {
        {4000, "Control Oled maintenance, flag = -2147483647 \n"},
        {1000, "read OLED_TempLUT failed\n"},
        {4000, "OLED maintance: tmpLUT 0, flag -2147483647\n"},
        {4000, "PMR: new record type:0 time:500.\n"},
        {4000, "oled maintenance begin\n"},
        {4000, "oled maintenance end, ret = 768\n"},
        {4000, "clear panel maint time\n"},
        {4000, "PMR: new record type:1 time:500.\n"},
        {4000, "clear panel refresh time\n"},
        {4000, "PMR: new record type:3 time:500.\n"},
    };
    EXPECT_EQ(messages(), expected);
    EXPECT_EQ(logsContaining("oledMaintThread(): oled maintenance begin").size(), 1u);
    EXPECT_EQ(logsContaining("controlOledMaint(): Control Oled maintenance").size(), 1u);
}

TEST_F(OledMaint, MaintenanceObjectGoneAtRunTimeStillRecordsAndTellsZero) {
    const ClientPtr a = addClient("A");
    setState("OledPanel.maintenanceResult", 0x300);
    // The panel disappears once the run has told it about the maintenance event.
    sim().setListener([this](const json& event) {
        if (event.value("operation", "") == "markPanelEvent") {
            sim().find("OledPanel")->setPresent(false);
        }
    });
    runMaintenance(0);
    sim().setListener(nullptr);

    expectToldOnce(a, 0);
    EXPECT_TRUE(sim().calls("OledPanel", "runMaintenance").empty());
    EXPECT_TRUE(sim().calls("StatusDisplay").empty());
    EXPECT_TRUE(sim().calls("OperationHours").empty()) << "result 0 clears nothing";
    EXPECT_EQ(readFile(kRecordsLog), "500:77:0\n");
    EXPECT_EQ(messagesAt(1000),
              (Texts{"read OLED_TempLUT failed\n", "Cannot get oled maintenance object\n"}));
}

TEST_F(OledMaint, ScreenOffIsServedOnTheCallersThreadAndStartsNothing) {
    const ClientPtr a = addClient("A");
    const struct {
        bool panel;
        bool video;
        int videoResult;
        Texts calls;
        Texts logged;
    } cases[] = {
        {true, true, 0, {"Video.setScreenOffState(1)", "OledPanel.onScreenOff()"}, {}},
        {true,
         true,
         -1,
         {"Video.setScreenOffState(1)", "OledPanel.onScreenOff()"},
         {"Failed to setScreenOffState\n"}},
        {true, false, 0, {"OledPanel.onScreenOff()"}, {"Cannot get Video Object\n"}},
        {false, true, 0, {}, {"Cannot get oled panel object\n"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.logged.empty() ? "switched off" : c.logged[0]);
        sim().find("OledPanel")->setPresent(c.panel);
        sim().find("Video")->setPresent(c.video);
        setAnswer("Video.setScreenOffState", c.videoResult);
        sim().clearJournal();
        clearLogs();

        runMaintenance(0x4 | 0x1 | 0x2);  // bit 2 wins over the run bits

        EXPECT_EQ(panelCareCalls(), c.calls);
        EXPECT_TRUE(sim().calls("thread").empty());
        EXPECT_EQ(messagesAt(1000), c.logged);
    }
    EXPECT_TRUE(a->received().empty());
}

TEST_F(OledMaint, WhileRunningRequestsAreRefusedButScreenOffIsServed) {
    const ClientPtr a = addClient("A");
    setTempLut(1);
    // The run is still under way while it tells its clients.
    a->setReaction([this](const sim::RecordingClient::Received& received) {
        if (received.callback != "oledMaintResult") {
            return;
        }
        frame::MsgIds ids = msgIds(2);
        EXPECT_EQ(service().controlOledMaint(ids, transport(2), 1), 0);
        EXPECT_EQ(service().controlOledMaint(ids, transport(2), 4), 0);
    });
    runMaintenance(0);
    a->setReaction(nullptr);

    EXPECT_EQ(sim().calls("thread", "create").size(), 1u);
    EXPECT_EQ(sim().calls("OledPanel", "runMaintenance").size(), 1u);
    EXPECT_EQ(sim().calls("OledPanel", "onScreenOff").size(), 1u);
    EXPECT_EQ(sim().getState("Video.screenOff"), json(1));
    EXPECT_EQ(messagesAt(3000), Texts{"Maintenance thread already running.\n"});
    expectToldOnce(a, 0);

    // Once the run has ended, the next one starts.
    a->clear();
    runMaintenance(1);
    EXPECT_EQ(sim().calls("OledPanel", "runMaintenance").size(), 2u);
    expectToldOnce(a, 0);
}

TEST_F(OledMaint, ThreadThatCouldNotStartBlocksLaterRuns) {
    // The platform's refusal is not examined: the service still counts a run as under way.
    setAnswer("thread.create", -11);
    runMaintenance(0);
    std::string error;
    ASSERT_TRUE(sim().clearAnswer("thread.create", error)) << error;
    runMaintenance(0);

    EXPECT_EQ(sim().calls("thread", "create").size(), 1u);
    EXPECT_TRUE(sim().calls("OledPanel", "runMaintenance").empty());
    EXPECT_EQ(messagesAt(3000), Texts{"Maintenance thread already running.\n"});
}

}  // namespace
}  // namespace sysctrltest
