// The antenna command language over the simulated antenna, and LNB power.
#include "ServiceTest.h"

#include <climits>

namespace sysctrltest {
namespace {

using sim::json;

const char kDefaultReport[] =
    "ok satCables=ONE installationType=SINGLE satId=1 lnbFrequencyLow=9750 "
    "lnbFrequencyHigh=10600 repeatRate=0 ctrlVoltage=ON communalSupply=OFF signal22kHz=BAND "
    "toneBurst=OFF highBand=NO unicableDevId=0 switchDelay=0 dieqcMode=DiSEqC1.0";

const std::pair<uint16_t, std::string> kFailed{3000, "failed.\n"};
const std::pair<uint16_t, std::string> kBadNumber{3000,
                                                  "error parsing converting numeral string.\n"};

class Antenna : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        startService();
        m_client = addClient("A");
        sim().clearJournal();
        clearLogs();
    }

    // Runs one command line; the reply that the client received.
    std::string run(const std::string& command) {
        const size_t before = m_client->received("controlAntennaResult").size();
        ++m_requests;
        frame::MsgIds ids = msgIds(m_requests);
        EXPECT_EQ(service().controlAntenna(ids, transport(m_requests), command), 0);
        const auto replies = m_client->received("controlAntennaResult");
        if (replies.size() != before + 1) {
            ADD_FAILURE() << "expected one reply to \"" << command << "\"";
            return "<no reply>";
        }
        return replies.back().args[0].get<std::string>();
    }

    std::string report() { return run("getSatelliteAntenna"); }

    json satellite() { return sim().getState("Antenna.satellite"); }
    // Changes some fields of the satellite record in force.
    void seed(const json& fields) {
        json record = satellite();
        record.update(fields);
        setState("Antenna.satellite", record);
    }
    size_t portCalls(const std::string& operation) {
        return sim().calls("Antenna", operation).size();
    }
    bool failedLogged() const {
        const auto all = messages();
        return std::find(all.begin(), all.end(), kFailed) != all.end();
    }
    size_t count(const std::pair<uint16_t, std::string>& message) const {
        const auto all = messages();
        return static_cast<size_t>(std::count(all.begin(), all.end(), message));
    }

    boost::shared_ptr<sim::RecordingClient> m_client;
    int m_requests = 1;
};

// True when `reply` holds the piece " key=value" as a whole word.
bool holds(const std::string& reply, const std::string& key, const std::string& value) {
    return (reply + " ").find(" " + key + "=" + value + " ") != std::string::npos;
}

// --- the report ---

TEST_F(Antenna, OneSatelliteOnASingleLnbIsReportedInFieldOrder) {
    EXPECT_EQ(report(), kDefaultReport);
    EXPECT_FALSE(failedLogged());
    EXPECT_EQ(messages(), (std::vector<std::pair<uint16_t, std::string>>{{4000, "Called.\n"}}));
}

TEST_F(Antenna, EmptyListsContributeNoKeys) {
    seed({{"satId", json::array()},
          {"lnbFrequencyLow", json::array()},
          {"lnbFrequencyHigh", json::array()}});
    EXPECT_EQ(report(),
              "ok satCables=ONE installationType=SINGLE repeatRate=0 ctrlVoltage=ON "
              "communalSupply=OFF signal22kHz=BAND toneBurst=OFF highBand=NO unicableDevId=0 "
              "switchDelay=0 dieqcMode=DiSEqC1.0");
}

TEST_F(Antenna, ListsAreReportedWholeOneAfterAnotherAndNumbersKeepTheirSign) {
    seed({{"satCables", 2},
          {"installationType", 4},
          {"satId", {7, -1}},
          {"lnbFrequencyLow", {9750, 4294967295u}},
          {"lnbFrequencyHigh", {10600, 10700}},
          {"repeatRate", 4294967295u},
          {"unicableDevId", -1},
          {"switchDelay", 3000000000u},
          {"channelNumber", {1, 2}},
          {"channelFrequency", {1210, 1420}},
          {"pin", {"0042", "1", "12345"}},
          {"pinProtected", {1, 0}},
          {"diseqcMode", 1},
          {"motorType", 5},
          {"motorPositionData", 9}});
    EXPECT_EQ(report(),
              "ok satCables=SPLIT installationType=DISEQC_ONECABLE satId=7 satId=-1 "
              "lnbFrequencyLow=9750 lnbFrequencyLow=4294967295 lnbFrequencyHigh=10600 "
              "lnbFrequencyHigh=10700 repeatRate=4294967295 ctrlVoltage=ON communalSupply=OFF "
              "signal22kHz=BAND toneBurst=OFF highBand=NO unicableDevId=-1 "
              "switchDelay=3000000000 channelNumber=1 channelNumber=2 channelFrequency=1210 "
              "channelFrequency=1420 pin=0042 pin=1 pin=12345 pinProtected=YES pinProtected=NO "
              "dieqcMode=DiSEqC1.2");
}

