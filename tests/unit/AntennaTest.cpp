// The antenna command language over the simulated antenna, and LNB power.
#include <climits>
#include <tuple>

#include "ServiceTest.h"

namespace sysctrltest {
namespace {

using sim::json;
typedef std::pair<uint16_t, std::string> Message;
typedef std::vector<Message> Messages;

const char kDefaultReport[] =
    "ok satCables=ONE installationType=SINGLE satId=1 lnbFrequencyLow=9750 "
    "lnbFrequencyHigh=10600 repeatRate=0 ctrlVoltage=ON communalSupply=OFF signal22kHz=BAND "
    "toneBurst=OFF highBand=NO unicableDevId=0 switchDelay=0 dieqcMode=DiSEqC1.0";

const Message kCalled{4000, "Called.\n"};
const Message kFailed{3000, "failed.\n"};
const Message kBadNumber{3000, "error parsing converting numeral string.\n"};

class Antenna : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        startService();
        m_client = addClient("A");
        sim().clearJournal();
        clearLogs();
    }

    // Runs one command line; the one reply the client received, checked for the request's
    // identifiers.
    std::string run(const std::string& command) {
        m_client->clear();
        frame::MsgIds ids = msgIds(++m_requests);
        EXPECT_EQ(service().controlAntenna(ids, transport(m_requests), command), 0);
        const auto replies = m_client->received();
        if (replies.size() != 1 || replies[0].callback != "controlAntennaResult") {
            ADD_FAILURE() << "expected one reply to \"" << command << "\"";
            return "<no reply>";
        }
        EXPECT_EQ(replies[0].msgIds, (std::vector<int32_t>{m_requests, 0}));
        EXPECT_EQ(replies[0].transport, (std::vector<int32_t>{m_requests, 0, 0, 0, 0, 0, 0}));
        return replies[0].args[0].get<std::string>();
    }

    std::string report() { return run("getSatelliteAntenna"); }
    json satellite() { return sim().getState("Antenna.satellite"); }

    // Changes some fields of the satellite record in force.
    void seed(const json& fields) {
        json record = satellite();
        record.update(fields);
        setState("Antenna.satellite", record);
    }

    // Checks the fields given against the record in force.
    void expectFields(const json& fields) {
        const json record = satellite();
        for (const auto& field : fields.items()) {
            EXPECT_EQ(record[field.key()], field.value()) << field.key();
        }
    }

    size_t count(const Message& message) const {
        const auto all = messages();
        return static_cast<size_t>(std::count(all.begin(), all.end(), message));
    }

    // The one log line holding `text` comes from `file`, in `function`.
    void expectLine(const std::string& file, const std::string& function, const std::string& text) {
        const auto lines = logsContaining(text);
        ASSERT_EQ(lines.size(), 1u) << text;
        EXPECT_EQ(lines[0].rfind(file + ":", 0), 0u) << lines[0];
        EXPECT_NE(lines[0].find(":" + function + "(): " + text), std::string::npos) << lines[0];
    }

    boost::shared_ptr<sim::RecordingClient> m_client;
    int m_requests = 1;
};

// True when `reply` holds the piece " key=value" as a whole word.
bool holds(const std::string& reply, const std::string& key, const std::string& value) {
    return (reply + " ").find(" " + key + "=" + value + " ") != std::string::npos;
}

// --- the report ---

