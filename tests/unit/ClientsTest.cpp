// Client registration and the delivery of results to every registered client.
#include "ServiceTest.h"

#include <boost/weak_ptr.hpp>

namespace sysctrltest {
namespace {

using sim::RecordingClient;
typedef boost::shared_ptr<RecordingClient> ClientPtr;

class Clients : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        startService();
    }

    // An operating-time event: the service pushes one report to every client.
    void pushReport() {
        std::vector<sim::SimSet::Delivery> deliveries;
        std::string error;
        ASSERT_TRUE(sim().fireEvent("operationHours", 1, 1, deliveries, error)) << error;
    }

    static size_t reports(const ClientPtr& client) {
        return client->received("requestOptimeInfoResult").size();
    }
};

TEST_F(Clients, SameObjectTwiceIsRefusedEvenThroughAnotherHandle) {
    ClientPtr client(new RecordingClient("A"));
    const sysctrlservice::ClientInterfacePtr first(client);
    const sysctrlservice::ClientInterfacePtr second(client);

    EXPECT_EQ(service().addClient(first), 0);
    EXPECT_EQ(service().addClient(second), -17);
    EXPECT_EQ(messages().back(),
              std::make_pair(uint16_t{3000}, std::string("Client already exists.\n")));

    pushReport();
    EXPECT_EQ(reports(client), 1u);
}

TEST_F(Clients, RemovingAnUnknownClientIsEnoentAndSilent) {
    ClientPtr stranger(new RecordingClient("X"));
    clearLogs();
    EXPECT_EQ(service().removeClient(stranger), -2);

    addClient("A");
    EXPECT_EQ(service().removeClient(stranger), -2);
    EXPECT_EQ(service().removeClient(sysctrlservice::ClientInterfacePtr()), -2);
    EXPECT_TRUE(logs().empty());
}

TEST_F(Clients, EmptyHandleIsRefused) {
    EXPECT_EQ(service().addClient(sysctrlservice::ClientInterfacePtr()), -22);
    pushReport();  // must not reach an empty handle
}

TEST_F(Clients, DeliveryFollowsRegistrationOrderAfterRemoval) {
    std::vector<std::string> order;
    const ClientPtr a = addClient("A");
    const ClientPtr b = addClient("B");
    const ClientPtr c = addClient("C");
    for (const ClientPtr& client : {a, b, c}) {
        const std::string name = client->name();
        client->setReaction(
            [&order, name](const RecordingClient::Received&) { order.push_back(name); });
    }
    EXPECT_EQ(service().removeClient(b), 0);
    EXPECT_EQ(service().addClient(b), 0);

    pushReport();
    EXPECT_EQ(order, (std::vector<std::string>{"A", "C", "B"}));
}

TEST_F(Clients, DeliveryGoesToTheListAsItWasWhenDeliveryBegan) {
    const ClientPtr a = addClient("A");
    ClientPtr b = addClient("B");
    const boost::weak_ptr<RecordingClient> weakB = b;
    const ClientPtr late(new RecordingClient("late"));
    // A removes B and adds a newcomer while the report is being delivered; the lock is not held
    // during callbacks, so neither call blocks.
    a->setReaction([this, weakB, late](const RecordingClient::Received&) {
        const ClientPtr victim = weakB.lock();
        ASSERT_TRUE(victim);
        EXPECT_EQ(service().removeClient(victim), 0);
        EXPECT_EQ(service().addClient(late), 0);
    });
    b->setReaction([weakB](const RecordingClient::Received&) {
        // Still alive: the delivery holds its own handle.
        EXPECT_FALSE(weakB.expired());
    });
    b.reset();

    pushReport();
    EXPECT_TRUE(weakB.expired());  // the delivery's copy was the last handle
    EXPECT_EQ(reports(late), 0u);

    a->setReaction(nullptr);
    pushReport();
    EXPECT_EQ(reports(a), 2u);
    EXPECT_EQ(reports(late), 1u);
}

}  // namespace
}  // namespace sysctrltest