struct ReportedWord {
    const char* field;  // in the record
    int32_t code;
    const char* key;  // in the reply
    const char* word;
};

class ReportedWords : public Antenna, public ::testing::WithParamInterface<ReportedWord> {};

TEST_P(ReportedWords, CodeIsWrittenAsItsWord) {
    const ReportedWord& c = GetParam();
    if (std::string(c.field) == "pinProtected") {
        seed({{c.field, {c.code}}});
    } else {
        seed({{c.field, c.code}});
    }
    const std::string reply = report();
    EXPECT_TRUE(holds(reply, c.key, c.word)) << reply;
}

INSTANTIATE_TEST_SUITE_P(
    Table, ReportedWords,
    ::testing::Values(ReportedWord{"satCables", 0, "satCables", "ONE"},
                      ReportedWord{"satCables", 1, "satCables", "TWO"},
                      ReportedWord{"satCables", 2, "satCables", "SPLIT"},
                      ReportedWord{"satCables", 3, "satCables", "unknown"},
                      ReportedWord{"installationType", 0, "installationType", "SINGLE"},
                      ReportedWord{"installationType", 1, "installationType", "SWITCHBOX"},
                      ReportedWord{"installationType", 2, "installationType", "TONEBURST"},
                      ReportedWord{"installationType", 3, "installationType", "DISEQC"},
                      ReportedWord{"installationType", 4, "installationType", "DISEQC_ONECABLE"},
                      ReportedWord{"installationType", 5, "installationType", "unknown"},
                      ReportedWord{"installationType", 6, "installationType", "COMMUNAL"},
                      ReportedWord{"installationType", 7, "installationType", "unknown"},
                      ReportedWord{"installationType", -1, "installationType", "unknown"},
                      ReportedWord{"ctrlVoltage", 0, "ctrlVoltage", "OFF"},
                      ReportedWord{"ctrlVoltage", 1, "ctrlVoltage", "ON"},
                      ReportedWord{"ctrlVoltage", 2, "ctrlVoltage", "unknown"},
                      ReportedWord{"communalSupply", 0, "communalSupply", "OFF"},
                      ReportedWord{"communalSupply", 1, "communalSupply", "13V"},
                      ReportedWord{"communalSupply", 2, "communalSupply", "18V"},
                      ReportedWord{"communalSupply", 3, "communalSupply", "unknown"},
                      ReportedWord{"signal22kHz", 0, "signal22kHz", "OFF"},
                      ReportedWord{"signal22kHz", 1, "signal22kHz", "BAND"},
                      ReportedWord{"signal22kHz", 2, "signal22kHz", "POSITION"},
                      ReportedWord{"signal22kHz", 3, "signal22kHz", "unknown"},
                      ReportedWord{"toneBurst", 0, "toneBurst", "OFF"},
                      ReportedWord{"toneBurst", 1, "toneBurst", "POSITION"},
                      ReportedWord{"toneBurst", 2, "toneBurst", "OPTION"},
                      ReportedWord{"toneBurst", 3, "toneBurst", "unknown"},
                      ReportedWord{"highBand", 0, "highBand", "NO"},
                      ReportedWord{"highBand", 1, "highBand", "YES"},
                      ReportedWord{"highBand", 2, "highBand", "unknown"},
                      ReportedWord{"pinProtected", 0, "pinProtected", "NO"},
                      ReportedWord{"pinProtected", 1, "pinProtected", "YES"},
                      ReportedWord{"pinProtected", 2, "pinProtected", "unknown"},
                      ReportedWord{"diseqcMode", 0, "dieqcMode", "DiSEqC1.0"},
                      ReportedWord{"diseqcMode", 1, "dieqcMode", "DiSEqC1.2"},
                      ReportedWord{"diseqcMode", 2, "dieqcMode", "others"},
                      ReportedWord{"diseqcMode", INT_MIN, "dieqcMode", "others"}));

