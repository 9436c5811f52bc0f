// The bridge under faults: captures from many callers at once, floods past its bounds, arguments
// past its size limits, a stop with a full queue, deadlines that pass while a call waits, capture
// folders where others could plant a link, and a registry that throws.
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "BridgeFixture.h"
#include "CaptureTarget.h"
#include "DbusLog.h"
#include "DbusWire.h"
#include "TempFolder.h"

namespace sysctrltest {
namespace {

using sysctrlservice::dbus::kErrorBusy;
using sysctrlservice::dbus::kErrorInvalidArgs;
using sysctrlservice::dbus::kErrorServiceUnavailable;
using sysctrlservice::dbus::kErrorStopping;
using sysctrlservice::dbus::kErrorTimeout;
using sysctrlservice::dbus::kErrorUnsafePath;
using sysctrlservice::dbus::kMaxArgumentBytes;
using sysctrlservice::dbus::kMaxFuseItems;

// A service whose controlOpc waits at a gate until the test opens it, then delivers the command
// back as its result; so a test decides how long the bridge's workers stay busy.
class GatedOpcService : public sysctrlservice::Application {
  public:
    int controlOpc(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                   const std::string& command) override {
        sysctrlservice::ClientInterfacePtr client;
        if (command == "later") {
            // Returns at once; the test delivers the result afterwards, from its own thread.
            std::lock_guard<std::mutex> lock(m_mutex);
            m_later.push_back({msgIds, transport});
            m_changed.notify_all();
            return 0;
        }
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_reached.push_back(command);
            m_changed.notify_all();
            m_changed.wait(lock, [this] { return m_open; });
            client = m_client;
        }
        if (client) {
            client->controlOpcResult(msgIds, transport, command);
        }
        return 0;
    }
    int addClient(sysctrlservice::ClientInterfacePtr client) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_client = client;
        return 0;
    }
    int removeClient(sysctrlservice::ClientInterfacePtr) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_client.reset();
        return 0;
    }

    // Waits until `count` calls have reached the gate; false after the hang guard.
    bool waitReached(size_t count) {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, kHangGuard, [&] { return m_reached.size() >= count; });
    }
    void open() {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_open = true;
        m_changed.notify_all();
    }
    // Delivers the results of the "later" calls, once the first has returned.
    bool deliverLater() {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_changed.wait_for(lock, kHangGuard, [&] { return !m_later.empty(); })) {
            return false;
        }
        std::vector<std::pair<frame::MsgIds, frame::TransportInfo>> later;
        later.swap(m_later);
        const sysctrlservice::ClientInterfacePtr client = m_client;
        lock.unlock();
        for (auto& [msgIds, transport] : later) {
            client->controlOpcResult(msgIds, transport, "later");
        }
        return true;
    }
    std::vector<std::string> reached() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_reached;
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_open = false;
    std::vector<std::string> m_reached;
    std::vector<std::pair<frame::MsgIds, frame::TransportInfo>> m_later;
    sysctrlservice::ClientInterfacePtr m_client;
};

// The answers of asynchronous calls: the error name of each, or "ok:" and its result.
class Answers {
  public:
    // Every answer was awaited; the lock orders their writes before the destruction.
    ~Answers() { std::lock_guard<std::mutex> lock(m_mutex); }

    std::function<void(const sdbus::Error*, int32_t, std::string)> collect() {
        return [this](const sdbus::Error* error, int32_t, std::string result) {
            std::lock_guard<std::mutex> lock(m_mutex);
            ++m_count[error != nullptr ? error->getName() : "ok:" + result];
            if (error != nullptr) {
                m_message[error->getName()] = error->getMessage();
            }
            ++m_total;
            m_changed.notify_all();
        };
    }
    bool waitFor(size_t total, std::chrono::seconds guard = kHangGuard) {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, guard, [&] { return m_total >= total; });
    }
    std::map<std::string, size_t> counts() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_count;
    }
    // The message of the last error of that name.
    std::string message(const std::string& name) {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_message[name];
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::map<std::string, size_t> m_count;
    std::map<std::string, std::string> m_message;
    size_t m_total = 0;
};

class BridgeUnderFaults : public BridgeOnBus {
  protected:
    void TearDown() override {
        m_gated.open();
        BridgeOnBus::TearDown();
    }