TEST_F(Antenna, ReportHasEveryFieldInOrderListsWholeAndEmptyListsLeftOut) {
    EXPECT_EQ(report(), kDefaultReport);
    EXPECT_EQ(messages(), Messages{kCalled});

    seed(json::parse(R"({"satId": [], "lnbFrequencyLow": [], "lnbFrequencyHigh": []})"));
    EXPECT_EQ(report(),
              "ok satCables=ONE installationType=SINGLE repeatRate=0 ctrlVoltage=ON "
              "communalSupply=OFF signal22kHz=BAND toneBurst=OFF highBand=NO unicableDevId=0 "
              "switchDelay=0 dieqcMode=DiSEqC1.0");

    // Signed identifiers, unsigned frequencies and counts; the motor fields are never reported.
    seed(json::parse(R"({"satId": [7, -1], "lnbFrequencyLow": [9750, 4294967295],
        "lnbFrequencyHigh": [10600, 10700], "repeatRate": 4294967295, "unicableDevId": -1,
        "switchDelay": 3000000000, "channelNumber": [1, 4294967292],
        "channelFrequency": [4294967291, 1420], "pin": ["0042", "1", "12345"],
        "pinProtected": [1, 0], "motorType": 5, "motorPositionData": 9})"));
    EXPECT_EQ(report(),
              "ok satCables=ONE installationType=SINGLE satId=7 satId=-1 lnbFrequencyLow=9750 "
              "lnbFrequencyLow=4294967295 lnbFrequencyHigh=10600 lnbFrequencyHigh=10700 "
              "repeatRate=4294967295 ctrlVoltage=ON communalSupply=OFF signal22kHz=BAND "
              "toneBurst=OFF highBand=NO unicableDevId=-1 switchDelay=3000000000 channelNumber=1 "
              "channelNumber=4294967292 channelFrequency=4294967291 channelFrequency=1420 "
              "pin=0042 pin=1 pin=12345 pinProtected=YES pinProtected=NO dieqcMode=DiSEqC1.0");
}

// Every value word in both directions: a code in the record is reported as its word (any other
// code as the fallback), and the word set as text stores its code. Installation type 5 has no
// word; the DiSEqC mode is set by number and reported by word under the key "dieqcMode".
TEST_F(Antenna, ValueWordsMapToTheirCodesBothWays) {
    const std::pair<std::string, std::vector<const char*>> fields[] = {
        {"satCables", {"ONE", "TWO", "SPLIT"}},
        {"installationType",
         {"SINGLE", "SWITCHBOX", "TONEBURST", "DISEQC", "DISEQC_ONECABLE", nullptr, "COMMUNAL"}},
        {"ctrlVoltage", {"OFF", "ON"}},
        {"communalSupply", {"OFF", "13V", "18V"}},
        {"signal22kHz", {"OFF", "BAND", "POSITION"}},
        {"toneBurst", {"OFF", "POSITION", "OPTION"}},
        {"highBand", {"NO", "YES"}},
        {"pinProtected", {"NO", "YES"}},
        {"diseqcMode", {"DiSEqC1.0", "DiSEqC1.2"}},
    };
    for (const auto& field : fields) {
        const std::string& name = field.first;
        const bool byNumber = name == "diseqcMode";
        const auto value = [&name](int code) {
            return name == "pinProtected" ? json::array({code}) : json(code);
        };
        const int words = static_cast<int>(field.second.size());
        for (int code = -1; code <= words; ++code) {
            SCOPED_TRACE(name + "=" + std::to_string(code));
            const char* word = code >= 0 && code < words ? field.second[code] : nullptr;
            seed({{name, value(code)}});
            EXPECT_TRUE(holds(report(), byNumber ? "dieqcMode" : name,
                              word       ? word
                              : byNumber ? "others"
                                         : "unknown"));
            if (word != nullptr || byNumber) {
                seed({{name, value(9)}});
                const std::string text = byNumber ? std::to_string(code) : word;
                EXPECT_EQ(run("setSatelliteAntenna " + name + "=" + text), "ok");
                EXPECT_EQ(satellite()[name], value(code));
            }
        }
    }
}

// --- setting ---