TEST_F(Antenna, SatelliteReadFailureIsAnsweredWithoutALogLine) {
    setAnswer("Antenna.getSatelliteParams", -5);
    EXPECT_EQ(report(), "err: get actual parameters failed");
    EXPECT_EQ(messages(),
              (std::vector<std::pair<uint16_t, std::string>>{{4000, "Called.\n"}, kFailed}));
}

TEST_F(Antenna, TerrestrialSupplyIsReportedByWord) {
    const std::vector<std::pair<int, std::string>> cases = {
        {0, "ok supplyVoltage=OFF"}, {1, "ok supplyVoltage=5V"}, {7, "ok supplyVoltage=unknown"}};
    for (const auto& c : cases) {
        setState("Antenna.terrestrial", {{"supplyVoltage", c.first}});
        EXPECT_EQ(run("getTerrestrialAntenna"), c.second);
    }
    EXPECT_FALSE(failedLogged());
}

TEST_F(Antenna, TerrestrialReadFailureIsLoggedAndAnswered) {
    setAnswer("Antenna.getTerrestrialParams", 1);
    EXPECT_EQ(run("getTerrestrialAntenna"), "err: get failed");
    const auto lines = logsContaining("returns error");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].rfind("antennacontrol.cpp:", 0), 0u) << lines[0];
    EXPECT_NE(lines[0].find(":getTerrestrialAntenna(): getTerrestrialAntenna returns error.\n"),
              std::string::npos)
        << lines[0];
    EXPECT_EQ(count({3000, "getTerrestrialAntenna returns error.\n"}), 1u);
    EXPECT_TRUE(failedLogged());
}

// --- setting by value word, and reading it back ---

struct WordField {
    const char* key;       // set under
    const char* reported;  // reported under
    std::vector<const char*> words;
};

// Every word of every table, set and read back, so the two directions cannot drift apart.
TEST_F(Antenna, EveryValueWordSetIsReportedBack) {
    const std::vector<WordField> fields = {
        {"satCables", "satCables", {"ONE", "TWO", "SPLIT"}},
        {"installationType",
         "installationType",
         {"SINGLE", "SWITCHBOX", "TONEBURST", "DISEQC", "DISEQC_ONECABLE", "COMMUNAL"}},
        {"ctrlVoltage", "ctrlVoltage", {"OFF", "ON"}},
        {"communalSupply", "communalSupply", {"OFF", "13V", "18V"}},
        {"signal22kHz", "signal22kHz", {"OFF", "BAND", "POSITION"}},
        {"toneBurst", "toneBurst", {"OFF", "POSITION", "OPTION"}},
        {"highBand", "highBand", {"NO", "YES"}},
        {"pinProtected", "pinProtected", {"NO", "YES"}},
    };
    for (const WordField& field : fields) {
        // Walk the words backwards as well, so every word replaces a different one.
        std::vector<const char*> order = field.words;
        order.insert(order.end(), field.words.rbegin(), field.words.rend());
        for (const char* word : order) {
            const std::string token = std::string(field.key) + "=" + word;
            EXPECT_EQ(run("setSatelliteAntenna " + token), "ok") << token;
            const std::string reply = report();
            EXPECT_TRUE(holds(reply, field.reported, word)) << token << " -> " << reply;
        }
    }
    EXPECT_FALSE(failedLogged());
}

TEST_F(Antenna, LaterWordInSearchOrderWins) {
    struct Case {
        const char* token;
        const char* field;
        int code;
    };
    const std::vector<Case> cases = {
        {"installationType=DISEQC_ONECABLE", "installationType", 4},
        {"installationType=COMMUNALSINGLE", "installationType", 6},
        {"installationType=DISEQCSWITCHBOX", "installationType", 3},
        {"signal22kHz=BANDOFF", "signal22kHz", 1},
        {"toneBurst=OPTIONPOSITION", "toneBurst", 2},
        {"toneBurst=OFFX", "toneBurst", 0},
        {"satCables=SPLITONE", "satCables", 2},
        {"communalSupply=18V13V", "communalSupply", 2},
        {"highBand=YESNO", "highBand", 1},
        {"ctrlVoltage=ONOFF", "ctrlVoltage", 1},
    };
    for (const Case& c : cases) {
        seed({{c.field, 9}});
        EXPECT_EQ(run(std::string("setSatelliteAntenna ") + c.token), "ok") << c.token;
        EXPECT_EQ(satellite()[c.field], c.code) << c.token;
    }
}

