// The interface's description: rows in the interface's own order, adapters that hand each member
// to its row with its values, and adapters that stay abstract while a member has no row.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "ServiceDescription.h"

namespace {

using namespace sysctrlservice;

// An interface that has grown a member the rows do not name.
struct WidenedService : ServiceInterface {
    virtual int extraOperation(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                               int value) = 0;
};
struct WidenedClient : ClientInterface {
    virtual void extraResult(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                             int value) = 0;
};
static_assert(
    std::is_abstract_v<description::ServiceAdapterOver<WidenedService, description::AnyHandler>>,
    "an operation without a row leaves the adapter abstract, so it cannot be built");
static_assert(
    std::is_abstract_v<description::ClientAdapterOver<WidenedClient, description::AnyHandler>>,
    "a callback without a row leaves the adapter abstract, so it cannot be built");

// The members a header declares, in its order.
std::vector<std::string> declared(const char* header, const char* result) {
    std::ifstream file(std::string(SYSCTRL_INTERFACE_DIR) + "/" + header);
    const std::string text((std::istreambuf_iterator<char>(file)),
                           std::istreambuf_iterator<char>());
    const std::regex member(std::string("virtual ") + result + " (\\w+)\\(");
    std::vector<std::string> names;
    for (auto it = std::sregex_iterator(text.begin(), text.end(), member);
         it != std::sregex_iterator(); ++it) {
        names.push_back((*it)[1]);
    }
    return names;
}

TEST(ServiceDescription, RowsFollowTheInterfacesOrder) {
    std::vector<std::string> operations = declared("ServiceInterface.h", "int");
    ASSERT_GT(operations.size(), 2u);
    // The two that take only the client are no rows.
    EXPECT_EQ(std::vector<std::string>(operations.end() - 2, operations.end()),
              (std::vector<std::string>{"addClient", "removeClient"}));
    operations.resize(operations.size() - 2);
    std::vector<std::string> rows;
    for (const OperationInfo& operation : operationInfos()) {
        rows.push_back(operation.name);
        EXPECT_EQ(&operationInfo(operation.id), &operation);
    }
    EXPECT_EQ(rows, operations);

    std::vector<std::string> callbacks;
    for (const CallbackInfo& callback : callbackInfos()) {
        callbacks.push_back(callback.name);
        EXPECT_EQ(callbackInfo(callback.id), &callback);
    }
    EXPECT_EQ(callbacks, declared("ClientInterface.h", "void"));
}

// One value per parameter type, and how a sink shows it.
template <typename T>
T sample(size_t index) {
    if constexpr (std::is_same_v<T, std::string>) {
        return "text" + std::to_string(index);
    } else if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
        return static_cast<T>(40 + index);
    } else {
        return T();
    }
}
template <typename T>
std::string shown(const T& value) {
    if constexpr (std::is_same_v<T, std::string>) {
        return value;
    } else if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
        return std::to_string(static_cast<long>(value));
    } else {
        return "value";
    }
}

struct Delivery {
    const void* info = nullptr;
    std::vector<std::string> values;
    int32_t msgId = 0;
};

struct Recorder {
    std::vector<Delivery> deliveries;

    template <typename... Values>
    void onCallback(const CallbackInfo& callback, frame::MsgIds& msgIds,
                    const frame::TransportInfo&, const Values&... values) {
        deliveries.push_back({&callback, {shown(values)...}, msgIds.word[0]});
    }
    template <typename Member, typename... Values>
    int onCall(const OperationInfo& operation, Member, frame::MsgIds& msgIds,
               const frame::TransportInfo&, const Values&... values) {
        deliveries.push_back({&operation, {shown(values)...}, msgIds.word[0]});
        return 100 + static_cast<int>(operation.id);
    }
    int addClient(ClientInterfacePtr) { return -17; }
    int removeClient(ClientInterfacePtr) { return -2; }
};

template <typename... Values, size_t... Index>
std::tuple<Values...> samples(std::index_sequence<Index...>) {
    return std::tuple<Values...>{sample<Values>(Index)...};
}