// Keys and words are found anywhere in a token; of several words found, the later in the
// table's order wins, and protection flags append one entry per word.
TEST_F(Antenna, EveryWordFoundCountsAndTheLastInSearchOrderWins) {
    const std::vector<std::pair<std::string, json>> cases = {
        {"installationType=DISEQC_ONECABLE", {{"installationType", 4}}},
        {"installationType=COMMUNALSINGLE", {{"installationType", 6}}},
        {"installationType=DISEQCSWITCHBOX", {{"installationType", 3}}},
        {"signal22kHz=BANDOFF", {{"signal22kHz", 1}}},
        {"toneBurst=OPTIONPOSITION", {{"toneBurst", 2}}},
        {"toneBurst=OFFX highBand=YES", {{"toneBurst", 0}, {"highBand", 1}}},
        {"satCables=SPLITONE", {{"satCables", 2}}},
        {"communalSupply=18V13V", {{"communalSupply", 2}}},
        {"highBand=YESNO", {{"highBand", 1}}},
        {"ctrlVoltage=ONOFF", {{"ctrlVoltage", 1}}},
        {"xhighBandYES toneBurst:OPTION", {{"highBand", 1}, {"toneBurst", 2}}},
        // Not a PIN: the PINs stay as they were.
        {"pinProtected=NOYES pinProtected=YES", {{"pinProtected", {0, 1, 1}}, {"pin", {"1111"}}}},
    };
    for (const auto& c : cases) {
        seed(json::parse(R"({"installationType": 9, "signal22kHz": 9, "toneBurst": 9,
            "satCables": 9, "communalSupply": 9, "highBand": 9, "ctrlVoltage": 9,
            "pinProtected": [1, 1, 1], "pin": ["1111"]})"));
        EXPECT_EQ(run("setSatelliteAntenna " + c.first), "ok") << c.first;
        expectFields(c.second);
    }
}

TEST_F(Antenna, NumbersAreReadStrictlyAfterTheFirstEqualsSign) {
    const std::tuple<const char*, int32_t, bool> cases[] = {
        {"unicableDevId=+7", 7, false},        {"unicableDevId=-2147483648", INT_MIN, false},
        {"unicableDevId=2147483648", 0, true}, {"unicableDevId=5a", 0, true},
        {"unicableDevId=5=6", 0, true},        {"unicableDevId==5", 0, true},
        {"unicableDevId=", 0, false},          {"unicableDevId", 0, false},
    };
    for (const auto& [token, value, logged] : cases) {
        seed({{"unicableDevId", 99}});
        clearLogs();
        EXPECT_EQ(run(std::string("setSatelliteAntenna ") + token), "ok") << token;
        EXPECT_EQ(satellite()["unicableDevId"], value) << token;
        EXPECT_EQ(count(kBadNumber), logged ? 1u : 0u) << token;
    }
    clearLogs();
    EXPECT_EQ(run("setSatelliteAntenna repeatRate=abc"), "ok");
    expectLine("antennacontrol.cpp", "getIntValue", "error parsing converting numeral string.\n");
}

// The first value of a list replaces the values in force, later ones are appended, and each
// command starts its lists afresh; lists not named keep theirs. Negative numbers keep their bits in
// unsigned fields; PINs are texts of at least four digits.
TEST_F(Antenna, ListsAreReplacedThenAppendedAndNumbersStoredAsGiven) {
    seed(json::parse(R"({"satId": [3], "lnbFrequencyHigh": [10600, 10600],
        "channelNumber": [8, 8, 8], "pin": ["1111"]})"));
    EXPECT_EQ(run("setSatelliteAntenna satId=1 satId=2 lnbFrequencyLow=9750 lnbFrequencyLow=-1 "
                  "channelNumber=5 channelFrequency=1210 channelNumber=4 pin=7 pin=12345 pin=x "
                  "pin=-1 motorType=1 motorMoveType=2 motorMoveData=-3 motorPositionData=4 "
                  "repeatRate=-2 unicableDevId=-6 switchDelay=7 diseqcMode=1"),
              "ok");
    expectFields(json::parse(R"({"satId": [1, 2], "lnbFrequencyLow": [9750, 4294967295],
        "lnbFrequencyHigh": [10600, 10600], "channelNumber": [5, 4], "channelFrequency": [1210],
        "pin": ["0007", "12345", "0000", "4294967295"], "motorType": 1, "motorMoveType": 2,
        "motorMoveData": -3, "motorPositionData": 4, "repeatRate": 4294967294,
        "unicableDevId": -6, "switchDelay": 7, "diseqcMode": 1})"));
    EXPECT_EQ(count(kBadNumber), 1u);

    // Nothing to parse: the list is emptied and 0 added, silently.
    clearLogs();
    EXPECT_EQ(run("setSatelliteAntenna lnbFrequencyLow="), "ok");
    expectFields({{"lnbFrequencyLow", {0}}, {"satId", {1, 2}}});
    EXPECT_EQ(count(kBadNumber), 0u);
}

