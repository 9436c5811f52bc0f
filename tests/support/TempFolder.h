#ifndef TESTS_SUPPORT_TEMPFOLDER_H
#define TESTS_SUPPORT_TEMPFOLDER_H

#include <stdlib.h>

#include <string>

namespace sysctrltest {

// Where the tests put their temporary files: $TMPDIR, else /tmp. Under ctest $TMPDIR is the
// suite's own folder, which the last test checks was left empty.
inline std::string temporaryBase() {
    const char* base = getenv("TMPDIR");
    return base != nullptr && *base != '\0' ? base : "/tmp";
}

// A fresh folder named sysctrl-NAME.XXXXXX in temporaryBase(); empty when none could be made.
inline std::string makeTemporaryFolder(const std::string& name) {
    std::string pattern = temporaryBase() + "/sysctrl-" + name + ".XXXXXX";
    return mkdtemp(&pattern[0]) != nullptr ? pattern : std::string();
}

}  // namespace sysctrltest

#endif
