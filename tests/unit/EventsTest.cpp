// Platform events: the observers and the application's notify.
#include "ServiceTest.h"

#include <type_traits>

#include "PortObserver.h"

namespace sysctrltest {
namespace {

using sim::json;

class Events : public StartedServiceTest {
  protected:
    std::vector<sim::SimSet::Delivery> fire(const std::string& subject, int eventClass, int id) {
        std::vector<sim::SimSet::Delivery> deliveries;
        std::string error;
        EXPECT_TRUE(sim().fireEvent(subject, eventClass, id, deliveries, error)) << error;
        return deliveries;
    }
};

TEST_F(Events, OperatingTimeEventPushesOneSnapshotToEveryClientUnsolicited) {
    const auto a = addClient("A");
    const auto b = addClient("B");
    setState("OperationHours.times", json::array({1, 2, 3, 4, 0xFFFFFFFFu}));
    setState("OperationHours.text", "all of it");

    const auto deliveries = fire("operationHours", 1, 0x1);
    ASSERT_EQ(deliveries.size(), 1u);
    EXPECT_EQ(deliveries[0].observer, "OptimeObserver");
    EXPECT_EQ(deliveries[0].status, 0);

    const json snapshot = {{"times", {1, 2, 3, 4, 4294967295u}}, {"text", "all of it"}};
    for (const auto& client : {a, b}) {
        const auto received = client->received();
        ASSERT_EQ(received.size(), 1u);
        EXPECT_EQ(received[0].callback, "requestOptimeInfoResult");
        EXPECT_EQ(received[0].args[0], snapshot);
        EXPECT_EQ(received[0].msgIds, (std::vector<int32_t>{-1, -1}));
        EXPECT_EQ(received[0].transport, (std::vector<int32_t>{-1, -1, 0, -1, -1, -1, -1}));
    }
    EXPECT_EQ(messages().front(),
              std::make_pair(uint16_t{4000}, std::string("Called, eventId:0x1\n")));
}

TEST_F(Events, OperatingTimeIsReadInOrderEvenWithoutClients) {
    fire("operationHours", 1, 0x3);

    std::vector<json> reads;
    for (const sim::PortCall& call : sim().calls("OperationHours")) {
        reads.push_back(json::array({call.operation, call.args}));
    }
    EXPECT_EQ(reads, (std::vector<json>{{"getOperationTime", {0}},
                                        {"getOperationTime", {1}},
                                        {"getOperationTime", {2}},
                                        {"getOperationTime", {3}},
                                        {"getOperationTime", {4}},
                                        {"getOperationTimeText", json::array()}}));
}

struct Ignored {
    const char* name;
    const char* subject;
    int eventClass;
    int eventId;
    int status;
};

void PrintTo(const Ignored& c, std::ostream* os) {
    *os << c.name;
}

class EventsIgnored : public Events, public ::testing::WithParamInterface<Ignored> {};

TEST_P(EventsIgnored, AnswerWithoutReadingOrPushing) {
    const auto client = addClient("A");
    const Ignored& c = GetParam();

    for (const auto& delivery : fire(c.subject, c.eventClass, c.eventId)) {
        EXPECT_EQ(delivery.status, c.status) << delivery.observer;
    }
    EXPECT_TRUE(client->received().empty());
    EXPECT_TRUE(sim().calls("OperationHours").empty());
    EXPECT_TRUE(sim().calls("OledPanel").empty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, EventsIgnored,
    ::testing::Values(Ignored{"TimeWithoutBitOne", "operationHours", 1, 0x2, -1},
                      Ignored{"OtherClass", "operationHours", 7, 0x1, -1},
                      Ignored{"ClassOutsideTheEnumeration", "operationHours", 50, 0x1, -1},
                      Ignored{"TimeWithoutSubject", "none", 1, 0x1, -22},
                      Ignored{"TimeFromOtherType", "other", 1, 0x1, -22},
                      Ignored{"PanelWithoutSubject", "none", 25, 0x300, -22},
                      Ignored{"PanelFromOtherType", "other", 25, 0x200, -22}),
    [](const ::testing::TestParamInfo<Ignored>& info) { return info.param.name; });

TEST_F(Events, PanelErrorBitReadsTheErrorStatus) {
    fire("oledPanel", 25, 0x200);
    EXPECT_EQ(sim().calls("OledPanel", "getErrorStatus").size(), 1u);

    sim().clearJournal();
    const auto deliveries = fire("oledPanel", 25, 0x0);
    ASSERT_EQ(deliveries.size(), 1u);
    EXPECT_EQ(deliveries[0].status, 0);
    EXPECT_TRUE(sim().calls("OledPanel", "getErrorStatus").empty());
}

TEST(PortObserverAlone, WithoutApplicationIgnoresEvents) {
    sysctrlservice::PortObserver observer("Lonely", nullptr);
    EXPECT_EQ(observer.getClassName(), "Lonely");
    EXPECT_EQ(observer.onEvent(zo::port::EVENT_CLASS_OPERATION_HOURS,
                               boost::shared_ptr<zo::port::EventSubject>(), 1),
              0);
}

// Enumerations that carry numbers from outside (event classes from the event manager, record
// types from the records file) hold any 32-bit value: their underlying type is fixed.
TEST(EventClasses, AndRecordTypesHoldAnyThirtyTwoBitNumber) {
    EXPECT_TRUE((std::is_same<std::underlying_type_t<zo::port::eventClass_enum>, int32_t>::value));
    EXPECT_TRUE((std::is_same<std::underlying_type_t<sysctrlservice::PMRType>, int32_t>::value));
}

}  // namespace
}  // namespace sysctrltest