    void startGated(DbusBridge::Options options = DbusBridge::Options()) {
        m_workers = options.workers;
        startBridge([this] { return &m_gated; }, options);
    }
    // Sends ControlOpc `command` without waiting; the answer goes to `answers`.
    void sendOpc(sdbus::IProxy& caller, const std::string& command, Answers& answers) {
        // Held until the test ends: dropped at once, its handle races with the reply's handler
        // inside the bus library.
        m_calls.push_back(caller.callMethodAsync("ControlOpc")
                              .onInterface(kInterface)
                              .withTimeout(kHangGuard)
                              .withArguments(command)
                              .uponReplyInvoke(answers.collect()));
    }
    // Returns once the bridge's bus thread has read every call `caller` sent before: the bus
    // keeps one connection's messages in order and the bus library answers Ping itself.
    static void sync(sdbus::IProxy& caller) {
        caller.callMethod("Ping").onInterface("org.freedesktop.DBus.Peer").withTimeout(kHangGuard);
    }
    // Fills the shared workers with calls waiting at the gate.
    void occupyWorkers(sdbus::IProxy& caller, Answers& answers) {
        const unsigned workers = m_workers;
        // One at a time, so that none waits in the queue, where a small bound could refuse it.
        for (unsigned i = 0; i < workers; ++i) {
            sendOpc(caller, "running", answers);
            ASSERT_TRUE(m_gated.waitReached(i + 1));
        }
    }

    GatedOpcService m_gated;
    unsigned m_workers = 0;
    std::vector<sdbus::PendingAsyncCall> m_calls;
};

TEST_F(BridgeUnderFaults, CapturesFromManyCallersRunOneAtATimeAndLoseNoFile) {
    setState("ScreenCapture.width", 64);
    setState("ScreenCapture.height", 36);
    // Only a guard against a hang: 320 captures one after the other take a while under the
    // sanitizers and emulators.
    constexpr auto kCaptureGuard = 100s;
    startBridge([this] { return &service(); }, kCaptureGuard);
    const std::string folder = m_root + "/captures";
    std::filesystem::create_directories(folder);
    constexpr int kCallers = 8;
    constexpr int kCaptures = 40;
    std::vector<std::unique_ptr<sdbus::IProxy>> callers;
    Answers answers;
    for (int c = 0; c < kCallers; ++c) {
        callers.push_back(newProxy());
    }
    for (int i = 0; i < kCaptures; ++i) {
        for (int c = 0; c < kCallers; ++c) {
            m_calls.push_back(
                callers[c]
                    ->callMethodAsync("CmdCaptureScreen")
                    .onInterface(kInterface)
                    .withTimeout(kCaptureGuard)
                    .withArguments(folder,
                                   "shot-" + std::to_string(c) + "-" + std::to_string(i) + ".png",
                                   int32_t{2})
                    .uponReplyInvoke([&answers](const sdbus::Error* error, int32_t status) {
                        answers.collect()(error, status, std::to_string(status));
                    }));
        }
    }
    ASSERT_TRUE(answers.waitFor(kCallers * kCaptures, kCaptureGuard));
    EXPECT_EQ(answers.counts(), (std::map<std::string, size_t>{{"ok:0", kCallers * kCaptures}}));
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        files += entry.path().filename().string().rfind("shot-", 0) == 0 ? 1 : 0;
    }
    EXPECT_EQ(files, size_t{kCallers * kCaptures});
    // Each PNG is written whole before the next begins.
    std::string open;
    for (const std::string& line : logsContaining("generate")) {
        const bool starts = line.find("In generatePng") != std::string::npos;
        const bool ends = line.find(" generate success") != std::string::npos;
        ASSERT_FALSE(starts && !open.empty()) << "began while another was written:\n"
                                              << open << line;
        if (starts) {
            open = line;
        } else if (ends) {
            open.clear();
        }
    }
}

TEST_F(BridgeUnderFaults, OtherOperationsGoOnWhileACaptureRuns) {
    startGated();
    Answers answers;
    ASSERT_NO_FATAL_FAILURE(occupyWorkers(proxy(), answers));
    // Every shared worker waits at the gate, yet a capture still has a worker of its own.
    const std::string folder = m_root + "/captures";
    std::filesystem::create_directories(folder);
    int32_t status = -1;
    call("CmdCaptureScreen")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .withArguments(folder, std::string("shot.raw"), int32_t{4})
        .storeResultsTo(status);
    EXPECT_EQ(status, 0);
    m_gated.open();
    ASSERT_TRUE(answers.waitFor(4));
    EXPECT_EQ(answers.counts(), (std::map<std::string, size_t>{{"ok:running", 4}}));
}

