// Front-panel LEDs, remote-control options and the retired compatibility operations.
#include <functional>

#include "ServiceTest.h"

namespace sysctrltest {
namespace {

using sim::json;
using sysctrlservice::ServiceInterface;
typedef std::pair<uint16_t, std::string> Message;
typedef std::function<int(ServiceInterface&, frame::MsgIds&, const frame::TransportInfo&)> Op;

// One forwarding operation: what it calls on which object, and what it logs around the call.
struct Forward {
    const char* name;
    Op call;
    const char* object;
    const char* operation;
    json args;
    std::vector<Message> logged;  // with the object present
    std::vector<Message> absent;  // without it
};

void PrintTo(const Forward& c, std::ostream* os) {
    *os << c.name;
}

const Message kFailed{1000, "failed.\n"};

std::vector<Forward> forwards() {
    return {
        {"LedColorState",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.ctrlLedColorState(m, t, 3, -1, 4096);
         },
         "FrontPanel",
         "setLedColorState",
         {3, -1, 4096},
         {{4000, "Set ledColor: 3 ledStatus:-1 flashPwm:4096 .\n"}},
         {{4000, "Set ledColor: 3 ledStatus:-1 flashPwm:4096 .\n"}, kFailed}},
        {"UseCaseShowHasTheDoubledSpace",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.ctrluseCaseShow(m, t, 5);
         },
         "FrontPanel",
         "showUseCase",
         {5},
         {{4000, "Set led  usecase:5.\n"}},
         {{4000, "Set led  usecase:5.\n"}, kFailed}},
        {"UseCaseHide",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.ctrluseCaseHide(m, t, -7);
         },
         "FrontPanel",
         "hideUseCase",
         {-7},
         {{4000, "Set led usecase:-7.\n"}},
         {{4000, "Set led usecase:-7.\n"}, kFailed}},
        {"GpioStateNegativeIsOn",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.ctrlGpioState(m, t, -2);
         },
         "FrontPanel",
         "setLedState",
         {true},
         {{4000, "Set ledstatus: -2.\n"}},
         {{4000, "Set ledstatus: -2.\n"}, kFailed}},
        {"GpioStateZeroIsOff",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.ctrlGpioState(m, t, 0);
         },
         "FrontPanel",
         "setLedState",
         {false},
         {{4000, "Set ledstatus: 0.\n"}},
         {{4000, "Set ledstatus: 0.\n"}, kFailed}},
        {"LogoLedNoticeAtLevel3000",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.ctrlLogoLedGpioStatus(m, t, -1);
         },
         "FrontPanel",
         "setLogoLedState",
         {true},
         {{3000, "Set logo led status: -1.\n"}},
         {{3000, "Set logo led status: -1.\n"}, kFailed}},
        {"LogoLedZeroIsOff",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.ctrlLogoLedGpioStatus(m, t, 0);
         },
         "FrontPanel",
         "setLogoLedState",
         {false},
         {{3000, "Set logo led status: 0.\n"}},
         {{3000, "Set logo led status: 0.\n"}, kFailed}},
        {"FlickerOneShowsUseCase8",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.ctrlLedFlicker(m, t, 1);
         },
         "FrontPanel",
         "showUseCase",
         {8},
         {},
         {kFailed}},
        {"FlickerZeroHidesUseCase8",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.ctrlLedFlicker(m, t, 0);
         },
         "FrontPanel",
         "hideUseCase",
         {8},
         {},
         {kFailed}},
        {"FlickerTwoHidesUseCase8",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.ctrlLedFlicker(m, t, 2);
         },
         "FrontPanel",
         "hideUseCase",
         {8},
         {},
         {kFailed}},
        {"FlickerMinusOneHidesUseCase8",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.ctrlLedFlicker(m, t, -1);
         },
         "FrontPanel",
         "hideUseCase",
         {8},
         {},
         {kFailed}},
        {"RemoteControlCode",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.setRemoteControlCode(m, t, -2147483647 - 1);
         },
         "RemoteControl",
         "setRemoteControlCode",
         {-2147483647 - 1},
         {{1, "Remote control code set value: -2147483648.\n"}},
         {kFailed}},
        {"KeypadLock",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.setKeypadLock(m, t, 0);
         },
         "RemoteControl",
         "setKeypadLock",
         {0},
         {{1, "keypad lock set value: 0.\n"}},
         {kFailed}},
        {"BrandSwitch",
         [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
             return s.setQuentaRCSwitch(m, t, 77);
         },
         "RemoteControl",
         "setBrandSwitch",
         {77},
         {{1, "the brand of remote control: 77.\n"}},
         {kFailed}},
    };
}

