// Defines the C library's file calls in this program, so that every call of the service's code, and
// of anything else in the process that goes through the library's entries, passes here before
// the library's own function (found with dlsym(RTLD_NEXT)). The C library's internal calls, such as
// those of fopen, do not pass here.
#undef _FORTIFY_SOURCE
#include "FileCalls.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <sstream>

namespace crashtest {
namespace {

// What a descriptor refers to.
enum Kind : unsigned char { kOther = 0, kFile = 1, kFolder = 2 };
const int kMaxFds = 1024;

// Set by setWatch before the watched calls begin and read only afterwards; constant-initialized,
// since the library's calls may come before any constructor has run.
struct State {
    std::atomic<bool> active{false};
    char folder[PATH_MAX];
    bool count;
    int journal;
    long killAt;
    bool realFlushes;
    char faultCall[16];
    int faultNth;
    int faultError;
    size_t writeLimit;
    std::atomic<int> faultSeen{0};
    std::atomic<long> freeBytes{-1};
    std::atomic<long> calls{0};
    std::atomic<unsigned char> kinds[kMaxFds];
};
State g_state;

#define REAL(function) \
    static const auto real = reinterpret_cast<decltype(&::function)>(dlsym(RTLD_NEXT, #function))

ssize_t realWrite(int fd, const void* buffer, size_t size) {
    REAL(write);
    return real(fd, buffer, size);
}

Kind kindOf(int fd) {
    if (!g_state.active || fd < 0 || fd >= kMaxFds) {
        return kOther;
    }
    return static_cast<Kind>(g_state.kinds[fd].load());
}

// The name of `path` in the watched folder: "." for the folder itself. False when it lies
// elsewhere.
bool nameIn(int dirfd, const char* path, std::string& name) {
    if (!g_state.active || path == nullptr) {
        return false;
    }
    if (path[0] != '/') {
        name = path;
        return dirfd != AT_FDCWD && kindOf(dirfd) == kFolder;
    }
    const size_t length = strlen(g_state.folder);
    if (strncmp(path, g_state.folder, length) != 0) {
        return false;
    }
    if (path[length] == '\0') {
        name = ".";
        return true;
    }
    name = path + length + 1;
    return path[length] == '/' && name.find('/') == std::string::npos;
}

void appendAll(int fd, const std::string& text) {
    for (size_t done = 0; done < text.size();) {
        const ssize_t written = realWrite(fd, text.data() + done, text.size() - done);
        if (written <= 0) {
            return;
        }
        done += static_cast<size_t>(written);
    }
}

void writeEntry(const JournalEntry& entry) {
    std::ostringstream header;
    header << entry.call << '\t' << entry.name << '\t' << entry.name2 << '\t' << entry.fd << '\t'
           << entry.flags << '\t' << entry.length << '\t' << entry.result << '\t'
           << entry.data.size() << '\n';
    appendAll(g_state.journal, header.str() + entry.data);
}

// Counts a watched call that has been made, writes it to the journal and, at the planned call,
// kills the process. errno stays as the call left it.
void record(const JournalEntry& entry) {
    if (!g_state.count) {
        return;
    }
    const int error = errno;
    const long number = ++g_state.calls;
    writeEntry(entry);
    if (number == g_state.killAt) {
        kill(getpid(), SIGKILL);
    }
    errno = error;
}

// True when this watched call is the one planned to fail; errno is then set.
bool failsNow(const char* call) {
    if (strcmp(call, g_state.faultCall) != 0 || ++g_state.faultSeen != g_state.faultNth) {
        return false;
    }
    errno = g_state.faultError;
    return true;
}

JournalEntry entryOf(const char* call, int fd, long result) {
    JournalEntry entry;
    entry.call = call;
    entry.fd = fd;
    entry.result = result;
    return entry;
}

template <typename Open>
int watchedOpen(Open real, int dirfd, const char* path, int flags, mode_t mode) {
    std::string name;
    if (!nameIn(dirfd, path, name)) {
        return real(path, flags, mode);
    }
    const int fd = failsNow("open") ? -1 : real(path, flags, mode);
    if (fd >= 0 && fd < kMaxFds) {
        g_state.kinds[fd] = name == "." ? kFolder : kFile;
    }
    JournalEntry entry = entryOf("open", fd, fd);
    entry.name = name;
    entry.flags = flags;
    record(entry);
    return fd;
}

template <typename OpenAt>
int watchedOpenAt(OpenAt real, int dirfd, const char* path, int flags, mode_t mode) {
    return watchedOpen(
        [real, dirfd](const char* p, int f, mode_t m) { return real(dirfd, p, f, m); }, dirfd, path,
        flags, mode);
}

mode_t modeOf(int flags, va_list arguments) {
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(arguments, mode_t)
                                                                      : 0;
}

// A call on one or two names (link, rename, unlink, chmod).
template <typename Call>
int watchedNames(const char* call, int dirfd1, const char* path1, int dirfd2, const char* path2,
                 Call real) {
    std::string name1;
    std::string name2;
    const bool watched = nameIn(dirfd1, path1, name1) | nameIn(dirfd2, path2, name2);
    if (!watched) {
        return real();
    }
    const int result = failsNow(call) ? -1 : real();
    JournalEntry entry = entryOf(call, -1, result);
    entry.name = name1;
    entry.name2 = name2;
    record(entry);
    return result;
}

// A call on a descriptor (fsync, fdatasync, fchmod, ftruncate).
template <typename Call>
int watchedDescriptor(const char* call, int fd, Call real, bool flush = false,
                      long long length = 0) {
    if (kindOf(fd) == kOther) {
        return real();
    }
    int result = 0;
    if (failsNow(call)) {
        result = -1;
    } else if (!flush || g_state.realFlushes) {
        result = real();
    }
    JournalEntry entry = entryOf(call, fd, result);
    entry.length = length;
    record(entry);
    return result;
}

// The bytes a watched write may take, as a short write would: -1 when the disk is full.
long allowedBytes(size_t size) {
    size_t allowed = size;
    if (g_state.writeLimit > 0 && allowed > g_state.writeLimit) {
        allowed = g_state.writeLimit;
    }
    const long free = g_state.freeBytes;
    if (free >= 0 && allowed > static_cast<size_t>(free)) {
        allowed = static_cast<size_t>(free);
    }
    return allowed == 0 && size > 0 ? -1 : static_cast<long>(allowed);
}

}  // namespace

void setWatch(const Watch& watch) {
    g_state.active = false;
    snprintf(g_state.folder, sizeof g_state.folder, "%s", watch.folder.c_str());
    g_state.count = watch.count;
    g_state.journal = watch.journal;
    g_state.killAt = watch.killAt;
    g_state.realFlushes = watch.realFlushes;
    snprintf(g_state.faultCall, sizeof g_state.faultCall, "%s",
             watch.fault.call != nullptr ? watch.fault.call : "");
    g_state.faultNth = watch.fault.nth;
    g_state.faultError = watch.fault.error;
    g_state.faultSeen = 0;
    g_state.freeBytes = watch.freeBytes;
    g_state.writeLimit = watch.writeLimit;
    g_state.calls = 0;
    for (std::atomic<unsigned char>& kind : g_state.kinds) {
        kind = kOther;
    }
    g_state.active = true;
}

void clearWatch() {
    g_state.active = false;
    g_state.count = false;
}

long countedCalls() {
    return g_state.calls;
}

void writeNote(const std::string& label, const std::string& text) {
    JournalEntry entry;
    entry.call = "note";
    entry.name = label;
    entry.data = text;
    writeEntry(entry);
}

std::vector<JournalEntry> readJournal(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::vector<JournalEntry> entries;
    std::string header;
    while (std::getline(in, header)) {
        std::istringstream fields(header);
        JournalEntry entry;
        size_t size = 0;
        std::getline(fields, entry.call, '\t');
        std::getline(fields, entry.name, '\t');
        std::getline(fields, entry.name2, '\t');
        fields >> entry.fd >> entry.flags >> entry.length >> entry.result >> size;
        entry.data.resize(size);
        in.read(&entry.data[0], static_cast<std::streamsize>(size));
        entries.push_back(entry);
    }
    return entries;
}

std::string describe(const JournalEntry& entry) {
    std::ostringstream text;
    text << entry.call << "(";
    if (entry.call == "open") {
        text << entry.name << ", 0" << std::oct << entry.flags << std::dec;
    } else if (!entry.name.empty() || !entry.name2.empty()) {
        text << entry.name << (entry.name2.empty() ? "" : ", ") << entry.name2;
    } else if (entry.call == "write") {
        text << entry.fd << ", \"" << entry.data << "\"";
    } else if (entry.call != "sync") {
        text << entry.fd;
    }
    text << ") = " << entry.result;
    return text.str();
}

}  // namespace crashtest

using crashtest::watchedDescriptor;
using crashtest::watchedNames;
using crashtest::watchedOpen;
using crashtest::watchedOpenAt;

extern "C" {

int open(const char* path, int flags, ...) {
    REAL(open);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = crashtest::modeOf(flags, arguments);
    va_end(arguments);
    return watchedOpen(real, AT_FDCWD, path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    REAL(open64);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = crashtest::modeOf(flags, arguments);
    va_end(arguments);
    return watchedOpen(real, AT_FDCWD, path, flags, mode);
}

int openat(int dirfd, const char* path, int flags, ...) {
    REAL(openat);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = crashtest::modeOf(flags, arguments);
    va_end(arguments);
    return watchedOpenAt(real, dirfd, path, flags, mode);
}

int openat64(int dirfd, const char* path, int flags, ...) {
    REAL(openat64);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = crashtest::modeOf(flags, arguments);
    va_end(arguments);
    return watchedOpenAt(real, dirfd, path, flags, mode);
}

ssize_t write(int fd, const void* buffer, size_t size) {
    REAL(write);
    if (crashtest::kindOf(fd) == crashtest::kOther) {
        return real(fd, buffer, size);
    }
    const long allowed = crashtest::allowedBytes(size);
    ssize_t result = -1;
    if (allowed < 0) {
        errno = ENOSPC;
    } else if (!crashtest::failsNow("write")) {
        result = real(fd, buffer, static_cast<size_t>(allowed));
    }
    if (result > 0 && crashtest::g_state.freeBytes >= 0) {
        crashtest::g_state.freeBytes -= result;
    }
    crashtest::JournalEntry entry = crashtest::entryOf("write", fd, result);
    entry.data.assign(static_cast<const char*>(buffer), result > 0 ? result : 0);
    crashtest::record(entry);
    return result;
}

int close(int fd) {
    REAL(close);
    if (crashtest::kindOf(fd) == crashtest::kOther) {
        return real(fd);
    }
    // The descriptor is released even when close reports a failure.
    int result = real(fd);
    crashtest::g_state.kinds[fd] = crashtest::kOther;
    if (crashtest::failsNow("close")) {
        result = -1;
    }
    crashtest::record(crashtest::entryOf("close", fd, result));
    return result;
}

int fsync(int fd) {
    REAL(fsync);
    return watchedDescriptor(
        "fsync", fd, [&] { return real(fd); }, true);
}

int fdatasync(int fd) {
    REAL(fdatasync);
    return watchedDescriptor(
        "fdatasync", fd, [&] { return real(fd); }, true);
}

int fchmod(int fd, mode_t mode) noexcept {
    REAL(fchmod);
    return watchedDescriptor("fchmod", fd, [&] { return real(fd, mode); });
}

int ftruncate(int fd, off_t length) noexcept {
    REAL(ftruncate);
    return watchedDescriptor(
        "ftruncate", fd, [&] { return real(fd, length); }, false, length);
}

void sync() noexcept {
    REAL(sync);
    if (!crashtest::g_state.active) {
        real();
        return;
    }
    if (crashtest::g_state.realFlushes) {
        real();
    }
    crashtest::record(crashtest::entryOf("sync", -1, 0));
}

int chmod(const char* path, mode_t mode) noexcept {
    REAL(chmod);
    return watchedNames("chmod", AT_FDCWD, path, AT_FDCWD, nullptr,
                        [&] { return real(path, mode); });
}

int link(const char* from, const char* to) noexcept {
    REAL(link);
    return watchedNames("link", AT_FDCWD, from, AT_FDCWD, to, [&] { return real(from, to); });
}

int linkat(int fromDir, const char* from, int toDir, const char* to, int flags) noexcept {
    REAL(linkat);
    return watchedNames("link", fromDir, from, toDir, to,
                        [&] { return real(fromDir, from, toDir, to, flags); });
}

int rename(const char* from, const char* to) noexcept {
    REAL(rename);
    return watchedNames("rename", AT_FDCWD, from, AT_FDCWD, to, [&] { return real(from, to); });
}

int renameat(int fromDir, const char* from, int toDir, const char* to) noexcept {
    REAL(renameat);
    return watchedNames("rename", fromDir, from, toDir, to,
                        [&] { return real(fromDir, from, toDir, to); });
}

int unlink(const char* path) noexcept {
    REAL(unlink);
    return watchedNames("unlink", AT_FDCWD, path, AT_FDCWD, nullptr, [&] { return real(path); });
}

int unlinkat(int dirfd, const char* path, int flags) noexcept {
    REAL(unlinkat);
    return watchedNames("unlink", dirfd, path, AT_FDCWD, nullptr,
                        [&] { return real(dirfd, path, flags); });
}

}  // extern "C"