TEST_F(Antenna, TokensNamingNoKeyChangeNothing) {
    const json before = satellite();
    // The reported spelling of the DiSEqC mode names no key.
    EXPECT_EQ(run("setSatelliteAntenna a=1,b=2 satid=4 , SATID=5 dieqcMode=1"), "ok");
    const auto writes = sim().calls("Antenna", "setSatelliteParams");
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].args[0], before);
}

// A word that is not recognised stops reading, but what came before is written and a successful
// write answers "ok". A failed cabling word is judged together with the next token.
TEST_F(Antenna, WrongWordStopsReadingButTheRecordIsStillWritten) {
    const std::vector<std::pair<std::string, json>> cases = {
        {"installationType=5 satId=4", {{"installationType", 2}, {"satId", {1}}}},
        {"satCables=FOUR satId=9 satId=10", {{"satCables", 0}, {"satId", {9}}}},
        {"satCables=FOUR ctrlVoltage=OFF satId=9 satId=10", {{"satId", {9, 10}}}},
        {"satCables=FOUR satCables=TWO satId=9 satId=10", {{"satCables", 1}, {"satId", {9, 10}}}},
    };
    for (const auto& c : cases) {
        seed(json::parse(R"({"satCables": 0, "installationType": 2, "satId": [1]})"));
        sim().clearJournal();
        clearLogs();
        EXPECT_EQ(run("setSatelliteAntenna " + c.first), "ok") << c.first;
        EXPECT_EQ(sim().calls("Antenna", "setSatelliteParams").size(), 1u);
        EXPECT_EQ(messages(), Messages{kCalled});
        expectFields(c.second);
    }
}

TEST_F(Antenna, OnlyFiveVoltsInTheFirstArgumentSwitchesTheSupplyOn) {
    const std::pair<const char*, int> cases[] = {
        {"5V", 1}, {"supplyVoltage=5V", 1}, {"on5V extra", 1}, {"ON", 0}, {"supplyVoltage=OFF", 0},
        {"5v", 0}, {"OFF 5V", 0},           {", 5V", 0},
    };
    for (const auto& c : cases) {
        // The supply in force is not read first: every command writes a fresh record.
        setState("Antenna.terrestrial", {{"supplyVoltage", 1 - c.second}});
        EXPECT_EQ(run(std::string("setTerrestrialAntenna ") + c.first), "ok") << c.first;
        EXPECT_EQ(sim().getState("Antenna.terrestrial"), json({{"supplyVoltage", c.second}}));
    }
    EXPECT_TRUE(sim().calls("Antenna", "getTerrestrialParams").empty());
    for (const auto& c : {std::make_pair(0, "OFF"), {1, "5V"}, {7, "unknown"}}) {
        setState("Antenna.terrestrial", {{"supplyVoltage", c.first}});
        EXPECT_EQ(run("getTerrestrialAntenna"), std::string("ok supplyVoltage=") + c.second);
    }
}

// --- failures and the command line ---

// Each command's own port failure: its reply, the line it logs where it logs one, then "failed."
// from controlAntenna; no port call after the failed one. Without an antenna object (the platform
// withdrew it, and setLnbPower took the empty handle) each command answers the same way.
TEST_F(Antenna, PortFailuresAndAMissingAntennaAreAnsweredAndLogged) {
    // The failing port operation, the command, its reply, and the function that logs
    // "<function> returns error." (null: none).
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"getSatelliteParams", "getSatelliteAntenna", "err: get actual parameters failed", nullptr},
        {"getSatelliteParams", "setSatelliteAntenna satId=2", "err: get actual parameters failed",
         nullptr},
        // A wrong word does not change the outcome of the write.
        {"setSatelliteParams", "setSatelliteAntenna toneBurst=MAYBE", "err: set failed", nullptr},
        {"getTerrestrialParams", "getTerrestrialAntenna", "err: get failed",
         "getTerrestrialAntenna"},
        {"setTerrestrialParams", "setTerrestrialAntenna 5V", "err: set not possible",
         "setTerrestrialAntenna"},
    };
    for (const bool present : {true, false}) {
        for (const auto& [operation, command, reply, loggedBy] : cases) {
            SCOPED_TRACE(command);
            const std::string failing = std::string("Antenna.") + operation;
            setAnswer(failing, -5);
            sim().clearJournal();
            clearLogs();
            const bool readFirst = present || std::string(operation) != "setSatelliteParams";
            EXPECT_EQ(run(command), readFirst ? reply : "err: get actual parameters failed");
            const auto calls = sim().calls("Antenna");
            EXPECT_EQ(calls.empty() ? "" : calls.back().operation, present ? operation : "");
            Messages expected = {kCalled, kFailed};
            if (loggedBy != nullptr) {
                const std::string text = std::string(loggedBy) + " returns error.\n";
                expected.insert(expected.begin() + 1, {3000, text});
                expectLine("antennacontrol.cpp", loggedBy, text);
            }
            EXPECT_EQ(messages(), expected);
            std::string error;
            ASSERT_TRUE(sim().clearAnswer(failing, error)) << error;
        }
        expectLine("app-sysctrlservice-impl-antenna.cpp", "controlAntenna", "failed.\n");
        setAbsent("Antenna");
        frame::MsgIds ids = msgIds(1);
        EXPECT_EQ(service().setLnbPower(ids, transport(1), 1), 0);
    }
}