TEST_F(Antenna, KeysAndWordsAreFoundAnywhereInAToken) {
    EXPECT_EQ(run("setSatelliteAntenna xhighBandYES toneBurst:OPTION"), "ok");
    EXPECT_EQ(satellite()["highBand"], 1);
    EXPECT_EQ(satellite()["toneBurst"], 2);
}

TEST_F(Antenna, PinProtectedAppendsEveryWordFound) {
    seed({{"pinProtected", {1, 1, 1}}});
    EXPECT_EQ(run("setSatelliteAntenna pinProtected=NOYES pinProtected=YES pinProtected=NO"), "ok");
    EXPECT_EQ(satellite()["pinProtected"], json({0, 1, 1, 0}));
    // Not a PIN: the list of PINs stays as it was.
    EXPECT_EQ(satellite()["pin"], json::array());
}

// --- numbers ---

TEST_F(Antenna, NumbersAreReadStrictlyAfterTheFirstEqualsSign) {
    struct Case {
        const char* token;
        int32_t value;
        bool logged;
    };
    const std::vector<Case> cases = {
        {"unicableDevId=42", 42, false},
        {"unicableDevId=+7", 7, false},
        {"unicableDevId=-0", 0, false},
        {"unicableDevId=007", 7, false},
        {"unicableDevId=-2147483648", INT_MIN, false},
        {"unicableDevId=2147483647", INT_MAX, false},
        {"unicableDevId=2147483648", 0, true},
        {"unicableDevId=0x10", 0, true},
        {"unicableDevId=1.5", 0, true},
        {"unicableDevId=5a", 0, true},
        {"unicableDevId=5=6", 0, true},
        {"unicableDevId==5", 0, true},
        {"unicableDevId=\t5", 0, true},
        {"unicableDevId=", 0, false},
        {"unicableDevId", 0, false},
    };
    for (const Case& c : cases) {
        seed({{"unicableDevId", 99}});
        clearLogs();
        EXPECT_EQ(run(std::string("setSatelliteAntenna ") + c.token), "ok") << c.token;
        EXPECT_EQ(satellite()["unicableDevId"], c.value) << c.token;
        EXPECT_EQ(count(kBadNumber), c.logged ? 1u : 0u) << c.token;
    }
}

TEST_F(Antenna, ConversionErrorIsLoggedByGetIntValue) {
    EXPECT_EQ(run("setSatelliteAntenna repeatRate=abc"), "ok");
    const auto lines = logsContaining("numeral");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].rfind("antennacontrol.cpp:", 0), 0u) << lines[0];
    EXPECT_NE(lines[0].find(":getIntValue(): error parsing converting numeral string.\n"),
              std::string::npos)
        << lines[0];
}

TEST_F(Antenna, NegativeNumbersKeepTheirBitsInUnsignedFields) {
    EXPECT_EQ(run("setSatelliteAntenna lnbFrequencyLow=-1 repeatRate=-2 switchDelay=-3 "
                  "channelNumber=-4 channelFrequency=-5"),
              "ok");
    const std::string reply = report();
    EXPECT_TRUE(holds(reply, "lnbFrequencyLow", "4294967295")) << reply;
    EXPECT_TRUE(holds(reply, "repeatRate", "4294967294")) << reply;
    EXPECT_TRUE(holds(reply, "switchDelay", "4294967293")) << reply;
    EXPECT_TRUE(holds(reply, "channelNumber", "4294967292")) << reply;
    EXPECT_TRUE(holds(reply, "channelFrequency", "4294967291")) << reply;
}

TEST_F(Antenna, MotorFieldsAreSetButNeverReported) {
    EXPECT_EQ(run("setSatelliteAntenna motorType=1 motorMoveType=2 motorMoveData=-3 "
                  "motorPositionData=4"),
              "ok");
    EXPECT_EQ(satellite()["motorType"], 1);
    EXPECT_EQ(satellite()["motorMoveType"], 2);
    EXPECT_EQ(satellite()["motorMoveData"], -3);
    EXPECT_EQ(satellite()["motorPositionData"], 4);
    EXPECT_EQ(report().find("motor"), std::string::npos);
}

