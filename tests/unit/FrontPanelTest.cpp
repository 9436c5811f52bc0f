// Front-panel LEDs, remote-control options and the retired compatibility operations.
#include "ServiceTest.h"

namespace sysctrltest {
namespace {

using sim::json;
typedef std::vector<std::pair<uint16_t, std::string>> Messages;

class FrontPanel : public ServiceTest {
  protected:
    // Every operation once. The texts are exact: the doubled space of the show variant, the logo
    // notice at 3000, the retired texts without a line end. The LED states are logged as received
    // and passed as true for any non-zero value; flicker shows use case 8 only for 1.
    void runAll() {
        sysctrlservice::ServiceInterface& s = service();
        frame::MsgIds m = msgIds(1);
        const frame::TransportInfo t = transport(1);
        sim().clearJournal();
        clearLogs();
        expect(s.ctrlLedColorState(m, t, 3, -1, 4096), "FrontPanel.setLedColorState", {3, -1, 4096},
               {{4000, "Set ledColor: 3 ledStatus:-1 flashPwm:4096 .\n"}});
        expect(s.ctrluseCaseShow(m, t, 5), "FrontPanel.showUseCase", {5},
               {{4000, "Set led  usecase:5.\n"}});
        expect(s.ctrluseCaseHide(m, t, -7), "FrontPanel.hideUseCase", {-7},
               {{4000, "Set led usecase:-7.\n"}});
        expect(s.ctrlGpioState(m, t, -2), "FrontPanel.setLedState", {true},
               {{4000, "Set ledstatus: -2.\n"}});
        expect(s.ctrlGpioState(m, t, 0), "FrontPanel.setLedState", {false},
               {{4000, "Set ledstatus: 0.\n"}});
        expect(s.ctrlLogoLedGpioStatus(m, t, -1), "FrontPanel.setLogoLedState", {true},
               {{3000, "Set logo led status: -1.\n"}});
        expect(s.ctrlLogoLedGpioStatus(m, t, 0), "FrontPanel.setLogoLedState", {false},
               {{3000, "Set logo led status: 0.\n"}});
        expect(s.ctrlLedFlicker(m, t, 1), "FrontPanel.showUseCase", {8}, {});
        for (const int flag : {0, 2, -1}) {
            expect(s.ctrlLedFlicker(m, t, flag), "FrontPanel.hideUseCase", {8}, {});
        }
        expect(s.setRemoteControlCode(m, t, INT32_MIN), "RemoteControl.setRemoteControlCode",
               {INT32_MIN}, {{1, "Remote control code set value: -2147483648.\n"}});
        expect(s.setKeypadLock(m, t, 0), "RemoteControl.setKeypadLock", {0},
               {{1, "keypad lock set value: 0.\n"}});
        expect(s.setQuentaRCSwitch(m, t, 77), "RemoteControl.setBrandSwitch", {77},
               {{1, "the brand of remote control: 77.\n"}});
        expect(s.controlPowerMode(m, t, sysctrlservice::POWER_MODE_OFF), "", {},
               {{1000, "Interface has been deprecated, power mode = 2"}});
        expect(s.setOsdOpacity(m, t, 1, 50), "", {}, {{1, "The set opacity API isn't finished!"}});
        expect(s.getOsdOpacity(m, t, 1), "", {}, {{1, "The get opacity API isn't finished!"}});
        expect(s.setQuietBootFlag(m, t, 1), "", {}, {});
    }

    // Checks one operation that has just run: status 0, the one port call "Object.operation" (none
    // for an empty name), the messages; without the objects, "failed." instead of the call, and
    // the remote-control operations test first and so log nothing else.
    void expect(int status, const std::string& call, const json& args, Messages logged) {
        SCOPED_TRACE(call + args.dump() + (logged.empty() ? "" : logged[0].second));
        EXPECT_EQ(status, 0);
        json calls = json::array();
        for (const sim::PortCall& made : sim().journal()) {
            calls.push_back(json::array({made.object + "." + made.operation, made.args}));
        }
        if (!m_present && !call.empty()) {
            if (call.rfind("RemoteControl.", 0) == 0) {
                logged.clear();
            }
            logged.emplace_back(1000, "failed.\n");
        }
        EXPECT_EQ(calls, m_present && !call.empty() ? json::array({json::array({call, args})})
                                                    : json::array());
        EXPECT_EQ(messages(), logged);
        sim().clearJournal();
        clearLogs();
    }

    bool m_present = true;
};

// The device's own result is ignored: every port call is scripted to fail.
TEST_F(FrontPanel, EachOperationLogsThenMakesItsOneCallAndReturnsZero) {
    startService();
    const auto client = addClient("A");
    for (const char* call : {"FrontPanel.setLedColorState", "FrontPanel.showUseCase",
                             "FrontPanel.hideUseCase", "FrontPanel.setLedState",
                             "FrontPanel.setLogoLedState", "RemoteControl.setRemoteControlCode",
                             "RemoteControl.setKeypadLock", "RemoteControl.setBrandSwitch"}) {
        setAnswer(call, -5);
    }
    runAll();
    EXPECT_TRUE(client->received().empty());
}

TEST_F(FrontPanel, WithoutTheObjectsEachLogsFailedAndCallsNothing) {
    setAbsent("FrontPanel");
    setAbsent("RemoteControl");
    startService();
    m_present = false;
    runAll();
}

}  // namespace
}  // namespace sysctrltest
