#ifndef FUZZ_FUZZROOT_H
#define FUZZ_FUZZROOT_H

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace sysctrlfuzz {

// The roots made so far, removed when the process exits.
inline std::vector<std::string>& fuzzRoots() {
    static std::vector<std::string> roots;
    return roots;
}

inline void removeFuzzRoots() {
    for (const std::string& root : fuzzRoots()) {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }
}

// A fresh folder for a target's file-system root, removed at exit; empty when none could be made.
// In $TMPDIR when it is set (the test suite sets its own), else on /dev/shm where there is one, so
// that the files a target writes for every input cost no disk write (nor, for a writer that syncs,
// a wait for the disk), else in /tmp.
inline std::string makeFuzzRoot(const char* prefix) {
    std::error_code ignored;
    const char* chosen = getenv("TMPDIR");
    if (chosen == nullptr || *chosen == '\0') {
        const bool memory =
            std::filesystem::is_directory("/dev/shm", ignored) && access("/dev/shm", W_OK) == 0;
        chosen = memory ? "/dev/shm" : "/tmp";
    }
    std::string pattern = std::string(chosen) + "/" + prefix + ".XXXXXX";
    if (mkdtemp(&pattern[0]) == nullptr) {
        return std::string();
    }
    if (fuzzRoots().empty()) {
        atexit(removeFuzzRoots);
    }
    fuzzRoots().push_back(pattern);
    return pattern;
}

}  // namespace sysctrlfuzz

#endif
