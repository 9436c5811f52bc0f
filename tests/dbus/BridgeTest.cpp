// The bridge on a private bus, in one process with the service on the simulated set: calls through
// sdbus-c++ proxies, replies, signals, types and faults.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "BridgeFixture.h"

namespace sysctrltest {
namespace {

// The signals one proxy received: name, identifiers and the first argument as text when it is one.
class SignalLog {
  public:
    struct Entry {
        std::string name;
        Ids msgIds;
        std::string text;
        int32_t number = 0;
    };

    void listen(sdbus::IProxy& proxy, const std::string& name, char firstType) {
        proxy.registerSignalHandler(kInterface, name, [this, name, firstType](sdbus::Signal& s) {
            Entry entry{name, {}, {}, 0};
            s >> entry.msgIds;
            if (firstType == 's') {
                s >> entry.text;
            } else if (firstType == 'i') {
                s >> entry.number;
            }
            std::lock_guard<std::mutex> lock(m_mutex);
            m_entries.push_back(entry);
            m_arrived.notify_all();
        });
    }

    // The first signal of that name whose identifiers are `msgIds`; fails the test after the guard.
    Entry waitFor(const std::string& name, Ids msgIds) {
        std::unique_lock<std::mutex> lock(m_mutex);
        Entry found;
        const bool arrived = m_arrived.wait_for(lock, kHangGuard, [&] {
            for (const Entry& entry : m_entries) {
                if (entry.name == name && entry.msgIds == msgIds) {
                    found = entry;
                    return true;
                }
            }
            return false;
        });
        EXPECT_TRUE(arrived) << name << " never came";
        return found;
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::vector<Entry> m_entries;
};

TEST_F(BridgeOnBus, MethodsWithAResultReplyWithTheStatusAndTheResult) {
    startBridge();
    int32_t status = -1;
    std::string opcState;
    call("ControlOpc")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .withArguments(std::string("getOpcState"))
        .storeResultsTo(status, opcState);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(opcState, "0");

    std::string chipId;
    call("GetChipID")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .storeResultsTo(status, chipId);
    EXPECT_EQ(chipId, "5a4f3a00c0ffee42");

    sdbus::Struct<uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, std::string> info;
    call("RequestOptimeInfo")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .storeResultsTo(status, info);
    EXPECT_EQ(info.get<0>(), 1200u);
    EXPECT_EQ(info.get<5>(), "1200h");

    uint8_t state = 0;
    call("SetOledLeaEnable")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .withArguments(uint8_t{1})
        .storeResultsTo(status, state);
    EXPECT_EQ(status, 0);
}

TEST_F(BridgeOnBus, MethodsWithoutAResultReplyWithTheStatusOnly) {
    startBridge();
    int32_t status = -1;
    call("SetKeypadLock")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .withArguments(int32_t{1})
        .storeResultsTo(status);
    EXPECT_EQ(status, 0);
    ASSERT_FALSE(sim().journal().empty());
    EXPECT_EQ(sim().journal().back().operation, "setKeypadLock");
}

TEST_F(BridgeOnBus, NumbersKeepTheirWidthAndSign) {
    startBridge();
    int32_t status = -1;
    std::string data;
    call("ReadEarom")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .withArguments(int32_t{-1}, uint32_t{4294967295u})
        .storeResultsTo(status, data);
    const sim::PortCall read = sim().journal().back();
    EXPECT_EQ(read.operation, "readEaromBlock");
    EXPECT_EQ(read.args, sim::json::parse("[-1, 4294967295]"));
}

TEST_F(BridgeOnBus, AnyByteTextsTravelAsByteArrays) {
    startBridge();
    const ByteList bytes = {0x00, 0xFF, 'a', 0x80};
    int32_t status = -1;
    ByteList signature;
    call("GetYTSignature")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .withArguments(bytes, uint32_t{0}, uint32_t{4})
        .storeResultsTo(status, signature);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(signature.size(), 4u);
    const sim::PortCall sign = sim().journal().back();
    EXPECT_EQ(sign.operation, "signMessage");
    EXPECT_EQ(sign.args[1], sim::textOrHex(std::string("\0\xFF"
                                                       "a\x80",
                                                       4)));
}

// EAROM data is hexadecimal text: it passes as it is, and anything else is refused before the
// service sees it.
TEST_F(BridgeOnBus, EaromDataIsHexText) {
    startBridge();
    int32_t status = -1;
    std::string result;
    call("WriteEarom")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .withArguments(int32_t{16}, std::string("00ffA5"))
        .storeResultsTo(status, result);
    EXPECT_EQ(status, 0);
    const sim::PortCall write = sim().journal().back();
    EXPECT_EQ(write.operation, "writeEaromBlock");
    EXPECT_EQ(write.args[1], "00ffA5");

    const size_t before = sim().journal().size();
    for (const std::string& bad : {std::string("0"), std::string("zz"), std::string("00 ff"),
                                   std::string("\xC3\xA9\xC3\xA9")}) {
        std::string error = "no error";
        try {
            call("WriteEarom")
                .onInterface(kInterface)
                .withTimeout(kHangGuard)
                .withArguments(int32_t{0}, bad);
        } catch (const sdbus::Error& e) {
            error = e.getName() + ": " + e.getMessage();
        }
        EXPECT_EQ(error,
                  "org.freedesktop.DBus.Error.InvalidArgs: argument 'data' is not "
                  "hexadecimal text (two digits a byte)")
            << bad;
    }
    EXPECT_EQ(sim().journal().size(), before);
}

TEST_F(BridgeOnBus, WrongArgumentTypesGetInvalidArgsAndNeverReachTheService) {
    startBridge();
    const size_t before = sim().journal().size();
    EXPECT_EQ(errorOf([&] {
                  call("ControlOpc")
                      .onInterface(kInterface)
                      .withTimeout(kHangGuard)
                      .withArguments(int32_t{3});
              }),
              "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(errorOf([&] {
                  call("ReadEarom")
                      .onInterface(kInterface)
                      .withTimeout(kHangGuard)
                      .withArguments(uint32_t{1}, uint32_t{1});
              }),
              "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(sim().journal().size(), before);
}

TEST_F(BridgeOnBus, EveryCallbackIsASignalWithItsIdentifiers) {
    startBridge();
    SignalLog signals;
    signals.listen(proxy(), "ControlOpcResult", 's');
    signals.listen(proxy(), "RequestOptimeInfoResult", '-');
    signals.listen(proxy(), "OledErrorResult", 'i');
    proxy().finishRegistration();

    int32_t status = -1;
    std::string opcState;
    call("ControlOpc")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .withArguments(std::string("getOpcState"))
        .storeResultsTo(status, opcState);
    // The bridge's first call; another client's call keeps that client's identifiers.
    EXPECT_EQ(signals.waitFor("ControlOpcResult", Ids(1, kMsgIdsTag)).text, "0");
    frame::MsgIds ids = msgIds(7);
    service().controlOpc(ids, transport(7), "getOpcState");
    signals.waitFor("ControlOpcResult", Ids(7, 0));

    // Reports nobody asked for carry the identifiers -1, -1.
    std::vector<sim::SimSet::Delivery> deliveries;
    std::string problem;
    ASSERT_TRUE(sim().fireEvent("operationHours", 1, 1, deliveries, problem)) << problem;
    signals.waitFor("RequestOptimeInfoResult", Ids(-1, -1));
    ASSERT_TRUE(sim().raiseOledError(4));
    EXPECT_EQ(signals.waitFor("OledErrorResult", Ids(-1, -1)).number, 4);
}

TEST_F(BridgeOnBus, AMaintenanceRunReportsItsResultAsASignalLater) {
    startBridge();
    SignalLog signals;
    signals.listen(proxy(), "OledMaintResult", 'i');
    proxy().finishRegistration();
    int32_t status = -1;
    call("ControlOledMaint")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .withArguments(uint32_t{1})
        .storeResultsTo(status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(signals.waitFor("OledMaintResult", Ids(-1, -1)).number, 0);
}

TEST_F(BridgeOnBus, AFailedOperationWithoutItsResultGetsTheFailedError) {
    startBridge();
    // An empty message makes getYTSignature return -1 and deliver nothing.
    EXPECT_EQ(errorOf([&] {
                  call("GetYTSignature")
                      .onInterface(kInterface)
                      .withTimeout(kHangGuard)
                      .withArguments(ByteList{}, uint32_t{0}, uint32_t{0});
              }),
              sysctrlservice::dbus::kErrorFailed);
}

TEST_F(BridgeOnBus, AResultThatNeverComesGetsTheTimeoutError) {
    SilentOpcService silent;
    startBridge([&silent] { return &silent; }, 200ms);
    EXPECT_EQ(errorOf([&] {
                  call("ControlOpc")
                      .onInterface(kInterface)
                      .withTimeout(kHangGuard)
                      .withArguments(std::string("getOpcState"));
              }),
              sysctrlservice::dbus::kErrorTimeout);
    m_bridge.reset();  // before the silent service goes
}

TEST_F(BridgeOnBus, EveryMethodAnswersServiceUnavailableWhileTheServiceIsMissing) {
    startBridge([] { return nullptr; });
    EXPECT_EQ(errorOf([&] { call("GetChipID").onInterface(kInterface).withTimeout(kHangGuard); }),
              sysctrlservice::dbus::kErrorServiceUnavailable);
    EXPECT_EQ(errorOf([&] {
                  call("SetKeypadLock")
                      .onInterface(kInterface)
                      .withTimeout(kHangGuard)
                      .withArguments(int32_t{1});
              }),
              sysctrlservice::dbus::kErrorServiceUnavailable);
}

TEST_F(BridgeOnBus, ACallerThatLeavesDuringACallLeavesTheBridgeServing) {
    SilentOpcService silent;
    startBridge([&silent] { return &silent; }, 200ms);
    {
        std::unique_ptr<sdbus::IProxy> leaving = newProxy();
        leaving->callMethodAsync("ControlOpc")
            .onInterface(kInterface)
            .withArguments(std::string("getOpcState"))
            .uponReplyInvoke([](const sdbus::Error*) {});
    }
    // The bridge answers the departed caller with a timeout, which the bus drops; others go on.
    EXPECT_EQ(errorOf([&] {
                  call("ControlOpc")
                      .onInterface(kInterface)
                      .withTimeout(kHangGuard)
                      .withArguments(std::string("getOpcState"));
              }),
              sysctrlservice::dbus::kErrorTimeout);
    int32_t status = -1;
    call("SetKeypadLock")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .withArguments(int32_t{1})
        .storeResultsTo(status);
    EXPECT_EQ(status, 0);
    m_bridge.reset();
}

TEST_F(BridgeOnBus, ABusThatGoesAwayStopsTheBridgeAndTheServiceGoesOn) {
    startBridge();
    ASSERT_TRUE(m_bridge->serving());
    m_proxies.clear();
    m_bus.stop();
    const auto guard = std::chrono::steady_clock::now() + kHangGuard;
    while (m_bridge->serving() && std::chrono::steady_clock::now() < guard) {
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_FALSE(m_bridge->serving());
    EXPECT_EQ(logsContaining("Lost the bus").size(), 1u);
    const auto client = addClient("after");
    frame::MsgIds ids = msgIds(1);
    EXPECT_EQ(service().controlOpc(ids, transport(1), "getOpcState"), 0);
    EXPECT_EQ(client->received("controlOpcResult").size(), 1u);
    m_bridge->stop();
}

TEST_F(BridgeOnBus, ManyCallersAtOnceEachGetTheirOwnResults) {
    startBridge();
    constexpr int kCallers = 8;
    constexpr int kCalls = 60;
    std::atomic<int> wrong{0};
    std::vector<std::thread> callers;
    for (int c = 0; c < kCallers; ++c) {
        callers.emplace_back([&] {
            std::unique_ptr<sdbus::IProxy> own = newProxy();
            for (int i = 0; i < kCalls; ++i) {
                int32_t status = -1;
                if (i % 2 == 0) {
                    std::string state;
                    own->callMethod("ControlOpc")
                        .onInterface(kInterface)
                        .withTimeout(kHangGuard)
                        .withArguments(std::string("getOpcState"))
                        .storeResultsTo(status, state);
                    wrong += state == "0" ? 0 : 1;
                } else {
                    std::string chipId;
                    own->callMethod("GetChipID")
                        .onInterface(kInterface)
                        .withTimeout(kHangGuard)
                        .storeResultsTo(status, chipId);
                    wrong += chipId.size() == 16 ? 0 : 1;
                }
            }
        });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace sysctrltest
