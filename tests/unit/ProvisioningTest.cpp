// Secure fuses, credentials, EAROM, chip identity and message signing.
#include <functional>

#include "ServiceTest.h"

namespace sysctrltest {
namespace {

using sim::json;
using sysctrlservice::fuseitemcontent1_t;
using sysctrlservice::ServiceInterface;
typedef std::pair<uint16_t, std::string> Message;
typedef boost::shared_ptr<sim::RecordingClient> ClientPtr;

const Message kCalled{4000, "Called.\n"};
const Message kNoManager{1000, "Factorymanager not available.\n"};

class Provisioning : public ServiceTest {
  protected:
    // Objects taken at setup must be made absent before it; so the service starts in each test.
    void start() {
        startService();
        sim().clearJournal();
        clearLogs();
    }

    // Every client received exactly one answer: this callback, with the k-th request's
    // identifiers; returns its arguments.
    json answerOf(const std::vector<ClientPtr>& clients, const std::string& callback, int k) {
        json args;
        for (const ClientPtr& client : clients) {
            const auto received = client->received();
            EXPECT_EQ(received.size(), 1u) << client->name();
            if (received.size() != 1) {
                return json();
            }
            EXPECT_EQ(received[0].callback, callback);
            EXPECT_EQ(received[0].msgIds, (std::vector<int32_t>{k, 0}));
            EXPECT_EQ(received[0].transport, (std::vector<int32_t>{k, 0, 0, 0, 0, 0, 0}));
            if (client != clients.front()) {
                EXPECT_EQ(received[0].args, args) << client->name();
            }
            args = received[0].args;
        }
        return args;
    }

    int burn(const std::vector<fuseitemcontent1_t>& items, int k = 1) {
        frame::MsgIds ids = msgIds(k);
        return service().burnFuses(ids, transport(k), items);
    }
    int fuseInfo(unsigned int selector, int k = 1) {
        frame::MsgIds ids = msgIds(k);
        return service().requestFuseInfo(ids, transport(k), selector);
    }
    int reinit(int mode) {
        frame::MsgIds ids = msgIds(1);
        return service().reinitCredentials(ids, transport(1), mode);
    }
    int signature(const std::string& message, unsigned int reserved, unsigned int length,
                  int k = 1) {
        frame::MsgIds ids = msgIds(k);
        return service().getYTSignature(ids, transport(k), message, reserved, length);
    }

