// The operating-time records: loading the file, adding records and storing them.
#include "OledCareFixture.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <random>
#include <regex>
#include <sstream>
#include <thread>

namespace sysctrltest {
namespace {

// The records are seen through the file: a run whose only record is a "refresh time cleared"
// (type 3) makes the service write its whole table.
class OledRecords : public OledCareFixture {
  protected:
    void SetUp() override {
        OledCareFixture::SetUp();
        setTempLut(1);
        setState("OledPanel.maintenanceResult", 0x200);
    }

    // Adds one record of type 3 and returns the file written.
    std::string addProbe(uint64_t time = 999) {
        setState("clock.utcTime", time);
        runMaintenance(0);
        return readFile(kRecordsLog);
    }
};

struct LoadCase {
    const char* name;
    std::string file;
    std::string table;  // the file as written after the probe record
};

void PrintTo(const LoadCase& c, std::ostream* os) {
    *os << c.name;
}

class OledRecordsLoad : public OledRecords, public ::testing::WithParamInterface<LoadCase> {};

TEST_P(OledRecordsLoad, KeepsWhatIsValidAndSkipsTheRest) {
    writeFile(kRecordsLog, GetParam().file);
    startService();
    EXPECT_EQ(addProbe(), GetParam().table);
    EXPECT_TRUE(logsContaining("failed").empty());
}

using namespace std::string_literals;
const std::string kMax = "18446744073709551615";

INSTANTIATE_TEST_SUITE_P(
    Cases, OledRecordsLoad,
    ::testing::Values(
        LoadCase{"TypesComeBackInTypeOrder", "5:50:3\n1:10:0\n2:20:1",
                 "1:10:0\n2:20:1\n999:0:3\n5:50:3\n"},
        LoadCase{"SurplusOfOneTypeKeepsTheFirstFiveAndTheOthers",
                 "10:1:2\n30:3:3\n11:1:2\n12:1:2\n13:1:2\n14:1:2\n15:1:2\n31:3:3\n16:1:2\n",
                 "10:1:2\n11:1:2\n12:1:2\n13:1:2\n14:1:2\n999:0:3\n30:3:3\n31:3:3\n"},
        LoadCase{
            "WhatIsNotARecordIsSkipped",
            "1:10:0\r\n5:6:4\n1:2\nabc\n:1:1\n1::1\n18446744073709551616:1:0\n"
            "1:18446744073709551616:0\n1:2:4294967299\n\xff\xfe\x01\n4:40\0:2\n\x80:\x80:\x80\n"
            "2:20:1:9\n18446744073709551615:18446744073709551615:3\n"s,
            "1:10:0\n2:20:1\n999:0:3\n18446744073709551615:18446744073709551615:3\n"},
        LoadCase{"EmptyLineEndsTheFile", "1:10:0\n\n2:20:1\n", "1:10:0\n999:0:3\n"},
        LoadCase{"LineStartingWithNulEndsTheFile",
                 "1:10:0\n\0"
                 "2:20:1\n3:30:2\n"s,
                 "1:10:0\n999:0:3\n"},
        LoadCase{"LineOf259CharactersIsWhole", std::string(253, '0') + "5:50:0\n3:30:2\n",
                 "5:50:0\n3:30:2\n999:0:3\n"},
        LoadCase{"LongerLineIsCutAt259CharactersAndEndsLoading",
                 std::string(257, '0') + "5:50:0\n3:30:2\n", "999:0:3\n"},
        LoadCase{"LongerLineEndsLoadingAfterItsStart",
                 "1:10:0\n2:20:1" + std::string(300, ' ') + "\n3:30:2\n",
                 "1:10:0\n2:20:1\n999:0:3\n"}),
    [](const ::testing::TestParamInfo<LoadCase>& info) { return info.param.name; });

TEST_F(OledRecords, MissingFileOrDirectoryIsLoggedAndTheHistoryKeptInMemory) {
    writeFile(kRecordsOld, "stale\n");
    startService();
    const std::string failed = "PMR: failed open " + rootPath(kRecordsLog) + ".\n";
    EXPECT_EQ(messagesAt(1000), Texts{failed});
    EXPECT_EQ(logsContaining("loadPMRecords(): " + failed).size(), 1u);
    EXPECT_EQ(addProbe(1), "1:0:3\n");
    EXPECT_EQ(readFile(kRecordsOld), "stale\n") << "no record file to move yet";

    // A file where the directory should be: nothing under it can be opened, even by root.
    std::filesystem::remove_all(rootPath("/var/tvservice"));
    writeFile("/var/tvservice", "not a directory");
    clearLogs();
    addProbe(2);
    EXPECT_EQ(messagesAt(1000), Texts{failed});
    EXPECT_EQ(logsContaining("storePMRecords(): " + failed).size(), 1u);
    std::filesystem::remove(rootPath("/var/tvservice"));
    std::filesystem::create_directories(rootPath("/var/tvservice"));
    EXPECT_EQ(addProbe(3), "3:0:3\n2:0:3\n1:0:3\n");
}

TEST_F(OledRecords, SixthRecordDropsTheOldestAndStandsFirstAndOldHoldsThePreviousFile) {
    writeFile(kRecordsLog, "4:0:3\n3:0:3\n2:0:3\n1:0:3\n");
    startService();
    const mode_t previous = umask(0);
    EXPECT_EQ(addProbe(5), "5:0:3\n4:0:3\n3:0:3\n2:0:3\n1:0:3\n");
    EXPECT_EQ(readFile(kRecordsOld), "4:0:3\n3:0:3\n2:0:3\n1:0:3\n");
    EXPECT_EQ(addProbe(6), "6:0:3\n5:0:3\n4:0:3\n3:0:3\n2:0:3\n");
    EXPECT_EQ(readFile(kRecordsOld), "5:0:3\n4:0:3\n3:0:3\n2:0:3\n1:0:3\n");
    EXPECT_EQ(logsContaining("addPMRecord(): PMR: new record type:3 time:6.\n").size(), 1u);
    umask(previous);
    struct stat status {};
    ASSERT_EQ(stat(rootPath(kRecordsLog).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644u) << "readable by all whatever the umask";
}

TEST_F(OledRecords, SecondFieldIsTheSetsRunningTime) {
    startService();
    clearLogs();
    // The file's content (null: no file) and the second field it gives.
    const std::pair<const char*, const char*> cases[] = {
        {"12345", "12345"}, {"  42\n", "42"}, {kMax.c_str(), kMax.c_str()}, {nullptr, "0"},
        {"", "0"},          {"abc", "0"},     {"18446744073709551616", "0"}};
    for (const auto& [content, running] : cases) {
        SCOPED_TRACE(content == nullptr ? "absent" : content);
        std::filesystem::remove(rootPath(kRunningTime));
        if (content != nullptr) {
            writeFile(kRunningTime, content);
        }
        const std::string table = addProbe();
        EXPECT_EQ(table.substr(0, table.find('\n')), std::string("999:") + running + ":3");
    }
    EXPECT_TRUE(logsContaining("failed").empty());
}

// Writes the records again and again in a child process and kills it at random moments. A store
// writes the new table under a name of its own and renames it over the record file, so after a
// kill the record file is always there and holds a whole table, the new one or the previous one:
// the next start, which reads only the record file, loses nothing. (sysctrl-crash-tests kills a
// store after each of its file calls in turn, and models power cuts.)
class OledRecordsCrash : public OledRecords {
  protected:
    // The newest time in the text of a records file (-1: no file), checking that it is a table
    // as the service writes it: whole lines "time:running:type", types ascending, at most five
    // of a type, newest first.
    static int64_t newestOfTable(const std::string& text) {
        if (text == "<missing>") {
            return -1;
        }
        static const std::regex kTable("([0-9]+:[0-9]+:[0-3]\n)*");
        EXPECT_TRUE(std::regex_match(text, kTable)) << text;
        std::istringstream in(text);
        std::pair<int, int64_t> last(-1, 0);  // (type, -time): ascending in a table
        int ofType = 0;
        int64_t newest = 0;
        for (std::string line; std::getline(in, line);) {
            const std::pair<int, int64_t> key(line.back() - '0', -std::stoll(line));
            ofType = key.first == last.first ? ofType + 1 : 1;
            EXPECT_TRUE(last <= key && ofType <= 5) << "out of order or too many: " << text;
            last = key;
            newest = std::max(newest, -key.second);
        }
        return newest;
    }

    // The child: starts the service on what the files hold and runs maintenance forever, each
    // run adding three records (at time base, base + 1, ...), until it is killed. It writes one
    // byte to `progress` once started and one after each run.
    [[noreturn]] void storeUntilKilled(uint64_t base, int progress) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (app().setupDone() != 0 || app().start() != 0) {
            _exit(2);
        }
        const char byte = 0;
        for (uint64_t time = base; time < base + 10000; ++time) {
            if (write(progress, &byte, 1) != 1) {
                _exit(3);
            }
            setState("clock.utcTime", time);
            runMaintenance(2);
        }
        _exit(0);
    }
};

TEST_F(OledRecordsCrash, KilledStoresLeaveWholeTablesAndLoseNothingCommitted) {
    setState("OledPanel.maintenanceResult", 0x300);
    std::mt19937 random(20240607);
    std::uniform_real_distribution<double> partOfARun(0, 1);
    const auto reported = [](int progress) {
        char byte = 0;
        return read(progress, &byte, 1) == 1;
    };

    int counts[3] = {};    // kills that left: no record file, an empty one, a table
    int64_t loadable = 0;  // the newest record the next start reads
    for (int iteration = 0; iteration < 150 && !HasFailure(); ++iteration) {
        int progress[2];
        ASSERT_EQ(pipe(progress), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(progress[0]);
            storeUntilKilled(static_cast<uint64_t>(iteration + 1) * 100000, progress[1]);
        }
        close(progress[1]);
        // The kill falls at a random moment of the child's second run: after its first run
        // (start-up included), as far into the next as a random part of the time that took,
        // however fast this machine (or its emulator) is.
        const auto started = std::chrono::steady_clock::now();
        const bool ran = reported(progress[0]) && reported(progress[0]);
        if (ran) {
            const auto run = std::chrono::steady_clock::now() - started;
            std::this_thread::sleep_for(
                std::chrono::duration_cast<std::chrono::microseconds>(run * partOfARun(random)));
        }
        kill(child, SIGKILL);
        close(progress[0]);
        ASSERT_TRUE(ran) << "the child did not finish a run";
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child ended by itself: " << status;

        const int64_t log = newestOfTable(readFile(kRecordsLog));
        newestOfTable(readFile(kRecordsOld));  // ".old", when there is one, is whole too
        // What the child started from is never lost: the record file holds it, or newer records
        // replaced it.
        EXPECT_GE(log, loadable) << "iteration " << iteration;
        ++counts[std::min<int64_t>(log + 1, 2)];
        loadable = std::max<int64_t>(log, 0);
    }
    std::cout << "[          ] kills that left no record file " << counts[0] << ", an empty one "
              << counts[1] << ", a table " << counts[2] << "\n";
    EXPECT_EQ(counts[0], 0) << "a kill left no record file";
    EXPECT_EQ(counts[1], 0) << "a kill left an empty record file";
    EXPECT_GT(counts[2], 0) << "no child ever stored";

    // The service itself reads what the last kill left: the record file, whole, and writes it
    // back after its own maintenance record.
    const std::string left = readFile(kRecordsLog);
    EXPECT_GT(newestOfTable(left), 0);
    setState("OledPanel.maintenanceResult", 0);
    startService();
    EXPECT_TRUE(logsContaining("PMR: failed open").empty());
    setState("clock.utcTime", 1);
    runMaintenance(1);
    EXPECT_EQ(readFile(kRecordsLog), "1:0:0\n" + left);
}

}  // namespace
}  // namespace sysctrltest
