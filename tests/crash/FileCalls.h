// The file calls of this program pass through FileCalls.cpp, which can watch the calls made on one
// folder and on the files in it: count them, write each to a journal, kill the process right after
// the n-th one, make one of them fail, and leave the flushes to a model of the disk.
#ifndef TESTS_CRASH_FILECALLS_H
#define TESTS_CRASH_FILECALLS_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace crashtest {

// A call that fails instead of being made.
struct Fault {
    const char* call = nullptr;  // "open", "write", "fchmod", "fsync", "close", "link", "rename"...
    int nth = 1;                 // its n-th watched call fails, the first by default
    int error = 0;               // with this errno
};

struct Watch {
    std::string folder;       // calls on it and on the files directly in it are watched
    bool count = false;       // count the watched calls and write them to `journal`
    int journal = -1;         // a descriptor the journal is appended to
    long killAt = 0;          // the counted call after which the process kills itself; 0: never
    bool realFlushes = true;  // false: fsync, fdatasync and sync return 0 without flushing
    Fault fault;
    long freeBytes = -1;    // bytes the watched writes may still add; beyond: ENOSPC. -1: any
    size_t writeLimit = 0;  // the most bytes one watched write takes (short writes); 0: no limit
};

// Starts watching. Call it while no other thread makes file calls.
void setWatch(const Watch& watch);
// Stops watching; descriptors opened meanwhile are forgotten.
void clearWatch();
// The watched calls counted since setWatch.
long countedCalls();
// Appends a note that does not count as a call, e.g. a file's content where a step begins.
void writeNote(const std::string& label, const std::string& text);

// One entry of the journal: a watched call or a note.
struct JournalEntry {
    std::string call;   // "open", "write", ... or "note"
    std::string name;   // the file's name in the folder, "." for the folder itself; a note's label
    std::string name2;  // the second name of link and rename
    int fd = -1;        // the descriptor a call took, or the one open returned
    int flags = 0;      // open's flags
    long long length = 0;  // ftruncate's length
    long result = 0;       // what the call returned
    std::string data;      // the bytes a write wrote, the text of a note
};

std::vector<JournalEntry> readJournal(const std::string& path);
// One line for a message: "rename(a, b) = 0".
std::string describe(const JournalEntry& entry);

}  // namespace crashtest

#endif