class FrontPanel : public ServiceTest {
  protected:
    int run(const Op& call) {
        frame::MsgIds ids = msgIds(1);
        return call(service(), ids, transport(1));
    }

    std::vector<sim::PortCall> deviceCalls() {
        std::vector<sim::PortCall> found = sim().calls("FrontPanel");
        const std::vector<sim::PortCall> remote = sim().calls("RemoteControl");
        found.insert(found.end(), remote.begin(), remote.end());
        return found;
    }
};

class FrontPanelForward : public FrontPanel, public ::testing::WithParamInterface<Forward> {};

TEST_P(FrontPanelForward, LogsThenMakesTheOneCall) {
    startService();
    const auto client = addClient("A");
    sim().clearJournal();
    clearLogs();
    const Forward& c = GetParam();

    EXPECT_EQ(run(c.call), 0);

    const auto calls = deviceCalls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].object, c.object);
    EXPECT_EQ(calls[0].operation, c.operation);
    EXPECT_EQ(calls[0].args, c.args);
    EXPECT_EQ(messages(), c.logged);
    EXPECT_TRUE(client->received().empty());
}

TEST_P(FrontPanelForward, DeviceFailureStillReturnsZeroAndLogsNothingMore) {
    startService();
    const Forward& c = GetParam();
    setAnswer(std::string(c.object) + "." + c.operation, -5);
    clearLogs();

    EXPECT_EQ(run(c.call), 0);
    EXPECT_EQ(deviceCalls().back().result, -5);
    EXPECT_EQ(messages(), c.logged);
}

TEST_P(FrontPanelForward, WithoutTheObjectLogsFailedAndCallsNothing) {
    setAbsent("FrontPanel");
    setAbsent("RemoteControl");
    startService();
    clearLogs();
    const Forward& c = GetParam();

    EXPECT_EQ(run(c.call), 0);
    EXPECT_TRUE(deviceCalls().empty());
    EXPECT_EQ(messages(), c.absent);
}

INSTANTIATE_TEST_SUITE_P(Cases, FrontPanelForward, ::testing::ValuesIn(forwards()),
                         [](const ::testing::TestParamInfo<Forward>& info) {
                             return std::string(info.param.name);
                         });

TEST_F(FrontPanel, FlickerPatternIsShownUntilHidden) {
    startService();
    frame::MsgIds ids = msgIds(1);
    service().ctrluseCaseShow(ids, transport(1), 3);
    service().ctrlLedFlicker(ids, transport(1), 1);
    EXPECT_EQ(sim().getState("FrontPanel.useCases"), json({3, 8}));
    service().ctrlLedFlicker(ids, transport(1), 5);
    EXPECT_EQ(sim().getState("FrontPanel.useCases"), json({3}));
}

// The retired operations touch no device and answer nobody.
struct Retired {
    const char* name;
    Op call;
    std::vector<Message> logged;
};

void PrintTo(const Retired& c, std::ostream* os) {
    *os << c.name;
}

class FrontPanelRetired : public FrontPanel, public ::testing::WithParamInterface<Retired> {};

TEST_P(FrontPanelRetired, OnlyLogAndReturnZero) {
    startService();
    const auto client = addClient("A");
    sim().clearJournal();
    clearLogs();

    EXPECT_EQ(run(GetParam().call), 0);
    EXPECT_TRUE(sim().journal().empty());
    EXPECT_TRUE(client->received().empty());
    EXPECT_EQ(messages(), GetParam().logged);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FrontPanelRetired,
    ::testing::Values(
        Retired{"PowerModeHasNoLineEnd",
                [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                    return s.controlPowerMode(m, t, sysctrlservice::POWER_MODE_OFF);
                },
                {{1000, "Interface has been deprecated, power mode = 2"}}},
        Retired{"SetOsdOpacity",
                [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                    return s.setOsdOpacity(m, t, 1, 50);
                },
                {{1, "The set opacity API isn't finished!"}}},
        Retired{"GetOsdOpacityReturnsNoOpacity",
                [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                    return s.getOsdOpacity(m, t, 1);
                },
                {{1, "The get opacity API isn't finished!"}}},
        Retired{"QuietBootFlagIsSilent",
                [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                    return s.setQuietBootFlag(m, t, 1);
                },
                {}}),
    [](const ::testing::TestParamInfo<Retired>& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace sysctrltest
