// What the bridge's tests share: a private bus, the service on the simulated set, a bridge serving
// it and callers with connections of their own.
#ifndef TESTS_DBUS_BRIDGEFIXTURE_H
#define TESTS_DBUS_BRIDGEFIXTURE_H

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Application.h"
#include "DbusBridge.h"
#include "PrivateBus.h"
#include "ServiceTest.h"

namespace sysctrltest {

using namespace std::chrono_literals;
using sysctrlservice::dbus::DbusBridge;
using sysctrlservice::dbus::kBusName;
using sysctrlservice::dbus::kInterface;
using sysctrlservice::dbus::kMsgIdsTag;
using sysctrlservice::dbus::kObjectPath;
typedef sdbus::Struct<int32_t, int32_t> Ids;
typedef std::vector<uint8_t> ByteList;

// Only a guard against a hang: every wait ends as soon as its event comes.
constexpr auto kHangGuard = 30s;

// The service answers controlOpc with a status and never delivers its result.
class SilentOpcService : public sysctrlservice::Application {
  public:
    int controlOpc(frame::MsgIds&, const frame::TransportInfo&, const std::string&) override {
        return 0;
    }
};

class BridgeOnBus : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        ASSERT_FALSE(m_bus.address().empty()) << "dbus-daemon did not start";
        startService();
    }
    void TearDown() override {
        m_proxies.clear();
        m_bridge.reset();
        ServiceTest::TearDown();
    }

    void startBridge(DbusBridge::Lookup lookup, std::chrono::milliseconds timeout = 10000ms) {
        DbusBridge::Options options;
        options.timeout = timeout;
        startBridge(std::move(lookup), options);
    }
    void startBridge(DbusBridge::Lookup lookup, DbusBridge::Options options) {
        options.bus = m_bus.address();
        m_bridge.reset(new DbusBridge(std::move(lookup), options));
        ASSERT_EQ(m_bridge->start(), 0);
    }
    void startBridge() {
        startBridge([this] { return &service(); });
    }

    // A caller with a connection of its own.
    std::unique_ptr<sdbus::IProxy> newProxy() {
        return sdbus::createProxy(sdbus::createSessionBusConnectionWithAddress(m_bus.address()),
                                  kBusName, kObjectPath);
    }
    sdbus::IProxy& proxy() {
        if (m_proxies.empty()) {
            m_proxies.push_back(newProxy());
        }
        return *m_proxies.front();
    }
    // A call of the first caller; the interface and the guard are added where it is made.
    sdbus::MethodInvoker call(const std::string& method) { return proxy().callMethod(method); }
    // The D-Bus error name of a call that should fail.
    static std::string errorOf(const std::function<void()>& call) {
        try {
            call();
        } catch (const sdbus::Error& e) {
            return e.getName();
        }
        return "no error";
    }

    PrivateBus m_bus;
    std::unique_ptr<DbusBridge> m_bridge;
    std::vector<std::unique_ptr<sdbus::IProxy>> m_proxies;
};

}  // namespace sysctrltest

#endif