TEST_F(BridgeUnderFaults, CallsPastTheQueueBoundsAreAnsweredBusyAtOnce) {
    DbusBridge::Options options;
    options.maxQueued = 5;
    options.maxQueuedPerCaller = 3;
    startGated(options);
    Answers running;
    ASSERT_NO_FATAL_FAILURE(occupyWorkers(proxy(), running));

    // A flooding caller gets its three places, then Busy; a second fills the two left in all.
    std::unique_ptr<sdbus::IProxy> flood = newProxy();
    std::unique_ptr<sdbus::IProxy> second = newProxy();
    Answers floodAnswers;
    Answers secondAnswers;
    for (int i = 0; i < 5; ++i) {
        sendOpc(*flood, "flood", floodAnswers);
    }
    sync(*flood);
    for (int i = 0; i < 4; ++i) {
        sendOpc(*second, "second", secondAnswers);
    }
    ASSERT_TRUE(floodAnswers.waitFor(2));
    ASSERT_TRUE(secondAnswers.waitFor(2));
    EXPECT_EQ(floodAnswers.message(kErrorBusy),
              "too many calls are waiting (at most 5 in all, 3 of one caller, 33554432 bytes of "
              "text)");
    EXPECT_EQ(floodAnswers.counts(), (std::map<std::string, size_t>{{kErrorBusy, 2}}));
    EXPECT_EQ(secondAnswers.counts(), (std::map<std::string, size_t>{{kErrorBusy, 2}}));

    // Once the workers are free every call that was queued runs and gets its result.
    m_gated.open();
    ASSERT_TRUE(floodAnswers.waitFor(5));
    ASSERT_TRUE(secondAnswers.waitFor(4));
    EXPECT_EQ(floodAnswers.counts(),
              (std::map<std::string, size_t>{{kErrorBusy, 2}, {"ok:flood", 3}}));
    EXPECT_EQ(secondAnswers.counts(),
              (std::map<std::string, size_t>{{kErrorBusy, 2}, {"ok:second", 2}}));
    // The places are given back: the bridge takes calls again.
    int32_t status = -1;
    std::string result;
    call("ControlOpc")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .withArguments(std::string("after"))
        .storeResultsTo(status, result);
    EXPECT_EQ(result, "after");
}

TEST_F(BridgeUnderFaults, AResultThatComesAfterTheOperationReturnedAnswersTheCall) {
    startGated();
    Answers answers;
    sendOpc(proxy(), "later", answers);
    ASSERT_TRUE(m_gated.deliverLater());
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_EQ(answers.counts(), (std::map<std::string, size_t>{{"ok:later", 1}}));
}

TEST_F(BridgeUnderFaults, WorkersTakeTheCallersCallsInTurn) {
    DbusBridge::Options options;
    options.workers = 1;
    startGated(options);
    Answers answers;
    ASSERT_NO_FATAL_FAILURE(occupyWorkers(proxy(), answers));
    std::unique_ptr<sdbus::IProxy> flood = newProxy();
    std::unique_ptr<sdbus::IProxy> bystander = newProxy();
    for (int i = 0; i < 4; ++i) {
        sendOpc(*flood, "flood", answers);
    }
    sync(*flood);
    sendOpc(*bystander, "bystander", answers);
    sync(*bystander);
    m_gated.open();
    ASSERT_TRUE(answers.waitFor(6));
    EXPECT_EQ(m_gated.reached(), (std::vector<std::string>{"running", "flood", "bystander", "flood",
                                                           "flood", "flood"}));
}

TEST_F(BridgeUnderFaults, QueuedTextIsBoundedInBytes) {
    DbusBridge::Options options;
    options.maxQueuedBytes = 100 * 1024;
    startGated(options);
    Answers running;
    ASSERT_NO_FATAL_FAILURE(occupyWorkers(proxy(), running));
    std::unique_ptr<sdbus::IProxy> caller = newProxy();
    Answers answers;
    sendOpc(*caller, std::string(60 * 1024, 'a'), answers);
    sendOpc(*caller, std::string(60 * 1024, 'b'), answers);
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_EQ(answers.counts(), (std::map<std::string, size_t>{{kErrorBusy, 1}}));
    m_gated.open();
    ASSERT_TRUE(answers.waitFor(2));
}

