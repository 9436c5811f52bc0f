// The simulated set itself: scripting, state, presence and the journal.
#include <gtest/gtest.h>

#include "RecordingClient.h"
#include "sim/SimSet.h"
#include "zo/host/Host.h"
#include "zo/port/Factory.h"
#include "zo/port/OledPanel.h"
#include "zo/port/Opc.h"
#include "zo/port/Pier.h"
#include "zo/port/Uart.h"

namespace {

using sim::json;

class SimulatedSet : public ::testing::Test {
  protected:
    zo::port::Pier& pier() {
        void* found = zo::host::lookupInterface(zo::port::kPierInterfaceName);
        EXPECT_NE(found, nullptr);
        return *static_cast<zo::port::Pier*>(found);
    }
    boost::shared_ptr<zo::port::Factory> factory() { return pier().getFactory(); }

    sim::SimSet m_set;
};

struct BadScript {
    const char* target;
    json result;
    json outputs;
    const char* error;
};

TEST_F(SimulatedSet, RefusesScriptsThatDoNotFitTheOperation) {
    const BadScript cases[] = {
        {"Opc", 0, json::array(), "expected Object.name"},
        {"Nowhere.start", 0, json::array(), "no simulated object Nowhere"},
        {"Opc.launch", 0, json::array(), "Opc has no operation launch"},
        {"Opc.start", "zero", json::array(), "expected int"},
        {"Opc.start", 0, json::array({1}), "fills in 0 value(s), not 1"},
        {"FarField.getTriggerDuration", 0, json::array({-1.5}), "output 1"},
        {"OledPanel.getVersion", 0, json::array({"0g"}), "expected hex bytes"},
        {"Antenna.getSatelliteParams", 0, json::array({{{"satCable", 1}}}), "no field satCable"},
        {"Factory.getOpc", nullptr, json::array(), "use absent and present"},
    };
    for (const BadScript& c : cases) {
        std::string error;
        EXPECT_FALSE(m_set.setAnswer(c.target, c.result, c.outputs, error)) << c.target;
        EXPECT_NE(error.find(c.error), std::string::npos) << c.target << ": " << error;
    }
}

TEST_F(SimulatedSet, ScriptedAnswersOverrideUntilUnsetWithoutChangingState) {
    const boost::shared_ptr<zo::port::Opc> opc = factory()->getOpc();
    std::string error;
    ASSERT_TRUE(m_set.setAnswer("Opc.start", 7, json::array(), error)) << error;
    EXPECT_EQ(opc->start(3), 7);
    EXPECT_EQ(m_set.getState("Opc.running"), false);  // a failed start changes nothing

    ASSERT_TRUE(m_set.clearAnswer("Opc.start", error)) << error;
    EXPECT_EQ(opc->start(3), 0);
    EXPECT_EQ(m_set.getState("Opc.running"), true);
    EXPECT_EQ(m_set.getState("Opc.mode"), 3);

    const std::vector<sim::PortCall> starts = m_set.calls("Opc", "start");
    ASSERT_EQ(starts.size(), 2u);
    EXPECT_EQ(starts[0].args, json::array({3}));
    EXPECT_EQ(starts[0].result, 7);
    EXPECT_EQ(starts[1].result, 0);
}

TEST_F(SimulatedSet, UartHandsOutQueuedBytesUpToItsCapacity) {
    const boost::shared_ptr<zo::port::Uart> uart = factory()->getUart();
    std::string error;
    ASSERT_TRUE(m_set.setState("Uart.rxData", "0102030405", error)) << error;
    uint8_t buffer[3] = {0, 0, 0};
    EXPECT_EQ(uart->read(buffer, 3, 1), 3);
    EXPECT_EQ(buffer[2], 3);
    EXPECT_EQ(uart->read(buffer, 3, 1), 2);
    EXPECT_EQ(uart->read(buffer, 3, 1), 0);

    const uint8_t sent[] = {0xFF, 0x00};
    EXPECT_EQ(uart->write(sent, 2, 1), 2);
    EXPECT_EQ(m_set.getState("Uart.txData"), "ff00");
}

TEST_F(SimulatedSet, AbsentObjectsAreNotHandedOut) {
    std::string error;
    ASSERT_TRUE(m_set.setPresent("Opc", false, error)) << error;
    EXPECT_FALSE(factory()->getOpc());
    EXPECT_EQ(m_set.calls("Factory", "getOpc").back().result, nullptr);
    ASSERT_TRUE(m_set.setPresent("Opc", true, error)) << error;
    EXPECT_TRUE(factory()->getOpc());

    EXPECT_FALSE(m_set.setPresent("clock", false, error));
    ASSERT_TRUE(m_set.setPresent("Pier", false, error)) << error;
    EXPECT_EQ(zo::host::lookupInterface(zo::port::kPierInterfaceName), nullptr);
    ASSERT_TRUE(m_set.setPresent("Pier", true, error)) << error;
    EXPECT_NE(zo::host::lookupInterface(zo::port::kPierInterfaceName), nullptr);
}

TEST_F(SimulatedSet, ListenerSeesEveryCallInOrder) {
    std::vector<std::string> seen;
    m_set.setListener([&seen](const json& event) {
        seen.push_back(event["object"].get<std::string>() + "." +
                       event["operation"].get<std::string>());
    });
    factory()->getOpc()->getState();
    m_set.setListener(nullptr);
    EXPECT_EQ(seen,
              (std::vector<std::string>{"Pier.getFactory", "Factory.getOpc", "Opc.getState"}));
}

TEST_F(SimulatedSet, JournalKeepsTheLastCallsUpToItsLimit) {
    const boost::shared_ptr<zo::port::Uart> uart = factory()->getUart();
    m_set.clearJournal();
    const int limit = static_cast<int>(sim::SimSet::kDefaultJournalLimit);
    EXPECT_EQ(m_set.journalLimit(), sim::SimSet::kDefaultJournalLimit);
    for (int which = 0; which < limit + 5; ++which) {
        uart->getMode(which);
    }
    std::vector<sim::PortCall> kept = m_set.journal();
    ASSERT_EQ(kept.size(), sim::SimSet::kDefaultJournalLimit);
    EXPECT_EQ(kept.front().args, json::array({5})) << "the five oldest are dropped";
    EXPECT_EQ(kept.back().args, json::array({limit + 4}));
    EXPECT_EQ(m_set.calls("Uart", "getMode").size(), sim::SimSet::kDefaultJournalLimit);

    // A lower limit drops the oldest at once; calls() answers from what is left.
    m_set.setJournalLimit(3);
    uart->setMode(0, 1);
    kept = m_set.journal();
    ASSERT_EQ(kept.size(), 3u);
    EXPECT_EQ(kept[0].args, json::array({limit + 3}));
    EXPECT_EQ(kept[1].args, json::array({limit + 4}));
    EXPECT_EQ(kept[2].operation, "setMode");
    EXPECT_EQ(m_set.calls("Uart", "getMode").size(), 2u);

    // None kept: the listener still sees every call.
    m_set.setJournalLimit(0);
    int heard = 0;
    m_set.setListener([&heard](const json&) { ++heard; });
    uart->getMode(1);
    uart->setMode(0, 1);
    m_set.setListener(nullptr);
    EXPECT_TRUE(m_set.journal().empty());
    EXPECT_EQ(heard, 2);
}

TEST_F(SimulatedSet, DeviceLogsKeepTheirLatestEntries) {
    const boost::shared_ptr<zo::port::Uart> uart = factory()->getUart();
    const std::vector<uint8_t> filler(64 * 1024, 0xAA);
    EXPECT_EQ(uart->write(filler.data(), static_cast<int>(filler.size()), 1), 64 * 1024);
    const uint8_t last[] = {1, 2, 3};
    EXPECT_EQ(uart->write(last, 3, 1), 3);
    const std::string sent = m_set.getState("Uart.txData").get<std::string>();
    EXPECT_EQ(sent.size(), 2u * 64 * 1024) << "the last 64 KiB are kept";
    EXPECT_EQ(sent.substr(sent.size() - 8), "aa010203");

    const boost::shared_ptr<zo::port::OledPanel> panel = factory()->getOledPanel();
    for (int code = 0; code < 1005; ++code) {
        ASSERT_EQ(panel->markPanelEvent(code), 0);
    }
    const json events = m_set.getState("OledPanel.panelEvents");
    ASSERT_EQ(events.size(), 1000u) << "the last 1000 are kept";
    EXPECT_EQ(events.front(), 5);
    EXPECT_EQ(events.back(), 1004);
}

TEST(RecordingClientKeeps, TheLastCallbacksAndReportsEveryOne) {
    sim::SimSet set;
    std::vector<std::string> reported;
    set.setListener([&reported](const json& event) { reported.push_back(event["args"][0]); });
    sim::RecordingClient client("A", &set);
    EXPECT_EQ(client.keepLimit(), sim::RecordingClient::kDefaultKeepLimit);
    client.setKeepLimit(2);
    frame::MsgIds ids{{1, 0}};
    const frame::TransportInfo transport{{1, 0, 0, 0, 0, 0, 0}};
    for (const char* text : {"one", "two", "three"}) {
        client.getChipIDResult(ids, transport, text);
    }
    std::vector<sim::RecordingClient::Received> kept = client.received();
    ASSERT_EQ(kept.size(), 2u);
    EXPECT_EQ(kept[0].args, json::array({"two"}));
    EXPECT_EQ(kept[1].args, json::array({"three"}));
    EXPECT_EQ(client.received("getChipIDResult").size(), 2u);

    client.setKeepLimit(0);
    EXPECT_TRUE(client.received().empty()) << "a lower limit drops the oldest at once";
    client.getChipIDResult(ids, transport, "four");
    EXPECT_TRUE(client.received().empty());
    set.setListener(nullptr);
    EXPECT_EQ(reported, (std::vector<std::string>{"one", "two", "three", "four"}));
}

}  // namespace