    static json fuse(const std::string& name, const std::string& value) {
        return json{{"name", name}, {"value", value}};
    }
};

// Fuses

TEST_F(Provisioning, BurnPassesTheItemsInOrderAndReportsZeroToEveryClient) {
    start();
    const auto a = addClient("A");
    const auto b = addClient("B");

    EXPECT_EQ(burn({{"SECURE_BOOT", "1"}, {"JTAG", "disabled now"}, {"", ""}}, 4), 0);

    const auto burns = sim().calls("FactoryManager", "burnSecureFuses");
    ASSERT_EQ(burns.size(), 1u);
    EXPECT_EQ(burns[0].args, json({json::array({fuse("SECURE_BOOT", "1"),
                                                fuse("JTAG", "disabled now"), fuse("", "")})}));
    EXPECT_EQ(answerOf({a, b}, "burnFusesResult", 4), json({0}));
    EXPECT_EQ(messages(), std::vector<Message>{kCalled});
}

TEST_F(Provisioning, BurningAnEmptyListStillAsksThePlatform) {
    start();
    const auto a = addClient("A");
    setAnswer("FactoryManager.burnSecureFuses", false);

    EXPECT_EQ(burn({}), 0);
    const auto burns = sim().calls("FactoryManager", "burnSecureFuses");
    ASSERT_EQ(burns.size(), 1u);
    EXPECT_EQ(burns[0].args, json({json::array()}));
    EXPECT_EQ(answerOf({a}, "burnFusesResult", 1), json({-5}));
    EXPECT_EQ(messages(), (std::vector<Message>{kCalled, {1000, "Error while burning fuses.\n"}}));
}

TEST_F(Provisioning, WithoutFactoryManagerBurnIsRefusedAndTheReportHasOnlyTheTwoItems) {
    setAbsent("FactoryManager");
    start();
    const auto a = addClient("A");

    EXPECT_EQ(burn({{"A", "1"}}, 1), 0);
    EXPECT_EQ(answerOf({a}, "burnFusesResult", 1), json({-111}));
    EXPECT_EQ(messages(), (std::vector<Message>{kCalled, kNoManager}));

    a->clear();
    clearLogs();
    EXPECT_EQ(fuseInfo(0, 2), 0);
    EXPECT_EQ(answerOf({a}, "requestFuseInfoResult", 2),
              json({{fuse("CredentialsInstalled", "PRODUCTION"), fuse("VodEnabled", "YES")}}));
    EXPECT_EQ(messages(), (std::vector<Message>{kCalled, kNoManager}));
}

TEST_F(Provisioning, FuseReportPassesTheSelectorAndEndsWithTheTwoAddedItems) {
    setState("FactoryManager.fuses", json::array({fuse("B", "2"), fuse("A", "1")}));
    start();
    const auto a = addClient("A");
    const auto b = addClient("B");

    EXPECT_EQ(fuseInfo(0xFFFFFFFFu, 3), 0);
    const auto reads = sim().calls("FactoryManager", "getSecureFuses");
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_EQ(reads[0].args, json({4294967295u}));
    EXPECT_EQ(answerOf({a, b}, "requestFuseInfoResult", 3),
              json({{fuse("B", "2"), fuse("A", "1"), fuse("CredentialsInstalled", "PRODUCTION"),
                     fuse("VodEnabled", "YES")}}));
    EXPECT_EQ(messages(), std::vector<Message>{kCalled});
}

TEST_F(Provisioning, AFailedFetchStillReportsWhatWasDelivered) {
    start();
    const auto a = addClient("A");
    setAnswer("FactoryManager.getSecureFuses", false, json::array({json::array({fuse("P", "q")})}));

    EXPECT_EQ(fuseInfo(1), 0);
    EXPECT_EQ(answerOf({a}, "requestFuseInfoResult", 1),
              json({{fuse("P", "q"), fuse("CredentialsInstalled", "PRODUCTION"),
                     fuse("VodEnabled", "YES")}}));
    EXPECT_EQ(messages(),
              (std::vector<Message>{kCalled, {1000, "Error while fetching fuse data.\n"}}));
}

// The two added items: credentials state and fuses -> "CredentialsInstalled"; VOD -> "VodEnabled".
struct Tail {
    const char* name;
    json credentialsState;  // null: no credentials-state object
    json vodEnabled;        // null: no video-on-demand object
    json fuses;
    std::string credentials;
    std::string vod;
};

void PrintTo(const Tail& c, std::ostream* os) {
    *os << c.name;
}

class ProvisioningTail : public Provisioning, public ::testing::WithParamInterface<Tail> {};

TEST_P(ProvisioningTail, AddedItemsFollowTheirRules) {
    const Tail& c = GetParam();
    if (c.credentialsState.is_null()) {
        setAbsent("CredentialsState");
    } else {
        setState("CredentialsState.state", c.credentialsState);
    }
    if (c.vodEnabled.is_null()) {
        setAbsent("VodState");
    } else {
        setState("VodState.enabled", c.vodEnabled);
    }
    setState("FactoryManager.fuses", c.fuses);
    start();
    const auto a = addClient("A");

    EXPECT_EQ(fuseInfo(0), 0);
    json expected = c.fuses;
    expected.push_back(fuse("CredentialsInstalled", c.credentials));
    expected.push_back(fuse("VodEnabled", c.vod));
    EXPECT_EQ(answerOf({a}, "requestFuseInfoResult", 1), json::array({expected}));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ProvisioningTail,
    ::testing::Values(Tail{"Production", 0, 1, json::array({json{{"name", "A"}, {"value", "1"}}}),
                           "PRODUCTION", "YES"},
                      Tail{"Test", 1, 0, json::array(), "TEST", "NO"},
                      Tail{"NoCredentials", -1, -5, json::array(), "NO", "YES"},
                      Tail{"NoObjects", nullptr, nullptr,
                           json::array({json{{"name", "A"}, {"value", "1"}}}), "NO", "NO"},
                      Tail{"OtherStateRepeatsTheLastFuseValue", 2, 1,
                           json::array({json{{"name", "A"}, {"value", "1"}},
                                        json{{"name", "B"}, {"value", "zz"}}}),
                           "zz", "YES"},
                      Tail{"OtherNegativeStateRepeatsToo", -7, 1,
                           json::array({json{{"name", "A"}, {"value", "on"}}}), "on", "YES"},
                      Tail{"OtherStateWithoutFusesIsEmpty", 2, 1, json::array(), "", "YES"}),
    [](const ::testing::TestParamInfo<Tail>& info) { return std::string(info.param.name); });

// Credentials

struct Reinit {
    const char* name;
    int mode;
    const char* operation;
    Message failure;
    int failureCode;
};

void PrintTo(const Reinit& c, std::ostream* os) {
    *os << c.name;
}

class ProvisioningReinit : public Provisioning, public ::testing::WithParamInterface<Reinit> {};

TEST_P(ProvisioningReinit, CallsTheOneOperationWithTheMode) {
    const Reinit& c = GetParam();
    start();
    const auto a = addClient("A");

    EXPECT_EQ(reinit(c.mode), 0);
    const auto calls = sim().calls("FactoryManager");
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].operation, c.operation);
    EXPECT_EQ(calls[0].args, json({c.mode}));
    EXPECT_EQ(answerOf({a}, "reinitCredentialsResult", 1), json({0}));
    EXPECT_EQ(messages(), std::vector<Message>{kCalled});
}

