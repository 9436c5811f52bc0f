// The operating-time records under faults. A child process makes a series of stores and kills
// itself right after one of their file calls, for every call in turn; then a fresh service loads
// what the kill left, and what a power cut at that moment would have left. Stores that cannot
// write (a full disk, a failing call) leave the files as they were.
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <set>
#include <sstream>

#include "FileCalls.h"
#include "FolderModel.h"
#include "OledCareFixture.h"

namespace sysctrltest {
namespace {

using crashtest::DataLoss;
using crashtest::Folder;
using crashtest::FolderModel;
using crashtest::JournalEntry;

const char kRecordsFolder[] = "/var/tvservice";
const char kLogName[] = "oled_maintance_records.log";
const char kOldName[] = "oled_maintance_records.old";
const char kRunningName[] = "tvRunningTime";
// A half table, as a store cut short may leave in a file of its own.
const char kHalfTable[] = "99:7:0\n98:7";

// One record, added by a maintenance run whose flag and result make that record alone (with
// temperature table 1).
struct Step {
    int type;
    uint64_t time;
};

// The records files after each step: the state before step i is boundaries[i].
struct Boundary {
    std::string log;
    std::string old;
};

// A child process, killed and reaped when a test leaves before waiting for it.
class Child {
  public:
    explicit Child(pid_t pid) : m_pid(pid) {}
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        if (m_pid > 0) {
            kill(m_pid, SIGKILL);
            waitpid(m_pid, nullptr, 0);
        }
    }
    // The status waitpid reports, -1 when it fails.
    int wait() {
        int status = 0;
        const pid_t pid = m_pid;
        m_pid = -1;
        return waitpid(pid, &status, 0) == pid ? status : -1;
    }

  private:
    pid_t m_pid;
};

// The table a file gives the loader: a missing file gives none.
std::string tableOf(const std::string& content) {
    return content == "<missing>" ? "" : content;
}

std::string quoted(const std::string& text) {
    std::ostringstream out;
    out << '"';
    for (const char c : text) {
        if (c == '\n') {
            out << "\\n";
        } else if (c == '\0') {
            out << "\\0";
        } else {
            out << c;
        }
    }
    out << '"';
    return out.str();
}

// The calls of a journal, without its notes.
std::vector<JournalEntry> fileCallsOf(const std::vector<JournalEntry>& journal) {
    std::vector<JournalEntry> calls;
    for (const JournalEntry& entry : journal) {
        if (entry.call != "note") {
            calls.push_back(entry);
        }
    }
    return calls;
}

// The records files the child noted where each step began and after the last.
std::vector<Boundary> boundariesOf(const std::vector<JournalEntry>& journal) {
    std::vector<Boundary> boundaries;
    for (const JournalEntry& entry : journal) {
        if (entry.call == "note" && entry.name == "log") {
            boundaries.push_back(Boundary{entry.data, ""});
        } else if (entry.call == "note" && entry.name == "old" && !boundaries.empty()) {
            boundaries.back().old = entry.data;
        }
    }
    return boundaries;
}

// The names the calls created in the folder besides the records files.
std::set<std::string> temporaryNames(const std::vector<JournalEntry>& journal) {
    std::set<std::string> names;
    for (const JournalEntry& entry : journal) {
        const bool created =
            entry.result >= 0 &&
            ((entry.call == "open" && (entry.flags & O_CREAT) != 0) || entry.call == "link");
        const std::string name = entry.call == "link" ? entry.name2 : entry.name;
        if (created && name != kLogName && name != kOldName) {
            names.insert(name);
        }
    }
    return names;
}

class RecordsTest : public OledCareFixture {
  protected:
    void SetUp() override {
        OledCareFixture::SetUp();
        setTempLut(1);
        m_folder = rootPath(kRecordsFolder);
    }

    void TearDown() override {
        crashtest::clearWatch();
        OledCareFixture::TearDown();
    }

    // Adds the step's record through a maintenance run.
    void addRecord(const Step& step) {
        static const struct {
            unsigned int flag;
            int result;
        } kRuns[] = {{1, 0}, {0, 0x100}, {2, 0}, {0, 0x200}};
        setState("OledPanel.maintenanceResult", kRuns[step.type].result);
        setState("clock.utcTime", step.time);
        runMaintenance(kRuns[step.type].flag);
    }

