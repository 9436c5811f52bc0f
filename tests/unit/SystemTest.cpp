// System restart, panel power with its panel-type cache, and the ZAM options.
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <iostream>

#include "ServiceTest.h"

namespace sysctrltest {
namespace {

using sim::json;
typedef std::vector<std::pair<uint16_t, std::string>> Messages;
typedef std::vector<std::string> Calls;

const char kConfigFile[] = "/quentadata/model/config/config.ini";
const std::pair<uint16_t, std::string> kTurnOff{1, "OLED turnOff panel.\n"};

class System : public StartedServiceTest {
  protected:
    // Checks the port calls since the last check, as "Object.operation[args]" (the factory's
    // getters left out), and the messages; then clears both.
    void check(const Calls& calls, const Messages& logged) {
        Calls made;
        for (const sim::PortCall& call : sim().journal()) {
            if (call.object != "Factory") {
                made.push_back(call.object + "." + call.operation + call.args.dump());
            }
        }
        EXPECT_EQ(made, calls);
        EXPECT_EQ(messages(), logged);
        sim().clearJournal();
        clearLogs();
    }
};

TEST_F(System, RestartTurnsAnyPanelOffFirstAndSkipsOnlyTheStepsOfMissingObjects) {
    // The panel type is not consulted: this set is not an OLED set.
    writeFile(kConfigFile, "[TVFeature]\nScreenType = 2\n");
    frame::MsgIds ids = msgIds(1);
    const auto restart = [&] { return service().restartSystem(ids, transport(1)); };
    EXPECT_EQ(restart(), 0);
    const auto getters = sim().calls("Factory");
    ASSERT_EQ(getters.size(), 2u);
    EXPECT_EQ(getters[0].operation + " " + getters[1].operation, "getOledPanel getSystemControl");
    check({"OledPanel.turnOff[]", "SystemControl.restartByStc[]"},
          {kTurnOff, {4000, "Restart system by STC successfully\n"}});

    setAnswer("SystemControl.restartByStc", -3);
    EXPECT_EQ(restart(), 0);
    check({"OledPanel.turnOff[]", "SystemControl.restartByStc[]"},
          {kTurnOff, {1000, "Restart system by STC failed, ret = -3.\n"}});

    setAbsent("SystemControl");
    EXPECT_EQ(restart(), 0);
    check({"OledPanel.turnOff[]"}, {kTurnOff});

    setAbsent("OledPanel");
    EXPECT_EQ(restart(), 0);
    check({}, {});

    std::string error;
    ASSERT_TRUE(sim().setPresent("SystemControl", true, error)) << error;
    EXPECT_EQ(restart(), 0);
    check({"SystemControl.restartByStc[]"}, {{1000, "Restart system by STC failed, ret = -3.\n"}});
}

// The ZAM options: one call each with the arguments unchanged, a failure text only for a non-zero
// result, and silence without the ZAM object.
class Zam : public System {
  protected:
    void runAll() {
        sysctrlservice::ServiceInterface& s = service();
        frame::MsgIds m = msgIds(2);
        const frame::TransportInfo t = transport(2);
        expect(s.setBootEnvDbtable(m, t, -1), "setBootEnvDbtable[-1]",
               "Set Boot environment db_table to ZAM failed, ret = -7.\n");
        expect(s.controlComEnabled(m, t, INT32_MAX), "setComEnabled[2147483647]",
               "ZAM Set com enable, ret = -7.\n");
        // The text is handed the result alone: it fills the first slot, the second repeats it.
        expect(s.controlUartState(m, t, 9), "setUartState[9]",
               "ZAM Set uart to -7 failed, ret = -7.\n");
        // "success" on failure, as the text has always read.
        expect(s.setGpioStatus(m, t, 42, -3), "setGpioStatus[42,-3]",
               "ZAM set gpio success , ret = -7.\n", {{4000, "Called,value:-3.\n"}});
    }

    void expect(int status, const std::string& call, const std::string& failure,
                Messages logged = {}) {
        EXPECT_EQ(status, 0);
        logged.insert(logged.end(), m_refused ? 1 : 0, {1000, failure});
        check(m_present ? Calls{"ZamControl." + call} : Calls{}, logged);
    }