TEST_P(ProvisioningReinit, PlatformFailureHasItsOwnCode) {
    const Reinit& c = GetParam();
    start();
    const auto a = addClient("A");
    setAnswer(std::string("FactoryManager.") + c.operation, false);

    EXPECT_EQ(reinit(c.mode), 0);
    EXPECT_EQ(answerOf({a}, "reinitCredentialsResult", 1), json({c.failureCode}));
    EXPECT_EQ(messages(), (std::vector<Message>{kCalled, c.failure}));
}

TEST_P(ProvisioningReinit, WithoutFactoryManagerIsConnectionRefused) {
    setAbsent("FactoryManager");
    start();
    const auto a = addClient("A");

    EXPECT_EQ(reinit(GetParam().mode), 0);
    EXPECT_EQ(answerOf({a}, "reinitCredentialsResult", 1), json({-111}));
    EXPECT_EQ(messages(), (std::vector<Message>{kCalled, kNoManager}));
}

const Message kDeleteFailed{1000, "Error in delete of credentials.\n"};
const Message kRewriteFailed{1000, "Error in rewrite of credentials.\n"};

INSTANTIATE_TEST_SUITE_P(
    Cases, ProvisioningReinit,
    ::testing::Values(Reinit{"OneDeletes", 1, "deleteCredentials", kDeleteFailed, -13},
                      Reinit{"ZeroRewrites", 0, "rewriteCredentials", kRewriteFailed, -5},
                      Reinit{"TwoRewrites", 2, "rewriteCredentials", kRewriteFailed, -5},
                      Reinit{"MinusOneRewrites", -1, "rewriteCredentials", kRewriteFailed, -5}),
    [](const ::testing::TestParamInfo<Reinit>& info) { return std::string(info.param.name); });

// EAROM: one pattern, three operations.

struct Earom {
    const char* name;
    std::function<int(ServiceInterface&, frame::MsgIds&, const frame::TransportInfo&)> call;
    const char* operation;
    const char* callback;
    json args;         // as the manager receives them
    std::string text;  // what the manager fills in on success
};

void PrintTo(const Earom& c, std::ostream* os) {
    *os << c.name;
}