    std::set<std::string> namesInFolder() const {
        std::set<std::string> names;
        for (const auto& [name, file] : crashtest::readFolder(m_folder).names) {
            names.insert(name);
        }
        return names;
    }

    static Folder folderOf(const std::map<std::string, std::string>& files) {
        Folder folder;
        for (const auto& [name, content] : files) {
            folder.names[name] = static_cast<int>(folder.contents.size());
            folder.contents[folder.names[name]] = content;
        }
        return folder;
    }

    std::string m_folder;
};

struct Scenario {
    const char* name;
    std::map<std::string, std::string> files;  // in the records folder at the start
    std::vector<Step> steps;
    std::string table;  // the record file after the last step
    // A half table under every name besides the records files that a store writes to, as an
    // earlier store cut short would leave it.
    bool staleTemporaries;
};

void PrintTo(const Scenario& scenario, std::ostream* os) {
    *os << scenario.name;
}

// One way the store may end: killed after a call, with or without a power cut.
struct Ending {
    long point;
    std::string call;   // the last call made
    size_t step;        // the step under way
    std::string label;  // what the crash did to the files
};

class RecordsCrash : public RecordsTest, public ::testing::WithParamInterface<Scenario> {
  protected:
    struct Run {
        int status;
        std::vector<JournalEntry> journal;
    };

    // Makes the scenario's stores in a child process on the files the folder holds, counting and
    // journalling the file calls, killed right after the call `killAt` (0: never).
    Run runChild(long killAt, bool realFlushes) {
        recreateService();
        const std::string journalPath = m_root + "/journal";
        const int journal =
            open(journalPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600);
        Run run{-1, {}};
        if (journal < 0) {
            ADD_FAILURE() << "cannot open " << journalPath;
            return run;
        }
        const pid_t pid = fork();
        if (pid == 0) {
            makeStores(journal, killAt, realFlushes);
        }
        close(journal);
        if (pid < 0) {
            ADD_FAILURE() << "fork failed";
            return run;
        }
        Child child(pid);
        run.status = child.wait();
        run.journal = crashtest::readJournal(journalPath);
        return run;
    }

    [[noreturn]] void makeStores(int journal, long killAt, bool realFlushes) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (app().setupDone() != 0 || app().start() != 0) {
            _exit(2);
        }
        crashtest::Watch watch;
        watch.folder = m_folder;
        watch.count = true;
        watch.journal = journal;
        watch.killAt = killAt;
        watch.realFlushes = realFlushes;
        crashtest::setWatch(watch);
        for (const Step& step : GetParam().steps) {
            noteRecordsFiles();
            addRecord(step);
        }
        noteRecordsFiles();
        _exit(0);
    }

    void noteRecordsFiles() {
        crashtest::writeNote("log", readFile(kRecordsLog));
        crashtest::writeNote("old", readFile(kRecordsOld));
    }

    // Learns the names a store writes to besides the records files, from a run on the plain
    // files, and puts a half table under each.
    void addStaleTemporaries(Folder& start) {
        crashtest::writeFolder(m_folder, start);
        const Run plain = runChild(0, false);
        ASSERT_TRUE(WIFEXITED(plain.status) && WEXITSTATUS(plain.status) == 0) << plain.status;
        const std::set<std::string> names = temporaryNames(plain.journal);
        ASSERT_FALSE(names.empty()) << "a store writes no file besides the records files";
        for (const std::string& name : names) {
            const int file = static_cast<int>(start.contents.size());
            start.names[name] = file;
            start.contents[file] = kHalfTable;
        }
    }

