// The operating-time records: loading the file, adding records and storing them.
#include "OledCareTest.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <random>
#include <sstream>

namespace sysctrltest {
namespace {

using sim::json;

// The records are seen through the file: a run whose only record is a "refresh time cleared"
// (type 3) at time 999 makes the service write its whole table.
class OledRecords : public OledCareTest {
  protected:
    void SetUp() override {
        OledCareTest::SetUp();
        setTempLut(1);
        setState("OledPanel.maintenanceResult", 0x200);
        setState("clock.utcTime", 999);
    }

    void start() {
        startService();
        clearLogs();
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
    const char* table;  // the file as written after the probe record
};

void PrintTo(const LoadCase& c, std::ostream* os) {
    *os << c.name;
}

class OledRecordsLoad : public OledRecords, public ::testing::WithParamInterface<LoadCase> {};

TEST_P(OledRecordsLoad, KeepsWhatIsValidAndSkipsTheRest) {
    writeFile(kRecordsLog, GetParam().file);
    start();
    EXPECT_EQ(addProbe(), GetParam().table);
    EXPECT_TRUE(logsContaining("failed").empty());
}

const std::string kNul(1, '\0');

INSTANTIATE_TEST_SUITE_P(
    Cases, OledRecordsLoad,
    ::testing::Values(
        LoadCase{"Empty", "", "999:0:3\n"},
        LoadCase{"TypesComeBackInTypeOrder", "5:50:3\n1:10:0\n2:20:1\n",
                 "1:10:0\n2:20:1\n999:0:3\n5:50:3\n"},
        LoadCase{"SevenOfOneTypeKeepsTheFirstFive",
                 "7:70:2\n6:60:2\n5:50:2\n4:40:2\n3:30:2\n2:20:2\n1:10:2\n",
                 "7:70:2\n6:60:2\n5:50:2\n4:40:2\n3:30:2\n999:0:3\n"},
        LoadCase{"SurplusOfOneTypeLeavesTheOthers",
                 "10:1:0\n30:3:3\n11:1:0\n12:1:0\n31:3:3\n13:1:0\n14:1:0\n15:1:0\n32:3:3\n",
                 "10:1:0\n11:1:0\n12:1:0\n13:1:0\n14:1:0\n999:0:3\n30:3:3\n31:3:3\n32:3:3\n"},
        LoadCase{"MalformedLinesAreSkipped", "1:10:0\n5:6:4\n1:2\nabc\n:1:1\n1::1\n2:20:1\n",
                 "1:10:0\n2:20:1\n999:0:3\n"},
        LoadCase{"OutOfRangeNumbersAreSkipped",
                 "18446744073709551616:1:0\n1:18446744073709551616:0\n1:2:4294967296\n"
                 "1:2:4294967299\n18446744073709551615:18446744073709551615:3\n",
                 "999:0:3\n18446744073709551615:18446744073709551615:3\n"},
        LoadCase{"EmptyLineEndsTheFile", "1:10:0\n\n2:20:1\n", "1:10:0\n999:0:3\n"},
        LoadCase{"LastLineWithoutLineFeed", "1:10:0\n2:20:1", "1:10:0\n2:20:1\n999:0:3\n"},
        LoadCase{"CarriageReturnsAreTolerated", "1:10:0\r\n2:20:1\r\n",
                 "1:10:0\n2:20:1\n999:0:3\n"},
        LoadCase{"TextAfterTheTypeIsIgnored", "1:10:0 first\n2:20:1:9\n",
                 "1:10:0\n2:20:1\n999:0:3\n"},
        LoadCase{"LineOf259CharactersIsWhole", std::string(253, '0') + "5:50:0\n3:30:2\n",
                 "5:50:0\n3:30:2\n999:0:3\n"},
        LoadCase{"LongerLineEndsLoadingAfterItsStart",
                 "1:10:0\n2:20:1" + std::string(300, ' ') + "\n3:30:2\n",
                 "1:10:0\n2:20:1\n999:0:3\n"},
        LoadCase{"LongerLineIsCutAt259Characters", std::string(257, '0') + "5:50:0\n3:30:2\n",
                 "999:0:3\n"},
        LoadCase{"BinaryLinesAreSkipped",
                 "\xff\xfe\x01\n1:10:0\n4:40" + kNul + ":2\n\x80:\x80:\x80\n2:20:1\n",
                 "1:10:0\n2:20:1\n999:0:3\n"},
        LoadCase{"LineStartingWithNulEndsTheFile", "1:10:0\n" + kNul + "2:20:1\n3:30:2\n",
                 "1:10:0\n999:0:3\n"}),
    [](const ::testing::TestParamInfo<LoadCase>& info) { return info.param.name; });

TEST_F(OledRecords, MissingFileAtStartLogsItsPath) {
    startService();
    EXPECT_EQ(messagesAt(1000),
              (std::vector<std::string>{"PMR: failed open " + rootPath(kRecordsLog) + ".\n"}));
    EXPECT_EQ(logsContaining("loadPMRecords(): PMR: failed open").size(), 1u);
    EXPECT_EQ(addProbe(), "999:0:3\n");
    EXPECT_EQ(readFile(kRecordsOld), "<missing>");
}

TEST_F(OledRecords, SixthRecordDropsTheOldestAndStandsFirst) {
    const std::string full = "5:0:3\n4:0:3\n3:0:3\n2:0:3\n1:0:3\n";
    writeFile(kRecordsLog, full);
    start();
    EXPECT_EQ(addProbe(6), "6:0:3\n5:0:3\n4:0:3\n3:0:3\n2:0:3\n");
    EXPECT_EQ(readFile(kRecordsOld), full);
    EXPECT_EQ(messages(), (std::vector<std::pair<uint16_t, std::string>>{
                              {4000, "Control Oled maintenance, flag = 0 \n"},
                              {4000, "OLED maintance: tmpLUT 1, flag 0\n"},
                              {4000, "oled maintenance begin\n"},
                              {4000, "oled maintenance end, ret = 512\n"},
                              {4000, "clear panel refresh time\n"},
                              {4000, "PMR: new record type:3 time:6.\n"}}));
}

TEST_F(OledRecords, OldFileHoldsWhatTheRecordFileHadBeforeEachStore) {
    writeFile(kRecordsOld, "stale\n");
    start();
    EXPECT_EQ(addProbe(1), "1:0:3\n");
    EXPECT_EQ(readFile(kRecordsOld), "stale\n") << "no record file to move yet";
    const std::string first = readFile(kRecordsLog);
    EXPECT_EQ(addProbe(2), "2:0:3\n1:0:3\n");
    EXPECT_EQ(readFile(kRecordsOld), first);
    const std::string second = readFile(kRecordsLog);
    EXPECT_EQ(addProbe(3), "3:0:3\n2:0:3\n1:0:3\n");
    EXPECT_EQ(readFile(kRecordsOld), second);
}

TEST_F(OledRecords, RecordFileIsReadableByAllWhateverTheUmask) {
    start();
    const mode_t previous = umask(0);
    addProbe();
    umask(previous);
    struct stat status {};
    ASSERT_EQ(stat(rootPath(kRecordsLog).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644u);
}

struct RunningTimeCase {
    const char* name;
    const char* content;  // null: no file
    const char* line;
};

void PrintTo(const RunningTimeCase& c, std::ostream* os) {
    *os << c.name;
}

class OledRecordsRunningTime : public OledRecords,
                               public ::testing::WithParamInterface<RunningTimeCase> {};

TEST_P(OledRecordsRunningTime, SecondFieldIsTheSetsRunningTime) {
    const RunningTimeCase& c = GetParam();
    if (c.content != nullptr) {
        writeFile(kRunningTime, c.content);
    }
    start();
    EXPECT_EQ(addProbe(), c.line);
    EXPECT_TRUE(logsContaining("failed").empty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, OledRecordsRunningTime,
    ::testing::Values(RunningTimeCase{"Number", "12345", "999:12345:3\n"},
                      RunningTimeCase{"NumberWithBlanks", "  42\n", "999:42:3\n"},
                      RunningTimeCase{"Largest", "18446744073709551615",
                                      "999:18446744073709551615:3\n"},
                      RunningTimeCase{"Absent", nullptr, "999:0:3\n"},
                      RunningTimeCase{"EmptyFile", "", "999:0:3\n"},
                      RunningTimeCase{"NotANumber", "abc", "999:0:3\n"},
                      RunningTimeCase{"TooLarge", "18446744073709551616", "999:0:3\n"}),
    [](const ::testing::TestParamInfo<RunningTimeCase>& info) { return info.param.name; });

TEST_F(OledRecords, UnwritableDirectoryKeepsTheHistoryInMemory) {
    // A file where the directory should be: nothing under it can be opened, even by root.
    std::filesystem::remove_all(rootPath("/var/tvservice"));
    writeFile("/var/tvservice", "not a directory");
    start();

    addProbe(1);
    addProbe(2);
    const std::string failed = "PMR: failed open " + rootPath(kRecordsLog) + ".\n";
    EXPECT_EQ(messagesAt(1000), (std::vector<std::string>{failed, failed}));
    EXPECT_EQ(logsContaining("storePMRecords(): PMR: failed open").size(), 2u);

    std::filesystem::remove(rootPath("/var/tvservice"));
    std::filesystem::create_directories(rootPath("/var/tvservice"));
    EXPECT_EQ(addProbe(3), "3:0:3\n2:0:3\n1:0:3\n");
}

// Writes the records again and again in a child process and kills it at random moments. A store
// renames the record file to ".old", rewrites it and syncs, so after a kill every file left is a
// whole table: the new one, the previous one, or an empty record file (killed before the rewrite
// reached the disk); or the record file is missing (killed between the rename and the rewrite).
// The loader reads only the record file, so in the last two cases the next start begins with an
// empty history while ".old" still holds the previous one.
class OledRecordsCrash : public OledCareTest {
  protected:
    struct Table {
        bool exists = false;
        std::string content;
        uint64_t newest = 0;
        size_t lines = 0;
    };

    // Reads a records file and checks that it is a table as the service writes it: whole lines
    // "time:running:type", types ascending, at most five of a type, newest first.
    Table readTable(const char* systemPath) {
        Table table;
        const std::string content = readFile(systemPath);
        if (content == "<missing>") {
            return table;
        }
        table.exists = true;
        table.content = content;
        EXPECT_TRUE(content.empty() || content.back() == '\n') << systemPath << ": " << content;
        std::istringstream in(content);
        std::string line;
        unsigned int lastType = 0;
        unsigned int ofType = 0;
        uint64_t lastTime = 0;
        while (std::getline(in, line)) {
            unsigned long long time = 0;
            unsigned long long running = 0;
            unsigned int type = 0;
            char end = 0;
            const int fields =
                sscanf(line.c_str(), "%20llu:%20llu:%u%c", &time, &running, &type, &end);
            EXPECT_EQ(fields, 3) << systemPath << ": \"" << line << "\"";
            EXPECT_LE(type, 3u) << line;
            const bool sameType = table.lines > 0 && type == lastType;
            EXPECT_TRUE(table.lines == 0 || type >= lastType) << "type order: " << content;
            ofType = sameType ? ofType + 1 : 1;
            EXPECT_LE(ofType, 5u) << content;
            if (sameType) {
                EXPECT_LE(time, lastTime) << "newest first: " << content;
            }
            lastType = type;
            lastTime = time;
            table.newest = std::max<uint64_t>(table.newest, time);
            ++table.lines;
        }
        return table;
    }

    // The child: starts the service on what the files hold and runs maintenance forever, each
    // run adding four records (at time base, base + 1, ...), until it is killed.
    [[noreturn]] void storeUntilKilled(uint64_t base) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (app().setupDone() != 0 || app().start() != 0) {
            _exit(2);
        }
        std::string error;
        for (uint64_t time = base; time < base + 10000; ++time) {
            sim().setState("clock.utcTime", time, error);
            frame::MsgIds ids = msgIds(1);
            service().controlOledMaint(ids, transport(1), 2);
            zo::host::waitForThreads();
        }
        _exit(0);
    }
};

TEST_F(OledRecordsCrash, KilledStoresLeaveWholeTablesAndLoseNothingCommitted) {
    setState("OledPanel.maintenanceResult", 0x300);
    std::mt19937 random(20240607);
    std::uniform_int_distribution<int> delayMicroseconds(0, 40000);

    int withRecordFile = 0;
    int withEmptyRecordFile = 0;
    int withOldOnly = 0;
    uint64_t loadable = 0;  // the newest record the next start reads
    const int kIterations = 150;
    int kills = 0;
    for (int iteration = 0; iteration < kIterations; ++iteration) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            storeUntilKilled(static_cast<uint64_t>(iteration + 1) * 100000);
        }
        usleep(static_cast<useconds_t>(delayMicroseconds(random)));
        kill(child, SIGKILL);
        ++kills;
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child ended by itself: " << status;

        const Table log = readTable(kRecordsLog);
        const Table old = readTable(kRecordsOld);
        // What the child started from is never lost: it is in one of the two files, or newer
        // records replaced it.
        EXPECT_GE(std::max(log.newest, old.newest), loadable) << "iteration " << iteration;
        if (!log.exists) {
            ++withOldOnly;
        } else if (log.lines == 0) {
            ++withEmptyRecordFile;
        } else {
            ++withRecordFile;
        }
        loadable = log.newest;
        if (HasFailure()) {
            break;
        }
    }
    std::cout << "[          ] after " << kills << " kills: record file " << withRecordFile
              << ", empty record file " << withEmptyRecordFile << ", only .old " << withOldOnly
              << "\n";
    EXPECT_GT(withRecordFile, 0) << "no child ever stored";

    // The service itself reads what the last kill left: the record file, whole. One more
    // maintenance record goes first in the table it writes back.
    const Table left = readTable(kRecordsLog);
    setTempLut(1);
    setState("OledPanel.maintenanceResult", 0);
    startService();
    EXPECT_EQ(logsContaining("PMR: failed open").size(), left.exists ? 0u : 1u);
    setState("clock.utcTime", 1);
    runMaintenance(1);

    std::istringstream in(left.content);
    std::string expected = "1:0:0\n";
    int maintenance = 0;
    for (std::string line; std::getline(in, line);) {
        const bool isMaintenance = line.size() >= 2 && line.compare(line.size() - 2, 2, ":0") == 0;
        if (isMaintenance && ++maintenance > 4) {
            continue;  // the oldest of a full list makes room
        }
        expected += line + "\n";
    }
    EXPECT_EQ(readFile(kRecordsLog), expected);
}

}  // namespace
}  // namespace sysctrltest