TEST_F(Antenna, DiseqcModeIsSetByNumberAndReportedByWordUnderItsOtherSpelling) {
    EXPECT_EQ(run("setSatelliteAntenna diseqcMode=1"), "ok");
    EXPECT_TRUE(holds(report(), "dieqcMode", "DiSEqC1.2"));

    // The reported spelling names no key.
    EXPECT_EQ(run("setSatelliteAntenna dieqcMode=0"), "ok");
    EXPECT_EQ(satellite()["diseqcMode"], 1);

    clearLogs();
    EXPECT_EQ(run("setSatelliteAntenna diseqcMode=DiSEqC1.2"), "ok");
    EXPECT_EQ(satellite()["diseqcMode"], 0);
    EXPECT_EQ(count(kBadNumber), 1u);

    EXPECT_EQ(run("setSatelliteAntenna diseqcMode=2"), "ok");
    EXPECT_TRUE(holds(report(), "dieqcMode", "others"));
}

TEST_F(Antenna, PinsAreStoredAsTextOfAtLeastFourDigits) {
    EXPECT_EQ(run("setSatelliteAntenna pin=7 pin=12345 pin=x pin=-1"), "ok");
    EXPECT_EQ(satellite()["pin"], json({"0007", "12345", "0000", "4294967295"}));
    EXPECT_EQ(count(kBadNumber), 1u);
    EXPECT_TRUE(holds(report(), "pin", "0007"));
}

// --- lists ---

TEST_F(Antenna, FirstValueOfAListReplacesTheListInForce) {
    seed({{"satId", {1, 2}},
          {"lnbFrequencyLow", {9750, 9750}},
          {"lnbFrequencyHigh", {10600, 10600}}});
    EXPECT_EQ(run("setSatelliteAntenna satId=3"), "ok");
    EXPECT_EQ(satellite()["satId"], json({3}));
    EXPECT_EQ(satellite()["lnbFrequencyLow"], json({9750, 9750}));
    EXPECT_EQ(satellite()["lnbFrequencyHigh"], json({10600, 10600}));
}

TEST_F(Antenna, LaterValuesOfAListAreAppendedInOrder) {
    seed({{"channelNumber", {8, 8, 8}}, {"pin", {"1111"}}});
    EXPECT_EQ(run("setSatelliteAntenna satId=1 satId=2 lnbFrequencyLow=9750 lnbFrequencyLow=9751 "
                  "channelNumber=5 channelFrequency=1210 channelNumber=4 pin=1 pin=2"),
              "ok");
    const json record = satellite();
    EXPECT_EQ(record["satId"], json({1, 2}));
    EXPECT_EQ(record["lnbFrequencyLow"], json({9750, 9751}));
    EXPECT_EQ(record["lnbFrequencyHigh"], json({10600}));
    EXPECT_EQ(record["channelNumber"], json({5, 4}));
    EXPECT_EQ(record["channelFrequency"], json({1210}));
    EXPECT_EQ(record["pin"], json({"0001", "0002"}));
}

TEST_F(Antenna, EachCommandStartsItsListsAfresh) {
    EXPECT_EQ(run("setSatelliteAntenna satId=1 satId=2"), "ok");
    EXPECT_EQ(run("setSatelliteAntenna satId=5"), "ok");
    EXPECT_EQ(satellite()["satId"], json({5}));
}

TEST_F(Antenna, EmptyNumberEmptiesTheListAndAddsZeroSilently) {
    seed({{"lnbFrequencyLow", {9750, 9750}}});
    EXPECT_EQ(run("setSatelliteAntenna lnbFrequencyLow="), "ok");
    EXPECT_EQ(satellite()["lnbFrequencyLow"], json({0}));
    EXPECT_EQ(count(kBadNumber), 0u);
}

// --- wrong words and failed writes ---