    // Kills the stores right after call `point`, then checks what is left, and each way a power
    // cut at that moment could leave the data and the names, once.
    void crashAt(long point, const Folder& start) {
        crashtest::writeFolder(m_folder, start);
        const Run run = runChild(point, false);
        const std::vector<JournalEntry> calls = fileCallsOf(run.journal);
        const size_t boundaries = boundariesOf(run.journal).size();
        Ending ending{point, calls.empty() ? "" : crashtest::describe(calls.back()), boundaries - 1,
                      "killed"};
        if (!WIFSIGNALED(run.status) || WTERMSIG(run.status) != SIGKILL ||
            calls.size() != static_cast<size_t>(point) || boundaries == 0 ||
            boundaries >= m_boundaries.size()) {
            m_problems.push_back(where(ending) + ": not killed there (status " +
                                 std::to_string(run.status) + ", " + std::to_string(calls.size()) +
                                 " calls)");
            return;
        }
        FolderModel model(start);
        for (const JournalEntry& call : calls) {
            model.apply(call);
        }
        const Folder killed = crashtest::readFolder(m_folder);
        if (model.now().key() != killed.key()) {
            m_problems.push_back(where(ending) + ": the files are not what the calls made");
        }
        const std::vector<std::pair<std::string, Folder>> states = statesLeft(killed, model);
        m_killedStates += 1;
        m_powerCutStates += states.size() - 1;
        std::istringstream problems(inChild([&] {
            std::string found;
            for (size_t i = 0; i < states.size(); ++i) {
                if (i > 0) {
                    crashtest::writeFolder(m_folder, states[i].second);
                }
                ending.label = states[i].first;
                const std::string problem = check(ending, states[i].second);
                found += problem.empty() ? "" : where(ending) + ": " + problem + "\n";
            }
            return found;
        }));
        for (std::string problem; std::getline(problems, problem);) {
            m_problems.push_back(problem);
        }
    }

    // What the kill left, then what a power cut could leave, each once, with what made it.
    static std::vector<std::pair<std::string, Folder>> statesLeft(const Folder& killed,
                                                                  const FolderModel& model) {
        std::vector<std::pair<std::string, Folder>> states{{"killed", killed}};
        std::set<std::string> seen{killed.key()};
        const std::string changes = std::to_string(model.unflushedChanges());
        for (const DataLoss loss : {DataLoss::kTruncated, DataLoss::kZeroed}) {
            for (size_t kept = 0; kept <= model.unflushedChanges(); ++kept) {
                const Folder left = model.afterPowerCut(kept, loss);
                if (seen.insert(left.key()).second) {
                    states.emplace_back(std::string("power cut, unflushed data ") +
                                            (loss == DataLoss::kTruncated ? "cut off" : "zeroed") +
                                            ", " + std::to_string(kept) + " of " + changes +
                                            " unflushed changes of names kept",
                                        left);
                }
            }
        }
        return states;
    }

    static std::string where(const Ending& ending) {
        return "crash point " + std::to_string(ending.point) + " (after " + ending.call +
               ") in step " + std::to_string(ending.step + 1) + ", " + ending.label;
    }

    // The record file must hold the table before or after the step under way, ".old" what it
    // held before or after, and a fresh service must load that table and store it again.
    std::string check(const Ending& ending, const Folder& left) {
        const Boundary& before = m_boundaries[ending.step];
        const Boundary& after = m_boundaries[ending.step + 1];
        const std::string log = left.content(kLogName);
        const std::string old = left.content(kOldName);
        if (log != before.log && log != after.log) {
            return "the record file holds " + quoted(log) + ", not " + quoted(before.log) + " or " +
                   quoted(after.log);
        }
        if (old != before.old && old != after.old) {
            return "\".old\" holds " + quoted(old) + ", not " + quoted(before.old) + " or " +
                   quoted(after.old);
        }
        return loadAndStore(left, {tableOf(before.log), tableOf(after.log)});
    }

    // Runs `check` in a child process and returns what it returned. This process runs the
    // service only in children: it never has a thread of the service's that may not have ended
    // yet (they are detached) when it forks, which a sanitizer would refuse.
    std::string inChild(const std::function<std::string()>& check) {
        const std::string resultPath = m_root + "/result";
        std::remove(resultPath.c_str());
        const pid_t pid = fork();
        if (pid == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            std::ofstream(resultPath, std::ios::binary) << check();
            _exit(0);
        }
        if (pid < 0) {
            return "fork failed";
        }
        Child child(pid);
        const int status = child.wait();
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            return "the checking process ended with status " + std::to_string(status);
        }
        std::ifstream in(resultPath, std::ios::binary);
        std::ostringstream problem;
        problem << in.rdbuf();
        return problem.str();
    }

    // A fresh service on what was left adds one record of a type the scenario does not use: it
    // must have loaded one of `tables`, keep the record file as ".old" and leave no other file.
    std::string loadAndStore(const Folder& left, const std::set<std::string>& tables) {
        recreateService();
        if (app().setupDone() != 0 || app().start() != 0) {
            return "a fresh service did not start";
        }
        clearLogs();
        addRecord(Step{3, 1});
        const std::string written = readFile(kRecordsLog);
        const std::string probe = "1:" + GetParam().files.at(kRunningName) + ":3\n";
        const size_t tableEnd = written.size() - std::min(written.size(), probe.size());
        if (written.substr(tableEnd) != probe || tables.count(written.substr(0, tableEnd)) == 0) {
            return "a fresh service stored " + quoted(written) + " after loading";
        }
        const bool hadLog = left.names.count(kLogName) != 0;
        const std::string old = left.content(hadLog ? kLogName : kOldName);
        if (readFile(kRecordsOld) != old) {
            return "the next store left " + quoted(readFile(kRecordsOld)) + " as \".old\", not " +
                   quoted(old);
        }
        std::set<std::string> names{kLogName, kRunningName};
        if (old != "<missing>") {
            names.insert(kOldName);
        }
        if (namesInFolder() != names) {
            std::string left;
            for (const std::string& name : namesInFolder()) {
                left += " " + name;
            }
            return "the next store left the files" + left;
        }
        if (!logsContaining("PMR: failed").empty()) {
            return "the next store failed: " + logsContaining("PMR: failed").front();
        }
        return "";
    }

    std::vector<Boundary> m_boundaries;
    std::vector<std::string> m_problems;
    size_t m_killedStates = 0;
    size_t m_powerCutStates = 0;
};

