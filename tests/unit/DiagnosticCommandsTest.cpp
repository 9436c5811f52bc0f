// The GPIO, I2C, HDMI and shell pass-throughs; tests/scripts/farfield-diagnostic-commands.sim
// runs the plain cases through the desk host.
#include "TextCommandFixture.h"

namespace sysctrltest {
namespace {

using sim::json;

class Diagnostics : public TextCommandFixture {
  protected:
    void start() { m_client = startWithClient("A"); }
    Replies got(const std::string& callback) const { return replies(*m_client, callback); }

    frame::MsgIds m_ids = msgIds(2);
    const frame::TransportInfo m_transport = transport(2);
    boost::shared_ptr<sim::RecordingClient> m_client;
};

TEST_F(Diagnostics, GpioAndIicPassThePlatformsTextOn) {
    start();
    setAnswer("FactoryManager.setGpio", 1, json::array({"gpio 12 set"}));
    service().setGpio(m_ids, m_transport, "set 12 1");
    setAnswer("FactoryManager.setGpio", 0, json::array({"busy"}));
    service().setGpio(m_ids, m_transport, "set 12 1");
    setAnswer("FactoryManager.getGpio", 0, json::array({"high"}));
    service().getGpio(m_ids, m_transport, "get 12");
    service().controlIic(m_ids, m_transport, "IIC read 0x50");  // case-sensitive: not passed on
    setAnswer("FactoryManager.commandIic", 0, json::array({"nack"}));
    service().controlIic(m_ids, m_transport, "busiic write 0x50 1");

    EXPECT_EQ(got("setGpioResult"), (Replies{{"gpio 12 set"}, {"busy"}}));
    EXPECT_EQ(got("getGpioResult"), Replies{{"high"}});
    EXPECT_EQ(got("controlIicResult"), (Replies{{""}, {"nack"}}));
    EXPECT_EQ(callsOf("FactoryManager"),
              "setGpio[\"set 12 1\"] setGpio[\"set 12 1\"] getGpio[\"get 12\"] "
              "commandIic[\"busiic write 0x50 1\"]");
    EXPECT_EQ(countMessages(3000, "failed.\n"), 2u);
    EXPECT_EQ(countMessages(4000, "result=high\n"), 1u);
    EXPECT_EQ(countMessages(3000, "commandIic failed\n"), 1u);
}

TEST_F(Diagnostics, HdmiAsksTheSwitchForSignalInfoAndTheFactoryManagerForTheRest) {
    start();
    for (unsigned int flags : {1u, 3u}) {
        setState("HdmiSwitch.signalFlags", flags);
        service().controlHdmi(m_ids, m_transport, "x getSignalInfo");
    }
    setAnswer("HdmiSwitch.getSignalInfo", -1);
    service().controlHdmi(m_ids, m_transport, "getSignalInfo");
    setAnswer("FactoryManager.controlHdmi", 0, json::array({"no port"}));
    service().controlHdmi(m_ids, m_transport, "switch 2");
    EXPECT_EQ(got("controlHdmiResult"), (Replies{{"ok (HDMISWITCH_SYNC_OK )"},
                                                 {"ok (HDMISWITCH_SYNC_OK HDMISWITCH_CLOCK_OK )"},
                                                 {"getSignalInfo failed"},
                                                 {"no port"}}));
    EXPECT_EQ(callsOf("FactoryManager"), "controlHdmi[\"switch 2\"]");
    EXPECT_EQ(countMessages(3000, "controlHdmi failed.\n"), 1u);
}

TEST_F(Diagnostics, ShellRepliesOkUnlessTheCommandCouldNotRun) {
    start();
    setAnswer("zoshell.zoshellExecuteCmd", 5);  // ran, whatever the command did
    service().executeZoshell(m_ids, m_transport, std::string("echo a\0b", 8));
    setAnswer("zoshell.zoshellExecuteCmd", -2);
    service().executeZoshell(m_ids, m_transport, "nosuch");
    EXPECT_EQ(got("executeZoshellResult"), (Replies{{"ok"}, {"err: could not execute"}}));
    EXPECT_EQ(callArgs("zoshell", "zoshellExecuteCmd")[0],
              json::array({{{"hex", "6563686f20610062"}}, 8, 2, 0}));
    EXPECT_EQ(countMessages(3000, "Function returned: -2.\n"), 1u);
}

TEST_F(Diagnostics, MissingObjectsGiveFailureTexts) {
    setAbsent("FactoryManager");
    setAbsent("HdmiSwitch");
    start();
    service().setGpio(m_ids, m_transport, "set 1 1");
    service().getGpio(m_ids, m_transport, "get 1");
    service().controlIic(m_ids, m_transport, "iic read");
    service().controlHdmi(m_ids, m_transport, "switch 2");
    service().controlHdmi(m_ids, m_transport, "getSignalInfo");
    for (const char* callback : {"setGpioResult", "getGpioResult", "controlIicResult"}) {
        EXPECT_EQ(got(callback), Replies{{"err: could not execute"}}) << callback;
    }
    EXPECT_EQ(got("controlHdmiResult"), (Replies{{"command unknown"}, {"getSignalInfo failed"}}));
    EXPECT_EQ(countMessages(1000, "Cannot get factory manager object\n"), 4u);
    EXPECT_EQ(countMessages(1000, "Cannot get hdmi switch object\n"), 1u);
}

}  // namespace
}  // namespace sysctrltest
