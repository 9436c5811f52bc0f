// Secure fuses, credentials, EAROM, chip identity and message signing.
#include "ServiceTest.h"

namespace sysctrltest {
namespace {

using sim::json;
typedef std::vector<std::pair<uint16_t, std::string>> Messages;

const std::pair<uint16_t, std::string> kCalled{4000, "Called.\n"};
const std::pair<uint16_t, std::string> kNoManager{1000, "Factorymanager not available.\n"};
const std::pair<uint16_t, std::string> kFailed{1000, "failed.\n"};

json fuse(const std::string& name, const std::string& value) {
    return json{{"name", name}, {"value", value}};
}

class Provisioning : public ServiceTest {
  protected:
    // Objects taken at setup must be made absent before it, so each test starts the service.
    void start() { m_client = startWithClient("A"); }

    // Checks the one answer to the request just made (its callback, the request's identifiers,
    // the arguments), the messages and, when given, the one factory-manager call as
    // [operation, args]; then clears the client, the journal and the logs.
    void expectAnswer(const std::string& callback, const json& args, const Messages& logged,
                      const json& managerCall = nullptr) {
        SCOPED_TRACE(callback);
        if (!managerCall.is_null()) {
            const auto made = sim().calls("FactoryManager");
            ASSERT_EQ(made.size(), 1u);
            EXPECT_EQ(json::array({made[0].operation, made[0].args}), managerCall);
        }
        const auto received = m_client->received();
        ASSERT_EQ(received.size(), 1u);
        EXPECT_EQ(received[0].callback, callback);
        EXPECT_EQ(received[0].args, args);
        EXPECT_EQ(received[0].msgIds, (std::vector<int32_t>{5, 0}));
        EXPECT_EQ(received[0].transport, (std::vector<int32_t>{5, 0, 0, 0, 0, 0, 0}));
        EXPECT_EQ(messages(), logged);
        m_client->clear();
        sim().clearJournal();
        clearLogs();
    }

    int signature(const std::string& message, unsigned int length, unsigned int reserved = 0) {
        return service().getYTSignature(m_ids, m_info, message, reserved, length);
    }

    // A signature request that is refused: -1, no answer, the signer asked for `fetches` times
    // and called `signs` times.
    void expectRefused(const std::string& message, unsigned int length, size_t fetches,
                       size_t signs, const Messages& logged) {
        SCOPED_TRACE(message + " " + std::to_string(length));
        sim().clearJournal();
        clearLogs();
        EXPECT_EQ(signature(message, length), -1);
        EXPECT_EQ(sim().calls("Factory", "getSigner").size(), fetches);
        EXPECT_EQ(sim().calls("Signer", "signMessage").size(), signs);
        EXPECT_TRUE(m_client->received().empty());
        EXPECT_EQ(messages(), logged);
    }