// Calls member on target with sample values; returns what they show as.
template <typename Target, typename Member, typename... Values>
std::vector<std::string> callWithSamples(Target& target, Member member, int32_t msgId,
                                         const std::tuple<Values...>*) {
    frame::MsgIds msgIds{{msgId, 0}};
    const frame::TransportInfo transport{};
    const std::tuple<Values...> values = samples<Values...>(std::index_sequence_for<Values...>());
    std::apply([&](const auto&... value) { (target.*member)(msgIds, transport, value...); },
               values);
    return std::apply(
        [](const auto&... value) { return std::vector<std::string>{shown(value)...}; }, values);
}

TEST(ClientAdapter, HandsEveryCallbackToItsRowWithItsValues) {
    Recorder recorder;
    ClientAdapter<Recorder> adapter(recorder);
    ClientInterface& client = adapter;
    int32_t msgId = 0;
    forEachCallback([&](const CallbackInfo& callback, auto member) {
        using Values = typename description::Parameters<typename decltype(member)::type>::Tuple;
        const std::vector<std::string> sent =
            callWithSamples(client, member.value, ++msgId, static_cast<const Values*>(nullptr));
        ASSERT_EQ(recorder.deliveries.size(), static_cast<size_t>(msgId)) << callback.name;
        const Delivery& got = recorder.deliveries.back();
        EXPECT_EQ(got.info, &callback) << callback.name;
        EXPECT_EQ(got.values, sent) << callback.name;
        EXPECT_EQ(got.msgId, msgId) << callback.name;
        EXPECT_EQ(callback.arguments.size(), sent.size()) << callback.name;
    });
    EXPECT_EQ(recorder.deliveries.size(), static_cast<size_t>(CallbackId::count));
}

TEST(ServiceAdapter, HandsEveryOperationToItsRowAndReturnsItsStatus) {
    Recorder recorder;
    ServiceAdapter<Recorder> adapter(recorder);
    ServiceInterface& service = adapter;
    int32_t msgId = 0;
    forEachOperation([&](const OperationInfo& operation, auto member) {
        using Values = typename description::Parameters<typename decltype(member)::type>::Tuple;
        const std::vector<std::string> sent =
            callWithSamples(service, member.value, ++msgId, static_cast<const Values*>(nullptr));
        ASSERT_EQ(recorder.deliveries.size(), static_cast<size_t>(msgId)) << operation.name;
        const Delivery& got = recorder.deliveries.back();
        EXPECT_EQ(got.info, &operation) << operation.name;
        EXPECT_EQ(got.values, sent) << operation.name;
        EXPECT_EQ(got.msgId, msgId) << operation.name;
    });
    EXPECT_EQ(recorder.deliveries.size(), static_cast<size_t>(OperationId::count));
    EXPECT_EQ(service.addClient(ClientInterfacePtr()), -17);
    EXPECT_EQ(service.removeClient(ClientInterfacePtr()), -2);
}

// The handler gets the member that was called: handing it on reaches the same row again.
struct Forwarder {
    ServiceInterface* next;
    template <typename Member, typename... Values>
    int onCall(const OperationInfo&, Member member, frame::MsgIds& msgIds,
               const frame::TransportInfo& transport, const Values&... values) {
        return (next->*member)(msgIds, transport, values...);
    }
    int addClient(ClientInterfacePtr client) { return next->addClient(client); }
    int removeClient(ClientInterfacePtr client) { return next->removeClient(client); }
};

TEST(ServiceAdapter, HandsOnTheMemberThatWasCalled) {
    Recorder recorder;
    ServiceAdapter<Recorder> inner(recorder);
    Forwarder forwarder{&inner};
    ServiceAdapter<Forwarder> outer(forwarder);
    frame::MsgIds msgIds{{1, 0}};
    const frame::TransportInfo transport{};
    EXPECT_EQ(outer.readEarom(msgIds, transport, 3, 4),
              100 + static_cast<int>(OperationId::readEarom));
    EXPECT_EQ(outer.controlOpc(msgIds, transport, "getOpcState"),
              100 + static_cast<int>(OperationId::controlOpc));
    ASSERT_EQ(recorder.deliveries.size(), 2u);
    EXPECT_EQ(recorder.deliveries[0].info, &operationInfo(OperationId::readEarom));
    EXPECT_EQ(recorder.deliveries[0].values, (std::vector<std::string>{"3", "4"}));
    EXPECT_EQ(recorder.deliveries[1].values, (std::vector<std::string>{"getOpcState"}));
}

}  // namespace