TEST_F(Antenna, WrongWordStopsReadingButTheRecordIsStillWritten) {
    seed({{"toneBurst", 2}, {"ctrlVoltage", 1}});
    EXPECT_EQ(run("setSatelliteAntenna ctrlVoltage=OFF toneBurst=MAYBE highBand=YES satId=9"),
              "ok");
    EXPECT_EQ(portCalls("setSatelliteParams"), 1u);
    const json record = satellite();
    EXPECT_EQ(record["ctrlVoltage"], 0);
    EXPECT_EQ(record["toneBurst"], 2);
    EXPECT_EQ(record["highBand"], 0);
    EXPECT_EQ(record["satId"], json({1}));
    EXPECT_FALSE(failedLogged());
}

TEST_F(Antenna, WrongWordWithAFailedWriteAnswersSetFailed) {
    setAnswer("Antenna.setSatelliteParams", -1);
    EXPECT_EQ(run("setSatelliteAntenna ctrlVoltage=OFF toneBurst=MAYBE highBand=YES"),
              "err: set failed");
    const auto writes = sim().calls("Antenna", "setSatelliteParams");
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].args[0]["ctrlVoltage"], 0);
    EXPECT_EQ(writes[0].args[0]["highBand"], 0);
    EXPECT_EQ(satellite()["ctrlVoltage"], 1);  // not stored by the device
    EXPECT_TRUE(failedLogged());
}

TEST_F(Antenna, InstallationTypeFiveHasNoWord) {
    seed({{"installationType", 2}});
    EXPECT_EQ(run("setSatelliteAntenna installationType=5 satId=4"), "ok");
    EXPECT_EQ(satellite()["installationType"], 2);
    EXPECT_EQ(satellite()["satId"], json({1}));
}

TEST_F(Antenna, FailedCablingWordIsJudgedWithTheNextToken) {
    struct Case {
        const char* command;
        int satCables;
        json satId;
    };
    const std::vector<Case> cases = {
        // A numeric key does not recognise a word: reading stops after it.
        {"setSatelliteAntenna satCables=FOUR satId=9 satId=10", 0, json({9})},
        // A recognised word after it goes on.
        {"setSatelliteAntenna satCables=FOUR ctrlVoltage=OFF satId=9 satId=10", 0, json({9, 10})},
        // So does a good cabling word.
        {"setSatelliteAntenna satCables=FOUR satCables=TWO satId=9 satId=10", 1, json({9, 10})},
    };
    for (const Case& c : cases) {
        seed({{"satCables", 0}, {"satId", {1}}});
        EXPECT_EQ(run(c.command), "ok") << c.command;
        EXPECT_EQ(satellite()["satCables"], c.satCables) << c.command;
        EXPECT_EQ(satellite()["satId"], c.satId) << c.command;
    }
}

TEST_F(Antenna, TokensNamingNoKeyChangeNothing) {
    const json before = satellite();
    EXPECT_EQ(run("setSatelliteAntenna a=1,b=2 satid=4 , SATID=5"), "ok");
    const auto writes = sim().calls("Antenna", "setSatelliteParams");
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].args[0], before);
}

TEST_F(Antenna, SettingWithoutArgumentsLeavesThePortAlone) {
    EXPECT_EQ(run("setSatelliteAntenna"), "err: insufficient arguments");
    EXPECT_EQ(run("  setSatelliteAntenna  "), "err: insufficient arguments");
    EXPECT_TRUE(sim().calls("Antenna").empty());
    EXPECT_EQ(count(kFailed), 2u);
}

TEST_F(Antenna, SettingNeedsTheSettingsInForce) {
    setAnswer("Antenna.getSatelliteParams", 3);
    EXPECT_EQ(run("setSatelliteAntenna satId=2"), "err: get actual parameters failed");
    EXPECT_EQ(portCalls("setSatelliteParams"), 0u);
    EXPECT_TRUE(failedLogged());
}

// --- terrestrial supply ---

TEST_F(Antenna, OnlyFiveVoltsInTheFirstArgumentSwitchesTheSupplyOn) {
    const std::vector<std::pair<const char*, int>> cases = {
        {"setTerrestrialAntenna 5V", 1},
        {"setTerrestrialAntenna supplyVoltage=5V", 1},
        {"setTerrestrialAntenna on5V extra", 1},
        {"setTerrestrialAntenna ON", 0},
        {"setTerrestrialAntenna supplyVoltage=OFF", 0},
        {"setTerrestrialAntenna 5v", 0},
        {"setTerrestrialAntenna OFF 5V", 0},
        {"setTerrestrialAntenna , 5V", 0},
    };
    for (const auto& c : cases) {
        // The supply in force is not read first: every command writes a fresh record.
        setState("Antenna.terrestrial", {{"supplyVoltage", 1 - c.second}});
        EXPECT_EQ(run(c.first), "ok") << c.first;
        EXPECT_EQ(sim().getState("Antenna.terrestrial"), json({{"supplyVoltage", c.second}}))
            << c.first;
    }
    EXPECT_EQ(portCalls("getTerrestrialParams"), 0u);
    EXPECT_EQ(run("getTerrestrialAntenna"), "ok supplyVoltage=OFF");
}