    frame::MsgIds m_ids = msgIds(5);
    const frame::TransportInfo m_info = transport(5);
    boost::shared_ptr<sim::RecordingClient> m_client;
};

TEST_F(Provisioning, BurnPassesTheItemsInOrderAndReportsTheOutcome) {
    start();
    EXPECT_EQ(service().burnFuses(m_ids, m_info, {{"SECURE_BOOT", "1"}, {"JTAG", "off now"}}), 0);
    expectAnswer(
        "burnFusesResult", {0}, {kCalled},
        json::array({"burnSecureFuses", {{fuse("SECURE_BOOT", "1"), fuse("JTAG", "off now")}}}));
    // An empty list is still handed to the platform.
    setAnswer("FactoryManager.burnSecureFuses", false);
    EXPECT_EQ(service().burnFuses(m_ids, m_info, {}), 0);
    expectAnswer("burnFusesResult", {-5}, {kCalled, {1000, "Error while burning fuses.\n"}},
                 json::array({"burnSecureFuses", {json::array()}}));
}

TEST_F(Provisioning, FuseReportIsThePlatformsItemsThenTheTwoAddedOnes) {
    setState("FactoryManager.fuses", json::array({fuse("B", "2"), fuse("A", "1")}));
    start();
    EXPECT_EQ(service().requestFuseInfo(m_ids, m_info, 0xFFFFFFFFu), 0);
    expectAnswer("requestFuseInfoResult",
                 {{fuse("B", "2"), fuse("A", "1"), fuse("CredentialsInstalled", "PRODUCTION"),
                   fuse("VodEnabled", "YES")}},
                 {kCalled}, json::array({"getSecureFuses", {4294967295u}}));
    // A failed fetch still reports what was delivered.
    setAnswer("FactoryManager.getSecureFuses", false, json::array({json::array({fuse("P", "q")})}));
    EXPECT_EQ(service().requestFuseInfo(m_ids, m_info, 1), 0);
    expectAnswer(
        "requestFuseInfoResult",
        {{fuse("P", "q"), fuse("CredentialsInstalled", "PRODUCTION"), fuse("VodEnabled", "YES")}},
        {kCalled, {1000, "Error while fetching fuse data.\n"}});
}

TEST_F(Provisioning, AddedItemsFollowTheCredentialsAndVideoOnDemandStates) {
    start();
    struct Case {
        int credentialsState;
        int vodEnabled;
        json fuses;
        std::string credentials;
        std::string vod;
    };
    // Any other credentials state repeats the value of the item before it.
    const Case cases[] = {{0, 1, json::array({fuse("A", "1")}), "PRODUCTION", "YES"},
                          {1, 0, json::array(), "TEST", "NO"},
                          {-1, -5, json::array(), "NO", "YES"},
                          {2, 1, json::array({fuse("A", "1"), fuse("B", "zz")}), "zz", "YES"},
                          {-7, 1, json::array({fuse("A", "on")}), "on", "YES"},
                          {2, 1, json::array(), "", "YES"}};
    for (const Case& c : cases) {
        setState("CredentialsState.state", c.credentialsState);
        setState("VodState.enabled", c.vodEnabled);
        setState("FactoryManager.fuses", c.fuses);
        EXPECT_EQ(service().requestFuseInfo(m_ids, m_info, 0), 0);
        json expected = c.fuses;
        expected.push_back(fuse("CredentialsInstalled", c.credentials));
        expected.push_back(fuse("VodEnabled", c.vod));
        expectAnswer("requestFuseInfoResult", json::array({expected}), {kCalled});
    }
}

TEST_F(Provisioning, ModeOneDeletesTheCredentialsAnyOtherRewritesThem) {
    start();
    const std::pair<const char*, int> kinds[] = {{"deleteCredentials", 1},
                                                 {"rewriteCredentials", 0},
                                                 {"rewriteCredentials", 2},
                                                 {"rewriteCredentials", -1}};
    for (const auto& kind : kinds) {
        EXPECT_EQ(service().reinitCredentials(m_ids, m_info, kind.second), 0);
        expectAnswer("reinitCredentialsResult", {0}, {kCalled},
                     json::array({kind.first, {kind.second}}));
    }
    setAnswer("FactoryManager.deleteCredentials", false);
    setAnswer("FactoryManager.rewriteCredentials", false);
    EXPECT_EQ(service().reinitCredentials(m_ids, m_info, 1), 0);
    expectAnswer("reinitCredentialsResult", {-13},
                 {kCalled, {1000, "Error in delete of credentials.\n"}});
    EXPECT_EQ(service().reinitCredentials(m_ids, m_info, 3), 0);
    expectAnswer("reinitCredentialsResult", {-5},
                 {kCalled, {1000, "Error in rewrite of credentials.\n"}});
}

// One pattern, three operations: the platform's text is delivered as it is, also after a failure.
TEST_F(Provisioning, EaromOperationsDeliverThePlatformsText) {
    setState("FactoryManager.earom", "000102030405060708090a0b0c0d0e0f");
    start();
    EXPECT_EQ(service().readEarom(m_ids, m_info, 13, 3), 0);
    expectAnswer("readEaromResult", {"0d0e0f"}, {kCalled},
                 json::array({"readEaromBlock", {13, 3}}));
    EXPECT_EQ(service().writeEarom(m_ids, m_info, 2, "ff00"), 0);
    expectAnswer("writeEaromResult", {"2"}, {kCalled},
                 json::array({"writeEaromBlock", {2, "ff00"}}));
    EXPECT_EQ(service().getEaromSize(m_ids, m_info), 0);
    expectAnswer("getEaromSizeResult", {"16"}, {kCalled},
                 json::array({"queryEaromSize", json::array()}));

    for (const char* operation : {"readEaromBlock", "writeEaromBlock", "queryEaromSize"}) {
        setAnswer(std::string("FactoryManager.") + operation, false, json::array({"partial"}));
    }
    EXPECT_EQ(service().readEarom(m_ids, m_info, 13, 3), 0);
    expectAnswer("readEaromResult", {"partial"}, {kCalled, kFailed});
    EXPECT_EQ(service().writeEarom(m_ids, m_info, 2, "ff00"), 0);
    expectAnswer("writeEaromResult", {"partial"}, {kCalled, kFailed});
    EXPECT_EQ(service().getEaromSize(m_ids, m_info), 0);
    expectAnswer("getEaromSizeResult", {"partial"}, {kCalled, kFailed});
}

TEST_F(Provisioning, WithoutTheFactoryManagerEachOperationAnswersItsFailure) {
    setAbsent("FactoryManager");
    setAbsent("CredentialsState");
    setAbsent("VodState");
    start();
    EXPECT_EQ(service().burnFuses(m_ids, m_info, {{"A", "1"}}), 0);
    expectAnswer("burnFusesResult", {-111}, {kCalled, kNoManager});
    EXPECT_EQ(service().requestFuseInfo(m_ids, m_info, 0), 0);
    expectAnswer("requestFuseInfoResult",
                 {{fuse("CredentialsInstalled", "NO"), fuse("VodEnabled", "NO")}},
                 {kCalled, kNoManager});
    for (const int mode : {1, 0}) {
        EXPECT_EQ(service().reinitCredentials(m_ids, m_info, mode), 0);
        expectAnswer("reinitCredentialsResult", {-111}, {kCalled, kNoManager});
    }
    EXPECT_EQ(service().readEarom(m_ids, m_info, 0, 4), 0);
    expectAnswer("readEaromResult", {""}, {kCalled, kFailed});
}

TEST_F(Provisioning, ChipIdIsDeliveredAlsoWhenItCannotBeRead) {
    setState("HardwareInfo.chipId", "c0ffee");
    start();
    EXPECT_EQ(service().getChipID(m_ids, m_info), 0);
    expectAnswer("getChipIDResult", {"c0ffee"}, {});
    setAnswer("HardwareInfo.getChipId", -9, json::array({"half"}));
    EXPECT_EQ(service().getChipID(m_ids, m_info), 0);
    expectAnswer("getChipIDResult", {"half"}, {{1000, "ZAM get chip id failed , ret = -9.\n"}});
    setAbsent("HardwareInfo");
    EXPECT_EQ(service().getChipID(m_ids, m_info), 0);
    expectAnswer("getChipIDResult", {""}, {});
}

TEST_F(Provisioning, SignatureIsTheRawBytesOfExactlyTheRequestedLength) {
    start();
    const Messages signedLog = {{4000, "ZAM get youtube signature value successfully\n"}};
    // The signer fills fewer bytes than asked: the rest of the buffer stays zero. The reserved
    // number changes nothing.
    setAnswer("Signer.signMessage", 0, json::array({"00ff0000ab"}));
    EXPECT_EQ(signature(std::string("a\0b", 3), 8, 0xFFFFFFFFu), 0);
    const auto signs = sim().calls("Signer", "signMessage");
    ASSERT_EQ(signs.size(), 1u);
    EXPECT_EQ(signs[0].args[0], 0);  // the key
    EXPECT_EQ(signs[0].args[2], 3);  // the whole message, its zero byte included
    EXPECT_EQ(signs[0].args[3], 8);
    expectAnswer("getYTSignatureResult",
                 json::array({sim::textOrHex(std::string("\x00\xff\x00\x00\xab\x00\x00\x00", 8))}),
                 signedLog);

    EXPECT_EQ(signature("hello", 0), 0);
    expectAnswer("getYTSignatureResult", {""}, signedLog);
    // The whole buffer is accepted although the text says "expect <".
    EXPECT_EQ(signature("hello", 256), 0);
    std::string bytes;
    ASSERT_TRUE(sim::stringFromJson(m_client->received().at(0).args[0], bytes));
    EXPECT_EQ(bytes.size(), 256u);
}

TEST_F(Provisioning, RefusedSignatureReturnsMinusOneAndAnswersNobody) {
    start();
    const std::string tooLong =
        "ZAM get youtube signature success , but signature size is too biger, expect < 256,actual "
        "len:";
    expectRefused("hello", 257, 1, 0, {{1000, tooLong + "257.\n"}});
    expectRefused("hello", 0x80000000u, 1, 0, {{1000, tooLong + "-2147483648.\n"}});
    expectRefused("", 8, 0, 0, {{1000, "param message must not null, please check.\n"}});
    setAnswer("Signer.signMessage", 5);
    expectRefused("hello", 8, 1, 1, {{1000, "ZAM get youtube signature failed , ret = 5.\n"}});
    setAbsent("Signer");
    expectRefused("hello", 8, 1, 0, {});
}

// Without the platform factory, the objects asked for per call are missing too.
TEST_F(Provisioning, WithoutAFactoryEachOperationAnswersAsItsFailurePathDoes) {
    setAbsent("Factory");
    start();
    EXPECT_EQ(signature("hello", 8), -1);
    EXPECT_EQ(service().restartSystem(m_ids, m_info), 0);
    EXPECT_EQ(service().setGpioStatus(m_ids, m_info, 1, 1), 0);
    EXPECT_EQ(service().startOledAs(m_ids, m_info), 0);
    EXPECT_EQ(service().saveOledManualGain(m_ids, m_info, 1, 2, 3, 4), -1);
    EXPECT_EQ(service().setOledLeaEnable(m_ids, m_info, 1), 0);
    EXPECT_TRUE(m_client->received().empty());
    clearLogs();
    EXPECT_EQ(service().getChipID(m_ids, m_info), 0);
    expectAnswer("getChipIDResult", {""}, {});
}

}  // namespace
}  // namespace sysctrltest