class ProvisioningEarom : public Provisioning, public ::testing::WithParamInterface<Earom> {
  protected:
    int run(int k) {
        frame::MsgIds ids = msgIds(k);
        return GetParam().call(service(), ids, transport(k));
    }
};

TEST_P(ProvisioningEarom, DeliversThePlatformsTextToEveryClient) {
    const Earom& c = GetParam();
    setState("FactoryManager.earom", "000102030405060708090a0b0c0d0e0f");
    start();
    const auto a = addClient("A");
    const auto b = addClient("B");

    EXPECT_EQ(run(5), 0);
    const auto calls = sim().calls("FactoryManager");
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].operation, c.operation);
    EXPECT_EQ(calls[0].args, c.args);
    EXPECT_EQ(answerOf({a, b}, c.callback, 5), json({c.text}));
    EXPECT_EQ(messages(), std::vector<Message>{kCalled});
}

TEST_P(ProvisioningEarom, FailureStillDeliversWhatThePlatformLeft) {
    const Earom& c = GetParam();
    start();
    const auto a = addClient("A");
    setAnswer(std::string("FactoryManager.") + c.operation, false, json::array({"partial"}));

    EXPECT_EQ(run(1), 0);
    EXPECT_EQ(answerOf({a}, c.callback, 1), json({"partial"}));
    EXPECT_EQ(messages(), (std::vector<Message>{kCalled, {1000, "failed.\n"}}));
}

TEST_P(ProvisioningEarom, FailureWithNothingFilledDeliversEmptyText) {
    const Earom& c = GetParam();
    start();
    const auto a = addClient("A");
    setAnswer(std::string("FactoryManager.") + c.operation, false, json::array({""}));

    EXPECT_EQ(run(1), 0);
    EXPECT_EQ(answerOf({a}, c.callback, 1), json({""}));
}

TEST_P(ProvisioningEarom, WithoutFactoryManagerAnswersAsAFailedCall) {
    setAbsent("FactoryManager");
    start();
    const auto a = addClient("A");

    EXPECT_EQ(run(1), 0);
    EXPECT_EQ(answerOf({a}, GetParam().callback, 1), json({""}));
    EXPECT_EQ(messages(), (std::vector<Message>{kCalled, {1000, "failed.\n"}}));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ProvisioningEarom,
    ::testing::Values(Earom{"Read",
                            [](ServiceInterface& s, frame::MsgIds& m,
                               const frame::TransportInfo& t) { return s.readEarom(m, t, 13, 3); },
                            "readEaromBlock",
                            "readEaromResult",
                            {13, 3},
                            "0d0e0f"},
                      Earom{
                          "Write",
                          [](ServiceInterface& s, frame::MsgIds& m, const frame::TransportInfo& t) {
                              return s.writeEarom(m, t, 2, "ff00");
                          },
                          "writeEaromBlock",
                          "writeEaromResult",
                          {2, "ff00"},
                          "2"},
                      Earom{"Size",
                            [](ServiceInterface& s, frame::MsgIds& m,
                               const frame::TransportInfo& t) { return s.getEaromSize(m, t); },
                            "queryEaromSize", "getEaromSizeResult", json::array(), "16"}),
    [](const ::testing::TestParamInfo<Earom>& info) { return std::string(info.param.name); });

// Chip identity

TEST_F(Provisioning, ChipIdGoesToEveryClient) {
    setState("HardwareInfo.chipId", "c0ffee");
    start();
    const auto a = addClient("A");
    const auto b = addClient("B");
    frame::MsgIds ids = msgIds(2);
    EXPECT_EQ(service().getChipID(ids, transport(2)), 0);
    EXPECT_EQ(answerOf({a, b}, "getChipIDResult", 2), json({"c0ffee"}));
    EXPECT_TRUE(logs().empty());
}

