// The operating-time records of panel-care events, kept in memory and in a file.
#include "Application.h"

#include <errno.h>
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

const char kRecordsPath[] = "/var/tvservice/oled_maintance_records.log";
const char kOldRecordsPath[] = "/var/tvservice/oled_maintance_records.old";
const char kRunningTimePath[] = "/var/tvservice/tvRunningTime";

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

void Application::storePMRecords() {
    const std::string path = zo::fs::path(kRecordsPath);
    // The previous version stays behind as ".old" until the new one is complete; a missing
    // ".log" leaves the ".old" as it is.
    rename(path.c_str(), zo::fs::path(kOldRecordsPath).c_str());

    FILE* file = fopen(path.c_str(), "w");
    if (file == nullptr) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): PMR: failed open %s.\n", path.c_str());
        return;
    }
    for (unsigned int type = 0; type < PMR_TYPE_COUNT; ++type) {
        for (const PMRecord& record : m_pmRecords[type]) {
            fprintf(file, "%llu:%llu:%u\n", static_cast<unsigned long long>(record.time),
                    static_cast<unsigned long long>(record.runningTime), type);
        }
    }
    const bool written = ferror(file) == 0;
    if (fclose(file) != 0 || !written) {
        // The records stay in memory; the next store writes them all again.
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): PMR: failed write %s.\n", path.c_str());
    }
    chmod(path.c_str(), 0644);
    // A record must survive a power cut right after the run that made it.
    sync();
}

}  // namespace sysctrlservice
