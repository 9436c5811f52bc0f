// OLED tuning: gain operations answer through their status, the switches through every client.
#include <functional>

#include "ServiceTest.h"

namespace sysctrltest {
namespace {

using sim::json;
using sysctrlservice::ServiceInterface;
typedef std::pair<uint16_t, std::string> Message;
typedef std::function<int(ServiceInterface&, frame::MsgIds&, const frame::TransportInfo&)> Op;

class OledTuning : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        startService();
        sim().clearJournal();
        clearLogs();
    }

    int run(const Op& call, int k = 1) {
        frame::MsgIds ids = msgIds(k);
        return call(service(), ids, transport(k));
    }

    // The panel calls made by the operation, as [operation, args].
    std::vector<json> panelCalls() {
        std::vector<json> list;
        for (const sim::PortCall& call : sim().calls("OledPanel")) {
            list.push_back(json::array({call.operation, call.args}));
        }
        return list;
    }
};

struct Gain {
    const char* name;
    Op call;
    const char* operation;
    json args;      // as the panel receives them
    Message entry;  // logged at level 1
    json answer;    // what the panel is scripted to return
    int withoutPanel;
};

void PrintTo(const Gain& c, std::ostream* os) {
    *os << c.name;
}

class OledGain : public OledTuning, public ::testing::WithParamInterface<Gain> {};

TEST_P(OledGain, ReturnsThePanelsAnswerUnchanged) {
    const Gain& c = GetParam();
    setAnswer(std::string("OledPanel.") + c.operation, c.answer);

    EXPECT_EQ(run(c.call), c.answer.get<int>());
    EXPECT_EQ(panelCalls(), (std::vector<json>{{c.operation, c.args}}));
    EXPECT_EQ(messages(), std::vector<Message>{c.entry});
}

TEST_P(OledGain, WithoutAPanelReadsGiveZeroAndWritesMinusOne) {
    const Gain& c = GetParam();
    setAbsent("OledPanel");

    EXPECT_EQ(run(c.call), c.withoutPanel);
    EXPECT_TRUE(panelCalls().empty());
    EXPECT_EQ(messages(), std::vector<Message>{c.entry});
}

INSTANTIATE_TEST_SUITE_P(
    Cases, OledGain,
    ::testing::Values(
        Gain{"StartAs",
             [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                 return s.startOledAs(m, t);
             },
             "startAs",
             json::array(),
             {1, "called \n"},
             -4,
             0},
        Gain{"SaveGainCutsEachToEightBits",
             [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                 return s.saveOledManualGain(m, t, 511, 2, 3, 4);
             },
             "saveManualGain",
             {255, 2, 3, 4},
             {1, "called: 511 2 3 4\n"},
             0,
             -1},
        Gain{"SaveGainKeepsOnlyTheLowByte",
             [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                 return s.saveOledManualGain(m, t, 0x1FF00, 256, 257, 0xFFFFFFFFu);
             },
             "saveManualGain",
             {0, 0, 1, 255},
             {1, "called: 130816 256 257 -1\n"},
             6,
             -1},
        Gain{"SetGainSettingIsNotCut",
             [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                 return s.setOledManualGainSetting(m, t, 70000, 0xFFFFFFFFu);
             },
             "setManualGainSetting",
             {70000, 4294967295u},
             {1, "called: 70000 -1\n"},
             3,
             -1},
        Gain{"GetGainSetting",
             [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                 return s.getOledManualGainSetting(m, t, 300);
             },
             "getManualGainSetting",
             {300},
             {1, "called\n"},
             1234,
             0},
        Gain{"SetGainEnableCutsToEightBits",
             [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                 return s.setOledManualGainEnable(m, t, 257);
             },
             "setManualGainEnable",
             {1},
             {1, "called: 257 \n"},
             0,
             -1},
        Gain{"SetGainEnableNegative",
             [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                 return s.setOledManualGainEnable(m, t, -2);
             },
             "setManualGainEnable",
             {254},
             {1, "called: -2 \n"},
             -9,
             -1},
        Gain{"GetGainEnable",
             [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                 return s.getOledManualGainEnable(m, t);
             },
             "getManualGainEnable",
             json::array(),
             {1, "called \n"},
             -1,
             0}),
    [](const ::testing::TestParamInfo<Gain>& info) { return std::string(info.param.name); });

TEST_F(OledTuning, GainSettingWrittenIsReadBack) {
    EXPECT_EQ(run([](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                  return s.setOledManualGainSetting(m, t, 2, 700);
              }),
              0);
    EXPECT_EQ(run([](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                  return s.getOledManualGainSetting(m, t, 2);
              }),
              700);
}

struct Switch {
    const char* name;
    std::function<int(ServiceInterface&, frame::MsgIds&, const frame::TransportInfo&,
                      unsigned char)>
        call;
    const char* setter;
    const char* getter;
    const char* callback;
};

void PrintTo(const Switch& c, std::ostream* os) {
    *os << c.name;
}

class OledSwitch : public OledTuning, public ::testing::WithParamInterface<Switch> {
  protected:
    int run(unsigned char enable, int k) {
        frame::MsgIds ids = msgIds(k);
        return GetParam().call(service(), ids, transport(k), enable);
    }
};

TEST_P(OledSwitch, ReportsTheStateReadBackToEveryClient) {
    const Switch& c = GetParam();
    const auto a = addClient("A");
    const auto b = addClient("B");
    // The panel settles on another state than the one asked for.
    setAnswer(std::string("OledPanel.") + c.getter, 2);

    EXPECT_EQ(run(255, 7), 0);
    EXPECT_EQ(panelCalls(), (std::vector<json>{{c.setter, {255}}, {c.getter, json::array()}}));
    for (const auto& client : {a, b}) {
        const auto received = client->received();
        ASSERT_EQ(received.size(), 1u) << client->name();
        EXPECT_EQ(received[0].callback, c.callback);
        EXPECT_EQ(received[0].args, json({2}));
        EXPECT_EQ(received[0].msgIds, (std::vector<int32_t>{7, 0}));
        EXPECT_EQ(received[0].transport, (std::vector<int32_t>{7, 0, 0, 0, 0, 0, 0}));
    }
    EXPECT_TRUE(logs().empty());
}

TEST_P(OledSwitch, WithoutClientsStillSetsAndReadsBack) {
    const Switch& c = GetParam();
    EXPECT_EQ(run(1, 1), 0);
    EXPECT_EQ(panelCalls(), (std::vector<json>{{c.setter, {1}}, {c.getter, json::array()}}));
}

TEST_P(OledSwitch, WithoutAPanelDeliversNothing) {
    const auto a = addClient("A");
    setAbsent("OledPanel");
    EXPECT_EQ(run(1, 1), 0);
    EXPECT_TRUE(panelCalls().empty());
    EXPECT_TRUE(a->received().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, OledSwitch,
    ::testing::Values(
        Switch{"Lea",
               [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t,
                  unsigned char e) { return s.setOledLeaEnable(m, t, e); },
               "setLeaEnable", "getLeaEnable", "setOledLeaEnableResult"},
        Switch{"Cpc",
               [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t,
                  unsigned char e) { return s.setOledCpcEnable(m, t, e); },
               "setCpcEnable", "getCpcEnable", "setOledCpcEnableResult"}),
    [](const ::testing::TestParamInfo<Switch>& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace sysctrltest
