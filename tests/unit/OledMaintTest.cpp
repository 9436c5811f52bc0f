// OLED panel maintenance: the request, the run on its own thread and what each step calls.
#include "OledCareTest.h"

#include <chrono>

namespace sysctrltest {
namespace {

using sim::json;
typedef boost::shared_ptr<sim::RecordingClient> ClientPtr;

const std::vector<int32_t> kUnsolicitedIds = {-1, -1};
const std::vector<int32_t> kUnsolicitedTransport = {-1, -1, 0, -1, -1, -1, -1};

class OledMaint : public OledCareTest {
  protected:
    void SetUp() override {
        OledCareTest::SetUp();
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
    bool display;
    bool hours;
    std::vector<std::string> calls;
    const char* records;  // the records file afterwards
    std::vector<int> panelEvents;
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
    if (!c.display) {
        setAbsent("StatusDisplay");
    }
    if (!c.hours) {
        setAbsent("OperationHours");
    }
    const ClientPtr a = addClient("A");
    const ClientPtr b = addClient("B");

    const auto begin = std::chrono::steady_clock::now();
    runMaintenance(c.flag);
    const auto elapsed = std::chrono::steady_clock::now() - begin;

    EXPECT_EQ(panelCareCalls(), c.calls);
    EXPECT_EQ(readFile(kRecordsLog), c.records);
    EXPECT_EQ(sim().getState("OledPanel.panelEvents"), json(c.panelEvents));
    expectToldOnce(a, c.runResult);
    expectToldOnce(b, c.runResult);
    if (c.display) {
        EXPECT_EQ(sim().getState("StatusDisplay.shown"), json::array()) << "left on screen";
    }
    const bool cycled =
        std::find(c.calls.begin(), c.calls.end(), "OledPanel.panelCycleBegin()") != c.calls.end();
    if (cycled) {
        // The panel needs the pause between the two cycle calls; a sleep is never shorter.
        EXPECT_GE(elapsed, std::chrono::seconds(3));
    }
}

const std::string kShow11 = "StatusDisplay.showStatus(11)";
const std::string kHide11 = "StatusDisplay.hideStatus(11)";
const std::string kShow12 = "StatusDisplay.showStatus(12)";
const std::string kHide12 = "StatusDisplay.hideStatus(12)";

INSTANTIATE_TEST_SUITE_P(
    Cases, OledMaintRuns,
    ::testing::Values(
        RunCase{"NoTempLutRecordsMaintenanceWhateverTheFlag",
                -1,
                0,
                0,
                true,
                true,
                {"OledPanel.markPanelEvent(0)", kShow11, "OledPanel.runMaintenance(0)", kHide11},
                "500:77:0\n",
                {0}},
        RunCase{"TempLutOneWithoutBitZeroRecordsNothing",
                1,
                0,
                0,
                true,
                true,
                {kShow11, "OledPanel.runMaintenance(0)", kHide11},
                "<missing>",
                {}},
        RunCase{"TempLutOneWithBitZeroRecordsMaintenance",
                1,
                1,
                0,
                true,
                true,
                {"OledPanel.markPanelEvent(0)", kShow11, "OledPanel.runMaintenance(1)", kHide11},
                "500:77:0\n",
                {0}},
        RunCase{"TempLutZeroRefreshRecordsBoth",
                0,
                2,
                0,
                true,
                true,
                {"OledPanel.markPanelEvent(0)", "OledPanel.markPanelEvent(2)", kShow12,
                 "OledPanel.runMaintenance(2)", kHide12},
                "500:77:0\n500:77:2\n",
                {0, 2}},
        RunCase{"TempLutOneRefreshRecordsRefreshOnly",
                1,
                2,
                0,
                true,
                true,
                {"OledPanel.markPanelEvent(2)", kShow12, "OledPanel.runMaintenance(2)", kHide12},
                "500:77:2\n",
                {2}},
        RunCase{"OtherFlagBitsGoToThePanelUnchanged",
                1,
                0xF1,
                0,
                true,
                true,
                {"OledPanel.markPanelEvent(0)", kShow11, "OledPanel.runMaintenance(241)", kHide11},
                "500:77:0\n",
                {0}},
        RunCase{"BothClearBitsClearThreeThenFour",
                1,
                0,
                0x300,
                true,
                true,
                {kShow11, "OledPanel.runMaintenance(0)", kHide11,
                 "OperationHours.clearOperationTime(3)", "OledPanel.markPanelEvent(1)",
                 "OperationHours.clearOperationTime(4)", "OledPanel.markPanelEvent(3)"},
                "500:77:1\n500:77:3\n",
                {1, 3}},
        RunCase{"RefreshClearBitAlone",
                1,
                0,
                0x200,
                true,
                true,
                {kShow11, "OledPanel.runMaintenance(0)", kHide11,
                 "OperationHours.clearOperationTime(4)", "OledPanel.markPanelEvent(3)"},
                "500:77:3\n",
                {3}},
        RunCase{"PanelCycleResult",
                1,
                0,
                0x10,
                true,
                true,
                {kShow11, "OledPanel.runMaintenance(0)", "StatusDisplay.showStatus(16)", kHide11,
                 "OledPanel.panelCycleBegin()", "OledPanel.panelCycleEnd()",
                 "StatusDisplay.hideStatus(16)"},
                "<missing>",
                {}},
        RunCase{"ForcedCycleAfterRefresh",
                1,
                0xA,
                0,
                true,
                true,
                {"OledPanel.markPanelEvent(2)", kShow12, "OledPanel.runMaintenance(10)",
                 "StatusDisplay.showStatus(16)", kHide12, "OledPanel.panelCycleBegin()",
                 "OledPanel.panelCycleEnd()", "StatusDisplay.hideStatus(16)"},
                "500:77:2\n",
                {2}},
        RunCase{"CycleResultWithoutDisplayHasNoCycle",
                1,
                0,
                0x20,
                false,
                true,
                {"OledPanel.runMaintenance(0)"},
                "<missing>",
                {}},
        RunCase{"ForcedCycleWithoutDisplayHasNoCycle",
                1,
                8,
                0,
                false,
                true,
                {"OledPanel.runMaintenance(8)"},
                "<missing>",
                {}},
        RunCase{"WithoutOperationHoursClearBitsLeaveNoRecord",
                1,
                0,
                0x300,
                true,
                false,
                {kShow11, "OledPanel.runMaintenance(0)", kHide11},
                "<missing>",
                {}}),
    [](const ::testing::TestParamInfo<RunCase>& info) { return info.param.name; });

TEST_F(OledMaint, RunLogsEveryStepInOrder) {
    setState("OledPanel.maintenanceResult", 0x300);
    runMaintenance(0);

    const std::vector<std::pair<uint16_t, std::string>> expected = {
        {4000, "Control Oled maintenance, flag = 0 \n"},
        {1000, "read OLED_TempLUT failed\n"},
        {4000, "OLED maintance: tmpLUT 0, flag 0\n"},
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

TEST_F(OledMaint, ThreadIsStartedAsThePlatformExpectsAndReadsTheBoardConfiguration) {
    setTempLut(7);
    runMaintenance(0x80000001u);

    const auto create = sim().calls("thread", "create");
    ASSERT_EQ(create.size(), 1u);
    EXPECT_EQ(create[0].args, json::array({"oledMaintThread", -2}));
    const auto read = sim().calls("ConfigUtil", "readInt");
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0].args, json::array({kBoardIni, "OLED", "OLED_TempLUT"}));
    EXPECT_EQ(logsContaining("OLED maintance: tmpLUT 7, flag -2147483647\n").size(), 1u);
    EXPECT_EQ(logsContaining("Control Oled maintenance, flag = -2147483647 \n").size(), 1u);
}

TEST_F(OledMaint, FailedConfigurationReadKeepsZeroWhateverTheUtilityFilledIn) {
    setAnswer("ConfigUtil.readInt", 0, json::array({1}));
    runMaintenance(0);

    EXPECT_EQ(logsContaining("tmpLUT 0, flag 0").size(), 1u);
    EXPECT_EQ(readFile(kRecordsLog), "500:77:0\n");
}

TEST_F(OledMaint, WithoutPanelNothingStartsAndNobodyIsTold) {
    const ClientPtr a = addClient("A");
    setAbsent("OledPanel");
    runMaintenance(0);

    EXPECT_TRUE(sim().calls("thread").empty());
    EXPECT_TRUE(a->received().empty());
    EXPECT_EQ(messagesAt(1000), (std::vector<std::string>{"Cannot get oled panel object\n"}));
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
    EXPECT_EQ(messagesAt(1000), (std::vector<std::string>{"read OLED_TempLUT failed\n",
                                                          "Cannot get oled maintenance object\n"}));
}

TEST_F(OledMaint, MissingDisplayAndHoursAreLogged) {
    setAbsent("StatusDisplay");
    setAbsent("OperationHours");
    setTempLut(1);
    runMaintenance(0);

    EXPECT_EQ(messagesAt(1000), (std::vector<std::string>{"Cannot get StatusDisplay object\n",
                                                          "Cannot get operation hours object\n"}));
}

struct ScreenOffCase {
    const char* name;
    bool video;
    int videoResult;
    const char* logged;  // at 1000, or empty
};

void PrintTo(const ScreenOffCase& c, std::ostream* os) {
    *os << c.name;
}

class OledMaintScreenOff : public OledMaint, public ::testing::WithParamInterface<ScreenOffCase> {};

TEST_P(OledMaintScreenOff, SwitchesOffOnTheCallersThreadAndStartsNothing) {
    const ScreenOffCase& c = GetParam();
    const ClientPtr a = addClient("A");
    if (!c.video) {
        setAbsent("Video");
    }
    setAnswer("Video.setScreenOffState", c.videoResult);

    // Bit 2 wins over the run bits.
    runMaintenance(0x4 | 0x1 | 0x2);

    std::vector<std::string> expected;
    if (c.video) {
        expected.push_back("Video.setScreenOffState(1)");
    }
    expected.push_back("OledPanel.onScreenOff()");
    EXPECT_EQ(panelCareCalls(), expected);
    EXPECT_TRUE(sim().calls("thread").empty());
    EXPECT_TRUE(a->received().empty());
    const std::vector<std::string> logged =
        *c.logged != '\0' ? std::vector<std::string>{c.logged} : std::vector<std::string>{};
    EXPECT_EQ(messagesAt(1000), logged);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, OledMaintScreenOff,
    ::testing::Values(ScreenOffCase{"VideoSwitchesOff", true, 0, ""},
                      ScreenOffCase{"VideoRefuses", true, -1, "Failed to setScreenOffState\n"},
                      ScreenOffCase{"NoVideo", false, 0, "Cannot get Video Object\n"}),
    [](const ::testing::TestParamInfo<ScreenOffCase>& info) { return info.param.name; });

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
    EXPECT_EQ(messagesAt(3000),
              (std::vector<std::string>{"Maintenance thread already running.\n"}));
    expectToldOnce(a, 0);

    // Once the run has ended, the next one starts.
    a->clear();
    runMaintenance(1);
    EXPECT_EQ(sim().calls("thread", "create").size(), 2u);
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
    EXPECT_EQ(messagesAt(3000),
              (std::vector<std::string>{"Maintenance thread already running.\n"}));
}

}  // namespace
}  // namespace sysctrltest