// Replies that begin "err" are failures, and controlAntenna logs "failed." for them.
TEST_F(Antenna, CommandLinesAreDispatchedOnTheirExactFirstWord) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "err:no Command"},
        {"   ", "err:no Command"},
        {"getsatelliteantenna", "err:unknown command"},
        {"\tgetSatelliteAntenna", "err:unknown command"},
        {"getSatelliteAntennas", "err:unknown command"},
        {",getSatelliteAntenna", "err:unknown command"},
        {"getSatelliteAntenna,", kDefaultReport},
        {"getSatelliteAntenna satId=5", kDefaultReport},
        {" getTerrestrialAntenna  extra words ", "ok supplyVoltage=OFF"},
        {"setSatelliteAntenna ,", "ok"},
        {"  setSatelliteAntenna  ", "err: insufficient arguments"},
        {"setTerrestrialAntenna", "err: insufficient parameters"},
    };
    for (const auto& [command, reply] : cases) {
        clearLogs();
        EXPECT_EQ(run(command), reply) << '"' << command << '"';
        const bool failed = std::string(reply).rfind("err", 0) == 0;
        EXPECT_EQ(messages(), (failed ? Messages{kCalled, kFailed} : Messages{kCalled}));
    }
    // Without arguments the port is left alone.
    sim().clearJournal();
    run("setSatelliteAntenna");
    run("setTerrestrialAntenna");
    EXPECT_TRUE(sim().calls("Antenna").empty());
}

// --- LNB power ---

TEST_F(Antenna, LnbPowerPassesTheValueUnchangedAndDeliversThePortsResult) {
    frame::MsgIds ids = msgIds(4);
    for (const int value : {0, INT_MIN, INT_MAX}) {
        EXPECT_EQ(service().setLnbPower(ids, transport(4), value), 0);
        EXPECT_EQ(sim().calls("Antenna", "setLnbPower").back().args, json({value}));
    }
    setAnswer("Antenna.setLnbPower", -3);
    m_client->clear();
    clearLogs();
    EXPECT_EQ(service().setLnbPower(ids, transport(4), 5), 0);
    EXPECT_EQ(messages(), (Messages{{4000, "Called,value:5.\n"},
                                    {4000, "setLnbPower.\n"},
                                    {4000, "Called,return:-3.\n"}}));
    const auto received = m_client->received("setLnbPowerResult");
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(json({received[0].args, received[0].msgIds}), json({{-3}, {4, 0}}));
    // The antenna is asked for anew on every call; when the platform has withdrawn it, the port
    // is not called and the result is 0.
    EXPECT_EQ(sim().calls("Factory", "getAntenna").size(), 4u);
    setAbsent("Antenna");
    m_client->clear();
    clearLogs();
    EXPECT_EQ(service().setLnbPower(ids, transport(4), 2), 0);
    EXPECT_EQ(m_client->received().at(0).args, json({0}));
    EXPECT_EQ(messages(), (Messages{{4000, "Called,value:2.\n"}, {4000, "Called,return:0.\n"}}));
}

}  // namespace
}  // namespace sysctrltest