TEST_F(BridgeUnderFaults, ArgumentsPastTheSizeLimitsAreRefusedBeforeTheServiceSeesThem) {
    startBridge();
    const size_t before = sim().journal().size();
    const std::string tooLong(kMaxArgumentBytes + 1, ',');
    const ByteList tooManyBytes(kMaxArgumentBytes + 1, 0x30);
    typedef sdbus::Struct<ByteList, ByteList> FuseItem;
    const std::vector<FuseItem> tooManyItems(kMaxFuseItems + 1,
                                             FuseItem(ByteList{'n'}, ByteList{}));
    const std::vector<FuseItem> tooLargeItems = {
        FuseItem(ByteList(kMaxArgumentBytes / 2, 'n'), ByteList(kMaxArgumentBytes / 2 + 1, 'v'))};
    const struct {
        const char* what;
        std::function<void()> call;
        std::string limit;
    } cases[] = {
        {"command", [&] { call("ControlOpc").onInterface(kInterface).withArguments(tooLong); },
         "argument 'command' holds 262145 bytes; the limit is 262144"},
        {"uart data",
         [&] {
             call("ControlUart").onInterface(kInterface).withArguments(std::string("w"), tooLong);
         },
         "argument 'data' holds 262145 bytes"},
        {"earom data",
         [&] {
             call("WriteEarom")
                 .onInterface(kInterface)
                 .withArguments(int32_t{0}, std::string(kMaxArgumentBytes + 1, '0'));
         },
         "argument 'data' holds 262145 bytes"},
        {"signature message",
         [&] {
             call("GetYTSignature")
                 .onInterface(kInterface)
                 .withArguments(tooManyBytes, uint32_t{0}, uint32_t{4});
         },
         "argument 'message' holds 262145 bytes"},
        {"fuse count",
         [&] { call("BurnFuses").onInterface(kInterface).withArguments(tooManyItems); },
         "argument 'items' holds 4097 items; the limit is 4096"},
        {"fuse bytes",
         [&] { call("BurnFuses").onInterface(kInterface).withArguments(tooLargeItems); },
         "argument 'items' holds 262145 bytes"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        try {
            c.call();
            ADD_FAILURE() << "accepted";
        } catch (const sdbus::Error& e) {
            EXPECT_EQ(e.getName(), kErrorInvalidArgs);
            EXPECT_NE(e.getMessage().find(c.limit), std::string::npos) << e.getMessage();
        }
    }
    EXPECT_EQ(sim().journal().size(), before);

    // At the limit a text still reaches the service.
    int32_t status = -1;
    std::string result;
    call("ControlOpc")
        .onInterface(kInterface)
        .withTimeout(kHangGuard)
        .withArguments(std::string(kMaxArgumentBytes, 'x'))
        .storeResultsTo(status, result);
    EXPECT_EQ(status, 0);
}

TEST_F(BridgeUnderFaults, AStopWithAFullQueueAnswersEveryCallerWithoutRunningTheQueuedCalls) {
    startGated();
    Answers running;
    ASSERT_NO_FATAL_FAILURE(occupyWorkers(proxy(), running));
    const DbusBridge::Options limits;
    const size_t callers = limits.maxQueued / limits.maxQueuedPerCaller;
    std::vector<std::unique_ptr<sdbus::IProxy>> queuing;
    Answers queued;
    for (size_t c = 0; c < callers; ++c) {
        queuing.push_back(newProxy());
        for (size_t i = 0; i < limits.maxQueuedPerCaller; ++i) {
            sendOpc(*queuing.back(), "queued", queued);
        }
    }
    for (auto& caller : queuing) {
        sync(*caller);
    }
    EXPECT_EQ(queued.counts(), (std::map<std::string, size_t>{})) << "all queued, none refused";

    std::thread stopping([this] { m_bridge->stop(); });
    // The queued calls are answered before the running ones end.
    ASSERT_TRUE(queued.waitFor(limits.maxQueued));
    EXPECT_EQ(queued.counts(), (std::map<std::string, size_t>{{kErrorStopping, limits.maxQueued}}));
    EXPECT_EQ(queued.message(kErrorStopping), "ControlOpc: the bridge stopped before the call ran");
    m_gated.open();
    stopping.join();
    ASSERT_TRUE(running.waitFor(limits.workers));
    EXPECT_EQ(running.counts(), (std::map<std::string, size_t>{{"ok:running", limits.workers}}));
    EXPECT_EQ(m_gated.reached().size(), limits.workers) << "a queued call ran";
}

TEST_F(BridgeUnderFaults, CallsThatArriveWhileStoppingGetStoppingOrNoSuchName) {
    startGated();
    Answers running;
    ASSERT_NO_FATAL_FAILURE(occupyWorkers(proxy(), running));
    std::thread stopping([this] { m_bridge->stop(); });
    // Whether it comes before or after the name is given up, a late call gets a clear answer.
    Answers late;
    std::unique_ptr<sdbus::IProxy> caller = newProxy();
    for (int i = 0; i < 20; ++i) {
        sendOpc(*caller, "late", late);
    }
    ASSERT_TRUE(late.waitFor(20));
    m_gated.open();
    stopping.join();
    for (const auto& [answer, count] : late.counts()) {
        EXPECT_TRUE(answer == kErrorStopping ||
                    answer == "org.freedesktop.DBus.Error.ServiceUnknown")
            << count << " answered " << answer;
    }
}

TEST_F(BridgeUnderFaults, ADeadlineCountsFromTheCallsArrivalWhileItWaits) {
    DbusBridge::Options options;
    options.timeout = 300ms;
    startGated(options);
    Answers running;
    ASSERT_NO_FATAL_FAILURE(occupyWorkers(proxy(), running));
    std::unique_ptr<sdbus::IProxy> caller = newProxy();
    Answers waiting;
    sendOpc(*caller, "waiting", waiting);
    // Every worker is still at the gate: the call never ran, yet its deadline has passed.
    ASSERT_TRUE(waiting.waitFor(1));
    EXPECT_EQ(waiting.counts(), (std::map<std::string, size_t>{{kErrorTimeout, 1}}));
    EXPECT_EQ(waiting.message(kErrorTimeout), "ControlOpc: no result within 300 ms");
    m_gated.open();
    ASSERT_TRUE(running.waitFor(4));
    m_bridge->stop();
    EXPECT_EQ(m_gated.reached(), std::vector<std::string>(4, "running")) << "the late call ran";
}

TEST_F(BridgeUnderFaults, ARegistryThatThrowsIsLoggedAndAnsweredServiceUnavailable) {
    startBridge(
        []() -> sysctrlservice::ServiceInterface* { throw std::runtime_error("registry broken"); });
    EXPECT_EQ(errorOf([&] { call("GetChipID").onInterface(kInterface).withTimeout(kHangGuard); }),
              kErrorServiceUnavailable);
    bool logged = false;
    for (const LogLine& line : logs()) {
        logged = logged || (line.module == sysctrlservice::dbus::LOG_MODULE_DBUS &&
                            line.text.find("exception: registry broken") != std::string::npos);
    }
    EXPECT_TRUE(logged);
}

TEST_F(BridgeUnderFaults, ACaptureIntoAFolderOthersCanWriteIsRefusedBeforeTheService) {
    startBridge();
    const std::string folder = m_root + "/shared";
    std::filesystem::create_directories(folder);
    ASSERT_EQ(chmod(folder.c_str(), 0777), 0);
    const size_t before = sim().journal().size();
    try {
        call("CmdCaptureScreen")
            .onInterface(kInterface)
            .withTimeout(kHangGuard)
            .withArguments(folder, std::string("shot.png"), int32_t{2});
        ADD_FAILURE() << "accepted";
    } catch (const sdbus::Error& e) {
        EXPECT_EQ(e.getName(), kErrorUnsafePath);
        EXPECT_NE(e.getMessage().find("others than root and the caller may write"),
                  std::string::npos)
            << e.getMessage();
    }
    EXPECT_EQ(sim().journal().size(), before);
    EXPECT_FALSE(std::filesystem::exists(folder + "/shot.png"));
}

// Texts that D-Bus strings cannot carry lose only what they cannot carry.
TEST(BridgeWire, TextKeepsValidUtf8AndReplacesTheRest) {
    const std::string replacement = "\xEF\xBF\xBD";
    const struct {
        std::string text;
        std::string sent;
    } cases[] = {
        {"plain", "plain"},
        {"\xC3\xA9 \xE2\x82\xAC \xF0\x9D\x84\x9E", "\xC3\xA9 \xE2\x82\xAC \xF0\x9D\x84\x9E"},
        {std::string("a\0b", 3), "a" + replacement + "b"},
        {"\xFF\xC0\xAF", replacement + replacement + replacement},
        {"\xE0\x80\x80", replacement + replacement + replacement},  // overlong
        {"\xED\xA0\x80", replacement + replacement + replacement},  // a surrogate
        {"\xF4\x90\x80\x80", replacement + replacement + replacement + replacement},
        {"\xE2\x82", replacement + replacement},  // cut short
    };
    for (const auto& c : cases) {
        EXPECT_EQ(sysctrlservice::dbus::validUtf8(c.text), c.sent);
    }
}

// Callers match on the error names: each is the one docs/dbus.md gives.
TEST(BridgeErrors, EveryNameIsTheDocumentedOne) {
    std::ifstream page(SYSCTRL_DBUS_DOC);
    const std::string text((std::istreambuf_iterator<char>(page)),
                           std::istreambuf_iterator<char>());
    ASSERT_FALSE(text.empty()) << SYSCTRL_DBUS_DOC;
    for (const char* name : {sysctrlservice::dbus::kErrorServiceUnavailable, kErrorTimeout,
                             sysctrlservice::dbus::kErrorFailed, kErrorStopping, kErrorBusy,
                             kErrorUnsafePath, kErrorInvalidArgs}) {
        EXPECT_NE(text.find(std::string("| `") + name + "` |"), std::string::npos) << name;
    }
}

// The rules, folder by folder, for this test's user as the caller.
TEST(CaptureTarget, RefusesWhatOthersCouldRedirect) {
    const std::string root = sysctrltest::makeTemporaryFolder("target");
    ASSERT_FALSE(root.empty());
    struct RemoveAtEnd {
        std::string path;
        ~RemoveAtEnd() {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
    } cleanup{root};
    const uid_t me = geteuid();
    const auto folder = [&](const std::string& name, mode_t mode) {
        const std::string path = root + "/" + name;
        std::filesystem::create_directories(path);
        EXPECT_EQ(chmod(path.c_str(), mode), 0);
        return path;
    };
    const std::string mine = folder("mine", 0755);
    const std::string open = folder("open", 0777);
    const std::string sticky = folder("sticky", 01777);
    const std::string inSticky = folder("sticky/mine", 0700);
    const std::string groupWritable = folder("group", 0775);
    const std::string underOpen = folder("open/mine", 0755);
    const std::string file = root + "/file";
    { std::ofstream(file) << "x"; }
    ASSERT_EQ(symlink(mine.c_str(), (root + "/link").c_str()), 0);
    // Someone else's folder: as root, one given to another user; otherwise one of ours, with the
    // call made in the name of another user.
    const std::string theirs = folder("theirs", 0755);
    uid_t caller = me;
    if (me == 0) {
        ASSERT_EQ(chown(theirs.c_str(), 65534, 65534), 0);
    } else {
        caller = me + 1;
    }
    const bool groupIsRoot = getegid() == 0;

    const struct {
        std::string folder;
        std::string name;
        uid_t caller;
        std::string refusal;  // a part of it; empty: accepted
    } cases[] = {
        {mine, "shot.png", me, ""},
        {root + "/link", "shot.png", me, ""},
        {inSticky, "shot.png", me, ""},
        {mine, "../shot.png", me, "leaves the folder"},
        {mine, "sub/shot.png", me, "leaves the folder"},
        {mine, "..", me, "leaves the folder"},
        {open, "shot.png", me, "may write into the folder"},
        {sticky, "shot.png", me, "may write into the folder"},
        {underOpen, "shot.png", me, "others may replace"},
        {theirs, "shot.png", caller, "may write into the folder"},
        {groupWritable, "shot.png", me, groupIsRoot ? "" : "may write into the folder"},
        {root + "/missing", "shot.png", me, "cannot be checked"},
        {file, "shot.png", me, "is not a folder"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.folder + " " + c.name + " as " + std::to_string(c.caller));
        const std::string refusal =
            sysctrlservice::dbus::unsafeCaptureTarget(c.folder, c.name, c.caller);
        if (c.refusal.empty()) {
            EXPECT_EQ(refusal, "");
        } else {
            EXPECT_NE(refusal.find(c.refusal), std::string::npos) << refusal;
        }
    }
}

}  // namespace
}  // namespace sysctrltest
