// The operating-time records of panel-care events, kept in memory and in a file.
#include "Application.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "SysctrlLog.h"
#include "zo/Clock.h"
#include "zo/FileSystem.h"

namespace sysctrlservice {
namespace {

const char kRecordsFolder[] = "/var/tvservice";
const char kRecordsPath[] = "/var/tvservice/oled_maintance_records.log";
const char kOldRecordsPath[] = "/var/tvservice/oled_maintance_records.old";
const char kRunningTimePath[] = "/var/tvservice/tvRunningTime";
// A store writes the new table here before it takes the record file's name.
const char kNewRecordsPath[] = "/var/tvservice/oled_maintance_records.log.tmp";
// The record file's second name while it becomes ".old".
const char kOldLinkPath[] = "/var/tvservice/oled_maintance_records.old.tmp";
const mode_t kRecordsMode = 0644;

const size_t kRecordsPerType = 5;
// One line of the file is read into this buffer; longer lines are cut at its size less one.
const size_t kLineBufferSize = 260;

// Reads one unsigned decimal field the way "%llu" does (blanks and a sign allowed in front), but
// refuses a value that does not fit instead of wrapping it. Returns the character after it, or
// null.
const char* readField(const char* text, unsigned long long& value) {
    char* end = nullptr;
    errno = 0;
    value = strtoull(text, &end, 10);
    if (end == text || errno == ERANGE) {
        return nullptr;
    }
    return end;
}

// A line "time:running:type"; anything after the type is ignored.
bool parseRecordLine(const char* line, PMRecord& record, unsigned int& type) {
    unsigned long long time = 0;
    unsigned long long running = 0;
    unsigned long long typeValue = 0;
    const char* next = readField(line, time);
    if (next == nullptr || *next != ':') {
        return false;
    }
    next = readField(next + 1, running);
    if (next == nullptr || *next != ':') {
        return false;
    }
    next = readField(next + 1, typeValue);
    if (next == nullptr || typeValue >= PMR_TYPE_COUNT) {
        return false;
    }
    record.time = time;
    record.runningTime = running;
    type = static_cast<unsigned int>(typeValue);
    return true;
}

// The set's accumulated running time as another part of the system keeps it; 0 when unknown.
uint64_t readRunningTime() {
    std::ifstream in(zo::fs::path(kRunningTimePath));
    unsigned long long value = 0;
    if (!in || !(in >> value)) {
        return 0;
    }
    return value;
}

// The table as the record file holds it: types in order, each list newest first.
std::string formatRecords(const PMRecordList (&records)[PMR_TYPE_COUNT]) {
    std::string text;
    char line[64];
    for (unsigned int type = 0; type < PMR_TYPE_COUNT; ++type) {
        for (const PMRecord& record : records[type]) {
            snprintf(line, sizeof line, "%llu:%llu:%u\n",
                     static_cast<unsigned long long>(record.time),
                     static_cast<unsigned long long>(record.runningTime), type);
            text += line;
        }
    }
    return text;
}

// Writes all of `text`; a write may take only part of it.
bool writeAll(int fd, const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = write(fd, text.data() + done, text.size() - done);
        if (written <= 0) {
            return false;
        }
        done += static_cast<size_t>(written);
    }
    return true;
}

enum class TableWrite { kWritten, kNotCreated, kNotWritten };

// Writes the table into a new file at `path`, readable by all whatever the umask and on the disk
// before it returns. A file that could not be written whole is removed.
TableWrite writeTable(const std::string& path, const std::string& text) {
    // Left by a store that was cut short; never the record file itself.
    unlink(path.c_str());
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kRecordsMode);
    if (fd < 0) {
        return TableWrite::kNotCreated;
    }
    // The mode first, so that the flush takes it to the disk too.
    bool written = writeAll(fd, text) && fchmod(fd, kRecordsMode) == 0 && fsync(fd) == 0;
    written = close(fd) == 0 && written;
    if (!written) {
        unlink(path.c_str());
        return TableWrite::kNotWritten;
    }
    return TableWrite::kWritten;
}

// Makes the record file ".old" as well, replacing the earlier ".old" in one step. A missing
// record file leaves ".old" as it is; so does a file system without hard links.
void keepPrevious(const std::string& records, const std::string& link, const std::string& old) {
    // Left by a store that was cut short between the link and the rename.
    unlink(link.c_str());
    if (::link(records.c_str(), link.c_str()) != 0) {
        return;
    }
    rename(link.c_str(), old.c_str());
    // When ".old" already was the record file (a store cut short between its two renames),
    // rename leaves both names.
    unlink(link.c_str());
}

// Takes the folder's new names to the disk.
void syncFolder(const std::string& folder) {
    const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        fsync(fd);
        close(fd);
    }
}

}  // namespace

void Application::loadPMRecords() {
    const std::string path = zo::fs::path(kRecordsPath);
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): PMR: failed open %s.\n", path.c_str());
        return;
    }

    char line[kLineBufferSize] = {};
    for (;;) {
        in.getline(line, sizeof line);
        // An empty line, or nothing left to read, ends the records.
        if (line[0] == '\0') {
            break;
        }
        PMRecord record;
        unsigned int type = 0;
        if (parseRecordLine(line, record, type) && m_pmRecords[type].size() < kRecordsPerType) {
            m_pmRecords[type].push_back(record);
        }
        // A line too long for the buffer leaves the stream failed: its first part was the last
        // one parsed.
        if (in.eof() || in.fail()) {
            break;
        }
    }
}

void Application::addPMRecord(PMRType type) {
    const unsigned int index = static_cast<unsigned int>(type);
    if (index >= PMR_TYPE_COUNT) {
        return;
    }
    const uint64_t now = zo::clock::getUtcTime();
    const PMRecord record{now, readRunningTime()};

    PMRecordList& records = m_pmRecords[index];
    if (records.size() >= kRecordsPerType) {
        records.pop_back();
    }
    records.insert(records.begin(), record);
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): PMR: new record type:%d time:%llu.\n",
                static_cast<int>(index), static_cast<unsigned long long>(now));
    storePMRecords();
}

// At every moment the record file holds a whole table, the previous or the new one, on the disk as
// well as in the process: the new table is written and flushed under a name of its own, then
// takes the record file's name in one rename.
void Application::storePMRecords() {
    const std::string path = zo::fs::path(kRecordsPath);
    const std::string newPath = zo::fs::path(kNewRecordsPath);
    switch (writeTable(newPath, formatRecords(m_pmRecords))) {
        case TableWrite::kWritten:
            break;
        case TableWrite::kNotCreated:
            SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): PMR: failed open %s.\n", path.c_str());
            return;
        case TableWrite::kNotWritten:
            // The records stay in memory; the next store writes them all again.
            SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): PMR: failed write %s.\n", path.c_str());
            return;
    }
    keepPrevious(path, zo::fs::path(kOldLinkPath), zo::fs::path(kOldRecordsPath));
    if (rename(newPath.c_str(), path.c_str()) != 0) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): PMR: failed write %s.\n", path.c_str());
        unlink(newPath.c_str());
        return;
    }
    syncFolder(zo::fs::path(kRecordsFolder));
    // A record must survive a power cut right after the run that made it.
    sync();
}

}  // namespace sysctrlservice
