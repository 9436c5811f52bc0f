// The PC host runtime: INI reading, the file-system root, threads and the debug channel.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "TempFolder.h"
#include "tvConfig/ConfigUtil.h"
#include "zo/Debug.h"
#include "zo/FileSystem.h"
#include "zo/Thread.h"
#include "zo/host/Host.h"

namespace {

class Ini : public ::testing::Test {
  protected:
    void SetUp() override {
        m_root = sysctrltest::makeTemporaryFolder("ini");
        ASSERT_FALSE(m_root.empty());
        zo::host::setFileSystemRoot(m_root);
        std::filesystem::create_directories(m_root + "/cfg");
        std::ofstream(m_root + "/cfg/model.ini") << "; model\n"
                                                    "[TVFeature]\n"
                                                    "ScreenType = 1\n"
                                                    "  Spaced  =  -12   ; note\n"
                                                    "Hex=0x1F\n"
                                                    "Word = big\n"
                                                    "Empty =\n"
                                                    "Huge = 99999999999\n"
                                                    "[ OLED ]\n"
                                                    "ScreenType=2\n"
                                                    "OLED_TempLUT=1\n";
    }
    void TearDown() override {
        zo::host::setFileSystemRoot("");
        std::filesystem::remove_all(m_root);
    }

    // The value read, or "fails" with the value left alone.
    std::string read(const std::string& file, const std::string& section, const std::string& key) {
        int value = 4242;
        const int found = tvConfig::ConfigUtil::instance().readInt(file, section, key, value);
        if (found == 0) {
            return value == 4242 ? "fails" : "fails but wrote the value";
        }
        return std::to_string(value);
    }

    std::string m_root;
};

TEST_F(Ini, ReadsIntegersOfTheNamedSectionUnderTheRoot) {
    const std::string file = "/cfg/model.ini";
    EXPECT_EQ(read(file, "TVFeature", "ScreenType"), "1");
    EXPECT_EQ(read(file, "[TVFeature]", "ScreenType"), "1");
    EXPECT_EQ(read(file, "OLED", "ScreenType"), "2");
    EXPECT_EQ(read(file, "OLED", "OLED_TempLUT"), "1");
    EXPECT_EQ(read(file, "TVFeature", "Spaced"), "-12");
    EXPECT_EQ(read(file, "TVFeature", "Hex"), "31");
}

TEST_F(Ini, FailsWithoutTouchingTheValue) {
    const std::string file = "/cfg/model.ini";
    EXPECT_EQ(read(file, "TVFeature", "Word"), "fails");
    EXPECT_EQ(read(file, "TVFeature", "Empty"), "fails");
    EXPECT_EQ(read(file, "TVFeature", "Huge"), "fails");
    EXPECT_EQ(read(file, "TVFeature", "OLED_TempLUT"), "fails");
    EXPECT_EQ(read(file, "Missing", "ScreenType"), "fails");
    EXPECT_EQ(read("/cfg/absent.ini", "TVFeature", "ScreenType"), "fails");
    // The fixed path is mapped under the root, never read from the real one.
    EXPECT_EQ(read(m_root + "/cfg/model.ini", "TVFeature", "ScreenType"), "fails");
}

TEST(FileSystemRoot, MapsFixedPathsUnderTheRootOrLeavesThemAlone) {
    zo::host::setFileSystemRoot("/tmp/some/root//");
    EXPECT_EQ(zo::fs::path("/var/tvservice/x"), "/tmp/some/root/var/tvservice/x");
    zo::host::setFileSystemRoot("/");
    EXPECT_EQ(zo::fs::path("/var/tvservice/x"), "/var/tvservice/x");
    zo::host::setFileSystemRoot("");
    EXPECT_EQ(zo::fs::path("/var/tvservice/x"), "/var/tvservice/x");
}

std::atomic<int> g_finished{0};

void* slowThread(void* argument) {
    std::this_thread::sleep_for(std::chrono::milliseconds(*static_cast<int*>(argument)));
    ++g_finished;
    return nullptr;
}

TEST(Threads, WaitReturnsOnlyAfterEveryStartedThreadHasEnded) {
    static int delays[] = {30, 10, 50};
    g_finished = 0;
    for (int& delay : delays) {
        zo::thread::Handle* handle = reinterpret_cast<zo::thread::Handle*>(&delay);
        ASSERT_EQ(zo::thread::create(&handle, &slowThread, &delay, -2, "a-rather-long-thread-name"),
                  0);
        EXPECT_EQ(handle, nullptr);  // detached: no handle is handed out
    }
    zo::host::waitForThreads();
    EXPECT_EQ(g_finished.load(), 3);
    EXPECT_EQ(zo::thread::create(nullptr, nullptr, nullptr, -2, "none"), -22);
    zo::host::waitForThreads();  // nothing left: returns at once
}

TEST(DebugChannel, FormatsAndFiltersByLevel) {
    std::vector<std::pair<uint32_t, std::string>> lines;
    zo::host::setDebugSink(
        [&lines](uint32_t word, const std::string& text) { lines.emplace_back(word, text); });
    const uint32_t trace = zo::debug::levelWord(253, 4000);
    const uint32_t notice = zo::debug::levelWord(253, 1);
    EXPECT_TRUE(zo::debug::isEnabled(trace));
    zo::debug::print(trace, "%s:%d:%s(): x=%d\n", "f.cpp", 7, "fn", -3);

    zo::host::setDebugThreshold(3000);
    EXPECT_FALSE(zo::debug::isEnabled(trace));
    EXPECT_TRUE(zo::debug::isEnabled(notice));
    zo::host::setDebugThreshold(0xFFFF);
    zo::host::setDebugSink(nullptr);

    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].first >> 16, 253u);
    EXPECT_EQ(lines[0].first & 0xFFFF, 4000u);
    EXPECT_EQ(lines[0].second, "f.cpp:7:fn(): x=-3\n");
}

}  // namespace