TEST_F(Provisioning, ChipIdFailureIsLoggedAndTheTextStillDelivered) {
    start();
    const auto a = addClient("A");
    setAnswer("HardwareInfo.getChipId", -9, json::array({"half"}));
    frame::MsgIds ids = msgIds(1);
    EXPECT_EQ(service().getChipID(ids, transport(1)), 0);
    EXPECT_EQ(answerOf({a}, "getChipIDResult", 1), json({"half"}));
    EXPECT_EQ(messages(), (std::vector<Message>{{1000, "ZAM get chip id failed , ret = -9.\n"}}));
}

TEST_F(Provisioning, ChipIdWithoutHardwareInfoIsEmptyAndSilent) {
    start();
    const auto a = addClient("A");
    setAbsent("HardwareInfo");
    frame::MsgIds ids = msgIds(1);
    EXPECT_EQ(service().getChipID(ids, transport(1)), 0);
    EXPECT_EQ(answerOf({a}, "getChipIDResult", 1), json({""}));
    EXPECT_TRUE(logs().empty());
}

// Signature

std::string bytesOf(const json& value) {
    std::string bytes;
    EXPECT_TRUE(sim::stringFromJson(value, bytes)) << value;
    return bytes;
}

TEST_F(Provisioning, SignatureIsTheRawBytesOfExactlyTheRequestedLength) {
    start();
    const auto a = addClient("A");
    const auto b = addClient("B");
    // The signer fills fewer bytes than asked: the rest of the buffer stays zero.
    setAnswer("Signer.signMessage", 0, json::array({"00ff0000ab"}));

    EXPECT_EQ(signature(std::string("a\0b", 3), 0, 8, 6), 0);
    const auto signs = sim().calls("Signer", "signMessage");
    ASSERT_EQ(signs.size(), 1u);
    EXPECT_EQ(signs[0].args[0], 0);  // the key
    EXPECT_EQ(signs[0].args[2], 3);  // the whole message, its zero byte included
    EXPECT_EQ(signs[0].args[3], 8);
    const json args = answerOf({a, b}, "getYTSignatureResult", 6);
    ASSERT_EQ(args.size(), 1u);
    EXPECT_EQ(bytesOf(args[0]), std::string("\x00\xff\x00\x00\xab\x00\x00\x00", 8));
    EXPECT_EQ(messages(),
              (std::vector<Message>{{4000, "ZAM get youtube signature value successfully\n"}}));
}

TEST_F(Provisioning, SignatureOfTheFullBufferIsAccepted) {
    start();
    const auto a = addClient("A");
    EXPECT_EQ(signature("hello", 0, 256), 0);
    ASSERT_EQ(sim().calls("Signer", "signMessage").size(), 1u);
    const json args = answerOf({a}, "getYTSignatureResult", 1);
    ASSERT_EQ(args.size(), 1u);
    EXPECT_EQ(bytesOf(args[0]).size(), 256u);
}

TEST_F(Provisioning, SignatureOfLengthZeroIsEmpty) {
    start();
    const auto a = addClient("A");
    EXPECT_EQ(signature("hello", 0, 0), 0);
    EXPECT_EQ(answerOf({a}, "getYTSignatureResult", 1), json({""}));
}

TEST_F(Provisioning, TheReservedNumberChangesNothing) {
    start();
    EXPECT_EQ(signature("hello", 0, 16), 0);
    EXPECT_EQ(signature("hello", 0xFFFFFFFFu, 16), 0);
    const auto signs = sim().calls("Signer", "signMessage");
    ASSERT_EQ(signs.size(), 2u);
    EXPECT_EQ(signs[0].args, signs[1].args);
    EXPECT_EQ(signs[0].outputs, signs[1].outputs);
}

struct Refused {
    const char* name;
    std::string message;
    unsigned int length;
    const char* absent;  // object made absent first, or null
    json signerResult;   // scripted result of signMessage, or null
    size_t signCalls;    // signMessage calls expected
    bool signerFetched;  // whether the signer was asked of the factory
    std::vector<Message> logged;
};

void PrintTo(const Refused& c, std::ostream* os) {
    *os << c.name;
}

class ProvisioningSignatureRefused : public Provisioning,
                                     public ::testing::WithParamInterface<Refused> {};