    bool m_present = true;
    bool m_refused = false;
};

TEST_F(Zam, OptionsLogOnlyWhatZamRefuses) {
    runAll();
    for (const char* operation :
         {"setBootEnvDbtable", "setComEnabled", "setUartState", "setGpioStatus"}) {
        setAnswer(std::string("ZamControl.") + operation, -7);
    }
    m_refused = true;
    runAll();
    setAbsent("ZamControl");
    m_present = false;
    m_refused = false;
    runAll();
}

// controlPanelPower keeps the panel type for the life of the process, so these tests make their
// calls in a forked child process of their own with a fresh cache. The child is not a new run of
// the program, which an emulator (qemu-user without binfmt) could not start; no thread of the
// service runs at the fork.
class PanelPower : public System {
  protected:
    int power(int off) {
        frame::MsgIds ids = msgIds(3);
        return service().controlPanelPower(ids, transport(3), off);
    }

    // Runs `body` in the child, which exits 0 only when none of its checks failed and shows the
    // failures otherwise (the child reports nothing by itself).
    void inChild(const std::function<void()>& body) {
        GTEST_FLAG_SET(death_test_style, "fast");
        EXPECT_EXIT(
            {
                body();
                const ::testing::TestResult& result =
                    *::testing::UnitTest::GetInstance()->current_test_info()->result();
                for (int i = 0; i < result.total_part_count(); ++i) {
                    std::cerr << result.GetTestPartResult(i);
                }
                // The child leaves without the fixture's tear-down; its root goes here.
                std::error_code ignored;
                std::filesystem::remove_all(m_root, ignored);
                _exit(result.Failed() ? 1 : 0);
            },
            ::testing::ExitedWithCode(0), "");
    }

    // The notice of every call, with the argument and the type in force.
    static std::pair<uint16_t, std::string> notice(int off, int type) {
        return {1, "set panel power " + std::to_string(off) + ", ScreenType " +
                       std::to_string(type) + " \n"};
    }

    const std::string m_read =
        "ConfigUtil.readInt" + json({kConfigFile, "TVFeature", "ScreenType"}).dump();
    const std::pair<uint16_t, std::string> m_readFailed{1000, "read ScreenType failed\n"};
};

TEST_F(PanelPower, TypeIsReadUntilFoundThenKeptAndOnAnOledSetTheArgumentMeansOff) {
    writeFile(kConfigFile, "[TVFeature]\nOther = 1\n");
    inChild([this] {
        // No key: every call reads again, and the argument goes to the standby controller.
        EXPECT_EQ(power(1), 0);
        EXPECT_EQ(power(-9), 0);
        check({m_read, "SystemControl.setPanelPower[1]", m_read, "SystemControl.setPanelPower[-9]"},
              {m_readFailed, notice(1, -1), m_readFailed, notice(-9, -1)});

        writeFile(kConfigFile, "[TVFeature]\nScreenType = 1\n");
        EXPECT_EQ(power(1), 0);
        EXPECT_EQ(power(0), 0);
        EXPECT_EQ(power(-4), 0);
        check({m_read, "OledPanel.turnOff[]", "OledPanel.turnOn[]", "OledPanel.turnOff[]"},
              {notice(1, 1),
               kTurnOff,
               notice(0, 1),
               {1, "OLED turnOn panel.\n"},
               notice(-4, 1),
               kTurnOff});

        // Never read again, even when the file changes.
        writeFile(kConfigFile, "[TVFeature]\nScreenType = 0\n");
        EXPECT_EQ(power(1), 0);
        check({"OledPanel.turnOff[]"}, {notice(1, 1), kTurnOff});

        setAbsent("OledPanel");
        EXPECT_EQ(power(0), 0);
        check({"SystemControl.setPanelPower[0]"}, {notice(0, 1)});
        setAbsent("SystemControl");
        EXPECT_EQ(power(1), 0);
        check({}, {notice(1, 1)});
    });
}

TEST_F(PanelPower, AFailedReadKeepsWhatTheUtilityLeft) {
    // A utility that reports failure but wrote a value: the value is kept and not read again.
    setAnswer("ConfigUtil.readInt", 0, json::array({1}));
    inChild([this] {
        EXPECT_EQ(power(1), 0);
        EXPECT_EQ(power(1), 0);
        check({m_read, "OledPanel.turnOff[]", "OledPanel.turnOff[]"},
              {m_readFailed, notice(1, 1), kTurnOff, notice(1, 1), kTurnOff});
    });
}

}  // namespace
}  // namespace sysctrltest