TEST_P(RecordsCrash, NoStoredRecordIsLostAndNoHalfTableLoadedWhereverTheStoreStops) {
    Folder start = folderOf(GetParam().files);
    if (GetParam().staleTemporaries) {
        ASSERT_NO_FATAL_FAILURE(addStaleTemporaries(start));
    }
    // The fresh services' stores flush nothing: what a flush makes durable is modelled.
    crashtest::Watch watch;
    watch.folder = m_folder;
    watch.realFlushes = false;
    crashtest::setWatch(watch);

    // An uninterrupted run, with real flushes, counts the calls and notes the files between steps.
    crashtest::writeFolder(m_folder, start);
    const Run reference = runChild(0, true);
    ASSERT_TRUE(WIFEXITED(reference.status) && WEXITSTATUS(reference.status) == 0)
        << reference.status;
    const std::vector<JournalEntry> calls = fileCallsOf(reference.journal);
    m_boundaries = boundariesOf(reference.journal);
    ASSERT_EQ(m_boundaries.size(), GetParam().steps.size() + 1);
    EXPECT_EQ(m_boundaries.back().log, GetParam().table);
    FolderModel model(start);
    for (const JournalEntry& call : calls) {
        model.apply(call);
    }
    EXPECT_EQ(model.now().key(), crashtest::readFolder(m_folder).key())
        << "the files are not what the journalled calls made: a call was not seen";
    ASSERT_FALSE(calls.empty());

    for (long point = 1; point <= static_cast<long>(calls.size()); ++point) {
        crashAt(point, start);
    }
    std::cout << "[          ] " << calls.size()
              << " crash points; states loaded: " << m_killedStates << " after a kill, "
              << m_powerCutStates << " after a power cut\n";
    std::ostringstream first;
    for (size_t i = 0; i < m_problems.size() && i < 8; ++i) {
        first << m_problems[i] << "\n";
    }
    EXPECT_TRUE(m_problems.empty()) << m_problems.size() << " problems, the first:\n"
                                    << first.str();
}

const std::string kFullTypeZero = "15:7:0\n14:7:0\n13:7:0\n12:7:0\n11:7:0\n";

INSTANTIATE_TEST_SUITE_P(
    Scenarios, RecordsCrash,
    ::testing::Values(Scenario{"TableGrowsFromNoFile",
                               {{kRunningName, "7"}},
                               {{0, 1}, {2, 2}, {0, 3}, {1, 4}},
                               "3:7:0\n1:7:0\n4:7:1\n2:7:2\n",
                               false},
                      Scenario{"FullTableDropsItsOldest",
                               {{kLogName, kFullTypeZero + "10:7:2\n"},
                                {kOldName, "14:7:0\n13:7:0\n12:7:0\n11:7:0\n10:7:2\n"},
                                {kRunningName, "7"}},
                               {{0, 16}, {0, 17}, {2, 18}},
                               "17:7:0\n16:7:0\n15:7:0\n14:7:0\n13:7:0\n18:7:2\n10:7:2\n",
                               false},
                      Scenario{"StaleTemporariesOfAnEarlierCrash",
                               {{kLogName, "5:7:0\n"}, {kOldName, "4:7:0\n"}, {kRunningName, "7"}},
                               {{2, 6}, {0, 7}},
                               "7:7:0\n5:7:0\n6:7:2\n",
                               true}),
    [](const ::testing::TestParamInfo<Scenario>& info) { return info.param.name; });