TEST_P(ProvisioningSignatureRefused, ReturnsMinusOneAndAnswersNobody) {
    const Refused& c = GetParam();
    start();
    const auto a = addClient("A");
    if (c.absent != nullptr) {
        setAbsent(c.absent);
    }
    if (!c.signerResult.is_null()) {
        setAnswer("Signer.signMessage", c.signerResult);
    }
    sim().clearJournal();

    EXPECT_EQ(signature(c.message, 0, c.length), -1);
    EXPECT_EQ(sim().calls("Signer", "signMessage").size(), c.signCalls);
    EXPECT_EQ(sim().calls("Factory", "getSigner").size(), c.signerFetched ? 1u : 0u);
    EXPECT_TRUE(a->received().empty());
    EXPECT_EQ(messages(), c.logged);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ProvisioningSignatureRefused,
    ::testing::Values(
        Refused{"LongerThanTheBuffer",
                "hello",
                257,
                nullptr,
                nullptr,
                0,
                true,
                {{1000,
                  "ZAM get youtube signature success , but signature size is too biger, expect < "
                  "256,actual len:257.\n"}}},
        Refused{"HugeLength",
                "hello",
                0x80000000u,
                nullptr,
                nullptr,
                0,
                true,
                {{1000,
                  "ZAM get youtube signature success , but signature size is too biger, expect < "
                  "256,actual len:-2147483648.\n"}}},
        Refused{"EmptyMessage",
                "",
                8,
                nullptr,
                nullptr,
                0,
                false,
                {{1000, "param message must not null, please check.\n"}}},
        Refused{"NoSigner", "hello", 8, "Signer", nullptr, 0, true, {}},
        Refused{"SignerFails",
                "hello",
                8,
                nullptr,
                5,
                1,
                true,
                {{1000, "ZAM get youtube signature failed , ret = 5.\n"}}}),
    [](const ::testing::TestParamInfo<Refused>& info) { return std::string(info.param.name); });

TEST_F(Provisioning, WithoutAFactoryEveryOperationStillAnswersAsItsFailurePathDoes) {
    setAbsent("Factory");
    start();
    const auto a = addClient("A");
    frame::MsgIds ids = msgIds(1);
    const frame::TransportInfo info = transport(1);

    EXPECT_EQ(signature("hello", 0, 8), -1);
    EXPECT_TRUE(a->received().empty());
    EXPECT_EQ(service().getChipID(ids, info), 0);
    EXPECT_EQ(burn({{"A", "1"}}), 0);
    EXPECT_EQ(fuseInfo(0), 0);
    EXPECT_EQ(reinit(1), 0);
    EXPECT_EQ(service().readEarom(ids, info, 0, 4), 0);
    EXPECT_EQ(service().restartSystem(ids, info), 0);
    EXPECT_EQ(service().setGpioStatus(ids, info, 1, 1), 0);
    EXPECT_EQ(service().startOledAs(ids, info), 0);
    EXPECT_EQ(service().saveOledManualGain(ids, info, 1, 2, 3, 4), -1);
    EXPECT_EQ(service().setOledLeaEnable(ids, info, 1), 0);
    EXPECT_EQ(service().ctrlLedFlicker(ids, info, 1), 0);
    EXPECT_EQ(service().setKeypadLock(ids, info, 1), 0);

    std::vector<std::string> callbacks;
    std::vector<json> args;
    for (const auto& received : a->received()) {
        callbacks.push_back(received.callback);
        args.push_back(received.args);
    }
    EXPECT_EQ(callbacks, (std::vector<std::string>{"getChipIDResult", "burnFusesResult",
                                                   "requestFuseInfoResult",
                                                   "reinitCredentialsResult", "readEaromResult"}));
    EXPECT_EQ(args,
              (std::vector<json>{{""},
                                 {-111},
                                 {{fuse("CredentialsInstalled", "NO"), fuse("VodEnabled", "NO")}},
                                 {-111},
                                 {""}}));
}

}  // namespace
}  // namespace sysctrltest
