// The GPIO, I2C, HDMI and shell pass-throughs.
#include "TextCommandTest.h"

namespace sysctrltest {
namespace {

using sim::json;
typedef std::vector<std::vector<std::string>> Replies;

class Diagnostics : public TextCommandTest {
  protected:
    void start() {
        startService();
        m_client = addClient("A");
        clearLogs();
    }
    // The replies the client received for `callback`, first texts only.
    std::vector<std::string> texts(const std::string& callback) const {
        std::vector<std::string> found;
        for (const auto& reply : replies(*m_client, callback)) {
            found.push_back(reply.at(0));
        }
        return found;
    }
    frame::MsgIds m_ids = msgIds(2);
    boost::shared_ptr<sim::RecordingClient> m_client;
};

TEST_F(Diagnostics, GpioPassesThePlatformsTextOn) {
    start();
    setAnswer("FactoryManager.setGpio", 1, json::array({"gpio 12 set"}));
    EXPECT_EQ(service().setGpio(m_ids, transport(2), "set 12 1"), 0);
    setAnswer("FactoryManager.setGpio", 0, json::array({"busy"}));
    EXPECT_EQ(service().setGpio(m_ids, transport(2), "set 12 1"), 0);
    EXPECT_EQ(texts("setGpioResult"), (std::vector<std::string>{"gpio 12 set", "busy"}));
    EXPECT_EQ(callArgs("FactoryManager", "setGpio")[0], json::array({"set 12 1"}));
    EXPECT_EQ(countMessages(3000, "failed.\n"), 1u);

    setAnswer("FactoryManager.getGpio", 0, json::array({"high"}));
    EXPECT_EQ(service().getGpio(m_ids, transport(2), "get 12"), 0);
    EXPECT_EQ(texts("getGpioResult"), std::vector<std::string>{"high"});
    EXPECT_EQ(countMessages(3000, "failed.\n"), 2u);
    EXPECT_EQ(countMessages(4000, "result=high\n"), 1u);
}

TEST_F(Diagnostics, IicPassesOnlyCommandsContainingIic) {
    start();
    setAnswer("FactoryManager.commandIic", 1, json::array({"0x12"}));
    service().controlIic(m_ids, transport(2), "IIC read 0x50");
    service().controlIic(m_ids, transport(2), "busiic read 0x50");
    setAnswer("FactoryManager.commandIic", 0, json::array({"nack"}));
    service().controlIic(m_ids, transport(2), "iic write 0x50 1");
    EXPECT_EQ(texts("controlIicResult"), (std::vector<std::string>{"", "0x12", "nack"}));
    EXPECT_EQ(callArgs("FactoryManager", "commandIic").size(), 2u);
    EXPECT_EQ(countMessages(3000, "commandIic failed\n"), 1u);
}

TEST_F(Diagnostics, HdmiAsksTheSwitchForSignalInfoAndTheFactoryManagerForTheRest) {
    start();
    for (unsigned int flags : {0u, 1u, 2u, 3u}) {
        setState("HdmiSwitch.signalFlags", flags);
        service().controlHdmi(m_ids, transport(2), "x getSignalInfo");
    }
    setAnswer("HdmiSwitch.getSignalInfo", -1);
    service().controlHdmi(m_ids, transport(2), "getSignalInfo");
    setAnswer("FactoryManager.controlHdmi", 0, json::array({"no port"}));
    service().controlHdmi(m_ids, transport(2), "switch 2");
    EXPECT_EQ(
        texts("controlHdmiResult"),
        (std::vector<std::string>{"ok ()", "ok (HDMISWITCH_SYNC_OK )", "ok (HDMISWITCH_CLOCK_OK )",
                                  "ok (HDMISWITCH_SYNC_OK HDMISWITCH_CLOCK_OK )",
                                  "getSignalInfo failed", "no port"}));
    EXPECT_EQ(callArgs("FactoryManager", "controlHdmi"),
              std::vector<json>{json::array({"switch 2"})});
    EXPECT_EQ(countMessages(3000, "controlHdmi failed.\n"), 1u);
}

TEST_F(Diagnostics, ShellRepliesOkUnlessTheCommandCouldNotRun) {
    start();
    const std::string withNul("echo a\0b", 8);
    service().executeZoshell(m_ids, transport(2), withNul);
    setAnswer("zoshell.zoshellExecuteCmd", 5);
    service().executeZoshell(m_ids, transport(2), "false");
    setAnswer("zoshell.zoshellExecuteCmd", -2);
    service().executeZoshell(m_ids, transport(2), "nosuch");
    EXPECT_EQ(texts("executeZoshellResult"),
              (std::vector<std::string>{"ok", "ok", "err: could not execute"}));
    const std::vector<json> args = callArgs("zoshell", "zoshellExecuteCmd");
    ASSERT_EQ(args.size(), 3u);
    EXPECT_EQ(args[0], json::array({{{"hex", "6563686f20610062"}}, 8, 2, 0}));
    EXPECT_EQ(countMessages(3000, "Function returned: -2.\n"), 1u);
}

TEST_F(Diagnostics, MissingObjectsGiveFailureTexts) {
    setAbsent("FactoryManager");
    setAbsent("HdmiSwitch");
    start();
    service().setGpio(m_ids, transport(2), "set 1 1");
    service().getGpio(m_ids, transport(2), "get 1");
    service().controlIic(m_ids, transport(2), "iic read");
    service().controlHdmi(m_ids, transport(2), "switch 2");
    service().controlHdmi(m_ids, transport(2), "getSignalInfo");
    EXPECT_EQ(texts("setGpioResult"), std::vector<std::string>{"err: could not execute"});
    EXPECT_EQ(texts("getGpioResult"), std::vector<std::string>{"err: could not execute"});
    EXPECT_EQ(texts("controlIicResult"), std::vector<std::string>{"err: could not execute"});
    EXPECT_EQ(texts("controlHdmiResult"),
              (std::vector<std::string>{"command unknown", "getSignalInfo failed"}));
    EXPECT_EQ(countMessages(1000, "Cannot get factory manager object\n"), 4u);
    EXPECT_EQ(countMessages(1000, "Cannot get hdmi switch object\n"), 1u);
}

}  // namespace
}  // namespace sysctrltest
