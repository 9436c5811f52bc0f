// OLED tuning: gain operations answer through their status, the switches through every client.
#include <functional>

#include "ServiceTest.h"

namespace sysctrltest {
namespace {

using sim::json;
typedef std::pair<uint16_t, std::string> Message;

// What the panel is scripted to answer: a failure, to be passed on as it is.
const int kAnswer = -4;

class OledTuning : public StartedServiceTest {
  protected:
    // The panel calls made so far, as [operation, args]; clears the journal and the logs.
    json panelCalls() {
        json list = json::array();
        for (const sim::PortCall& call : sim().calls("OledPanel")) {
            list.push_back(json::array({call.operation, call.args}));
        }
        sim().clearJournal();
        clearLogs();
        return list;
    }

    // Every gain operation once: the 8-bit arguments are cut to their low byte, the entry texts
    // are exact. With the panel, each returns the panel's scripted answer unchanged; without it
    // the reads return 0 and the writes -1.
    void runGains() {
        sysctrlservice::ServiceInterface& s = service();
        frame::MsgIds m = msgIds(1);
        const frame::TransportInfo t = transport(1);
        expect(s.startOledAs(m, t), "startAs", json::array(), "called \n", 0);
        expect(s.saveOledManualGain(m, t, 511, 2, 3, 4), "saveManualGain", {255, 2, 3, 4},
               "called: 511 2 3 4\n", -1);
        expect(s.saveOledManualGain(m, t, 0x1FF00, 256, 257, 0xFFFFFFFFu), "saveManualGain",
               {0, 0, 1, 255}, "called: 130816 256 257 -1\n", -1);
        expect(s.setOledManualGainSetting(m, t, 70000, 0xFFFFFFFFu), "setManualGainSetting",
               {70000, 4294967295u}, "called: 70000 -1\n", -1);
        expect(s.getOledManualGainSetting(m, t, 300), "getManualGainSetting", {300}, "called\n", 0);
        expect(s.setOledManualGainEnable(m, t, 257), "setManualGainEnable", {1}, "called: 257 \n",
               -1);
        expect(s.setOledManualGainEnable(m, t, -2), "setManualGainEnable", {254}, "called: -2 \n",
               -1);
        expect(s.getOledManualGainEnable(m, t), "getManualGainEnable", json::array(), "called \n",
               0);
    }

    void expect(int status, const std::string& operation, const json& args,
                const std::string& entry, int withoutPanel) {
        SCOPED_TRACE(operation + args.dump());
        EXPECT_EQ(status, m_panel ? kAnswer : withoutPanel);
        EXPECT_EQ(messages(), std::vector<Message>{Message(1, entry)});
        EXPECT_EQ(panelCalls(),
                  m_panel ? json::array({json::array({operation, args})}) : json::array());
    }

    static json readBack(const char* setter, int state, const char* getter) {
        return json::array({json::array({setter, {state}}), json::array({getter, json::array()})});
    }

    bool m_panel = true;
};

// The panel is asked for per call, so it can go away between calls.
TEST_F(OledTuning, GainOperationsPassThePanelsAnswerThroughAndWithoutItReadZeroOrFail) {
    for (const char* operation :
         {"startAs", "saveManualGain", "setManualGainSetting", "getManualGainSetting",
          "setManualGainEnable", "getManualGainEnable"}) {
        setAnswer(std::string("OledPanel.") + operation, kAnswer);
    }
    runGains();
    setAbsent("OledPanel");
    m_panel = false;
    runGains();
}

// The switches report the state read back from the panel, not the one asked for, to every client
// with the request's identifiers; they log nothing. Without a panel they deliver nothing.
TEST_F(OledTuning, SwitchesSetThenReportTheStateReadBack) {
    sysctrlservice::ServiceInterface& s = service();
    frame::MsgIds m = msgIds(7);
    const frame::TransportInfo t = transport(7);
    struct Switch {
        std::function<int(unsigned char)> set;
        const char* setter;
        const char* getter;
        const char* callback;
    };
    const Switch switches[] = {{[&](unsigned char on) { return s.setOledLeaEnable(m, t, on); },
                                "setLeaEnable", "getLeaEnable", "setOledLeaEnableResult"},
                               {[&](unsigned char on) { return s.setOledCpcEnable(m, t, on); },
                                "setCpcEnable", "getCpcEnable", "setOledCpcEnableResult"}};
    for (const Switch& c : switches) {
        // No client yet: the panel is still set and read back.
        EXPECT_EQ(c.set(1), 0);
        EXPECT_EQ(panelCalls(), readBack(c.setter, 1, c.getter));
    }
    const auto a = addClient("A");
    const auto b = addClient("B");
    for (const Switch& c : switches) {
        setAnswer(std::string("OledPanel.") + c.getter, 2);
        EXPECT_EQ(c.set(255), 0);
        EXPECT_TRUE(logs().empty());
        EXPECT_EQ(panelCalls(), readBack(c.setter, 255, c.getter));
        for (const auto& client : {a, b}) {
            const auto received = client->received(c.callback);
            ASSERT_EQ(received.size(), 1u) << client->name() << c.callback;
            EXPECT_EQ(json({received[0].args, received[0].msgIds, received[0].transport}),
                      json({{2}, {7, 0}, {7, 0, 0, 0, 0, 0, 0}}));
        }
    }
    setAbsent("OledPanel");
    for (const Switch& c : switches) {
        EXPECT_EQ(c.set(1), 0);
        EXPECT_EQ(panelCalls(), json::array());
    }
    EXPECT_EQ(a->received().size(), 2u);
}

}  // namespace
}  // namespace sysctrltest