TEST_F(Antenna, TerrestrialSettingWithoutArgumentIsRefused) {
    EXPECT_EQ(run("setTerrestrialAntenna"), "err: insufficient parameters");
    EXPECT_TRUE(sim().calls("Antenna").empty());
    EXPECT_TRUE(failedLogged());
}

TEST_F(Antenna, TerrestrialWriteFailureIsLoggedAndAnswered) {
    setAnswer("Antenna.setTerrestrialParams", -1);
    EXPECT_EQ(run("setTerrestrialAntenna 5V"), "err: set not possible");
    EXPECT_EQ(count({3000, "setTerrestrialAntenna returns error.\n"}), 1u);
    const auto lines = logsContaining("returns error");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].rfind("antennacontrol.cpp:", 0), 0u) << lines[0];
    EXPECT_NE(lines[0].find(":setTerrestrialAntenna(): "), std::string::npos) << lines[0];
    EXPECT_TRUE(failedLogged());
}

// --- the command line ---

TEST_F(Antenna, CommandLinesAreDispatchedOnTheirFirstWord) {
    struct Case {
        const char* command;
        const char* reply;
        bool failed;
    };
    const std::vector<Case> cases = {
        {"", "err:no Command", true},
        {"   ", "err:no Command", true},
        {"getsatelliteantenna", "err:unknown command", true},
        {"\tgetSatelliteAntenna", "err:unknown command", true},
        {"getSatelliteAntennas", "err:unknown command", true},
        {"getSatelliteAntenna,", kDefaultReport, false},
        {",getSatelliteAntenna", "err:unknown command", true},
        {"getSatelliteAntenna satId=5", kDefaultReport, false},
        {" getTerrestrialAntenna  extra words ", "ok supplyVoltage=OFF", false},
        {"setSatelliteAntenna ,", "ok", false},
    };
    for (const Case& c : cases) {
        clearLogs();
        EXPECT_EQ(run(c.command), c.reply) << '"' << c.command << '"';
        EXPECT_EQ(failedLogged(), c.failed) << '"' << c.command << '"';
        EXPECT_EQ(count({4000, "Called.\n"}), 1u);
    }
}

TEST_F(Antenna, FailureLineComesFromControlAntenna) {
    run("nothing");
    const auto lines = logsContaining("failed.");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].rfind("app-sysctrlservice-impl-antenna.cpp:", 0), 0u) << lines[0];
    EXPECT_NE(lines[0].find(":controlAntenna(): failed.\n"), std::string::npos) << lines[0];
}

TEST_F(Antenna, EveryClientReceivesTheReplyWithTheCallersIdentifiers) {
    const auto b = addClient("B");
    frame::MsgIds ids = msgIds(7);
    EXPECT_EQ(service().controlAntenna(ids, transport(8), "setTerrestrialAntenna 5V"), 0);
    for (const auto& client : {m_client, b}) {
        const auto received = client->received();
        ASSERT_EQ(received.size(), 1u) << client->name();
        EXPECT_EQ(received[0].callback, "controlAntennaResult");
        EXPECT_EQ(received[0].args, json({"ok"}));
        EXPECT_EQ(received[0].msgIds, (std::vector<int32_t>{7, 0}));
        EXPECT_EQ(received[0].transport, (std::vector<int32_t>{8, 0, 0, 0, 0, 0, 0}));
    }
}

// --- LNB power ---