struct FailureCase {
    const char* name;
    crashtest::Fault fault;
    long freeBytes;
    size_t writeLimit;
    const char* failure;  // the failed step the store logs; null when the store succeeds
    const char* log;      // the files after the store
    const char* old;
};

void PrintTo(const FailureCase& c, std::ostream* os) {
    *os << c.name;
}

class RecordsStoreFailure : public RecordsTest,
                            public ::testing::WithParamInterface<FailureCase> {};

const char kLogBefore[] = "3:7:0\n2:7:0\n";
const char kOldBefore[] = "1:7:0\n";
const char kLogAfter[] = "3:7:0\n2:7:0\n10:7:2\n";

TEST_P(RecordsStoreFailure, LeavesTheFilesAsTheyWereAndTheNextStoreWritesEverything) {
    const FailureCase& failure = GetParam();
    writeFile(kRecordsLog, kLogBefore);
    writeFile(kRecordsOld, kOldBefore);
    writeFile(kRunningTime, "7");
    startService();
    clearLogs();

    crashtest::Watch watch;
    watch.folder = m_folder;
    watch.fault = failure.fault;
    watch.freeBytes = failure.freeBytes;
    watch.writeLimit = failure.writeLimit;
    crashtest::setWatch(watch);
    addRecord(Step{2, 10});
    crashtest::clearWatch();

    EXPECT_EQ(readFile(kRecordsLog), failure.log);
    EXPECT_EQ(readFile(kRecordsOld), failure.old);
    EXPECT_EQ(namesInFolder(), (std::set<std::string>{kLogName, kOldName, kRunningName}))
        << "no file of the store is left behind";
    Texts failed;
    if (failure.failure != nullptr) {
        failed.push_back(std::string("PMR: failed ") + failure.failure + " " +
                         rootPath(kRecordsLog) + ".\n");
    }
    EXPECT_EQ(messagesAt(1000), failed);
    EXPECT_EQ(logsContaining("storePMRecords(): PMR: failed").size(), failed.size());

    // The records stayed in memory: the next store writes them all.
    const std::string previous = readFile(kRecordsLog);
    clearLogs();
    addRecord(Step{0, 11});
    EXPECT_EQ(readFile(kRecordsLog), std::string("11:7:0\n") + kLogAfter);
    EXPECT_EQ(readFile(kRecordsOld), previous);
    EXPECT_TRUE(messagesAt(1000).empty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RecordsStoreFailure,
    ::testing::Values(
        FailureCase{"DiskFullAtTheFirstByte", {}, 0, 0, "write", kLogBefore, kOldBefore},
        FailureCase{"DiskFullHalfWay", {}, 9, 0, "write", kLogBefore, kOldBefore},
        FailureCase{
            "NoRoomForTheNewFile", {"open", 1, ENOSPC}, -1, 0, "open", kLogBefore, kOldBefore},
        FailureCase{
            "ModeCannotBeSet", {"fchmod", 1, EPERM}, -1, 0, "write", kLogBefore, kOldBefore},
        FailureCase{"FlushFails", {"fsync", 1, EIO}, -1, 0, "write", kLogBefore, kOldBefore},
        FailureCase{"CloseFails", {"close", 1, EIO}, -1, 0, "write", kLogBefore, kOldBefore},
        // Only the previous version is lost: the new table is complete.
        FailureCase{"NewTableCannotTakeItsPlace",
                    {"rename", 2, EIO},
                    -1,
                    0,
                    "write",
                    kLogBefore,
                    kLogBefore},
        // A file system without hard links keeps the records, not the previous version.
        FailureCase{"PreviousVersionCannotBeLinked",
                    {"link", 1, EPERM},
                    -1,
                    0,
                    nullptr,
                    kLogAfter,
                    kOldBefore},
        FailureCase{"ShortWritesMakeAWholeTable", {}, -1, 3, nullptr, kLogAfter, kLogBefore}),
    [](const ::testing::TestParamInfo<FailureCase>& info) { return info.param.name; });

}  // namespace
}  // namespace sysctrltest