TEST_F(Antenna, LnbPowerValueReachesThePortUnchanged) {
    for (const int value : {0, 1, 2, -7, INT_MIN, INT_MAX}) {
        frame::MsgIds ids = msgIds(value & 0xFF);
        EXPECT_EQ(service().setLnbPower(ids, transport(3), value), 0);
        const auto calls = sim().calls("Antenna", "setLnbPower");
        ASSERT_FALSE(calls.empty());
        EXPECT_EQ(calls.back().args, json({value}));
        EXPECT_EQ(sim().getState("Antenna.lnbPower"), value);
        const auto received = m_client->received("setLnbPowerResult");
        ASSERT_FALSE(received.empty());
        EXPECT_EQ(received.back().args, json({0}));
        EXPECT_EQ(received.back().msgIds, (std::vector<int32_t>{value & 0xFF, 0}));
    }
}

TEST_F(Antenna, LnbPowerDeliversThePortResultToEveryClient) {
    const auto b = addClient("B");
    setAnswer("Antenna.setLnbPower", -3);
    clearLogs();
    frame::MsgIds ids = msgIds(4);
    EXPECT_EQ(service().setLnbPower(ids, transport(4), 5), 0);
    for (const auto& client : {m_client, b}) {
        const auto received = client->received("setLnbPowerResult");
        ASSERT_EQ(received.size(), 1u) << client->name();
        EXPECT_EQ(received[0].args, json({-3}));
        EXPECT_EQ(received[0].transport, (std::vector<int32_t>{4, 0, 0, 0, 0, 0, 0}));
    }
    EXPECT_EQ(
        messages(),
        (std::vector<std::pair<uint16_t, std::string>>{
            {4000, "Called,value:5.\n"}, {4000, "setLnbPower.\n"}, {4000, "Called,return:-3.\n"}}));
}

TEST_F(Antenna, LnbPowerAsksForTheAntennaAgainAndKeepsWhatItGets) {
    frame::MsgIds ids = msgIds(2);
    EXPECT_EQ(service().setLnbPower(ids, transport(2), 1), 0);
    EXPECT_EQ(sim().calls("Factory", "getAntenna").size(), 1u);

    // The platform withdraws the antenna: the result is 0 and the port is not called.
    setAbsent("Antenna");
    clearLogs();
    EXPECT_EQ(service().setLnbPower(ids, transport(2), 2), 0);
    EXPECT_EQ(sim().calls("Factory", "getAntenna").size(), 2u);
    EXPECT_EQ(portCalls("setLnbPower"), 1u);
    EXPECT_EQ(m_client->received("setLnbPowerResult").back().args, json({0}));
    EXPECT_EQ(messages(), (std::vector<std::pair<uint16_t, std::string>>{
                              {4000, "Called,value:2.\n"}, {4000, "Called,return:0.\n"}}));

    // The empty handle replaced the one held, so commands now find no antenna.
    EXPECT_EQ(report(), "err: get actual parameters failed");
    EXPECT_EQ(portCalls("getSatelliteParams"), 0u);

    std::string error;
    ASSERT_TRUE(sim().setPresent("Antenna", true, error)) << error;
    EXPECT_EQ(service().setLnbPower(ids, transport(2), 3), 0);
    EXPECT_EQ(sim().getState("Antenna.lnbPower"), 3);
    EXPECT_EQ(report(), kDefaultReport);
}

// --- no antenna object at all ---

class AntennaAbsent : public Antenna {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        setAbsent("Antenna");
        startService();
        m_client = addClient("A");
        clearLogs();
    }
};

TEST_F(AntennaAbsent, EachCommandAnswersWithItsPortFailure) {
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"getSatelliteAntenna", "err: get actual parameters failed"},
        {"setSatelliteAntenna satId=1", "err: get actual parameters failed"},
        {"getTerrestrialAntenna", "err: get failed"},
        {"setTerrestrialAntenna 5V", "err: set not possible"},
        {"setSatelliteAntenna", "err: insufficient arguments"},
        {"", "err:no Command"},
        {"other", "err:unknown command"},
    };
    for (const auto& c : cases) {
        clearLogs();
        EXPECT_EQ(run(c.first), c.second) << c.first;
        EXPECT_TRUE(failedLogged()) << c.first;
    }
}

TEST_F(AntennaAbsent, LnbPowerResultIsZero) {
    frame::MsgIds ids = msgIds(2);
    EXPECT_EQ(service().setLnbPower(ids, transport(2), 1), 0);
    EXPECT_EQ(m_client->received("setLnbPowerResult").back().args, json({0}));
}

}  // namespace
}  // namespace sysctrltest
