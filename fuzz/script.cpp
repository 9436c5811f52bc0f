// The desk host's script reader and interpreter: each input is a script, run by a fresh desk host
// over the plug-in (loaded once for the process and kept, so that each host's load is cheap) and a
// fresh file-system root, on /dev/shm where there is one (on a disk, creating and removing the
// root's files cost more than running most scripts). Scripts that could touch files outside the
// root are skipped: screen captures write where the caller says, and ".." climbs out of the root.
#include <dlfcn.h>
#include <stdlib.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <sstream>

#include "DeskHost.h"
#include "Printer.h"
#include "support/FuzzRoot.h"
#include "zo/host/Host.h"

namespace {

struct ScriptFuzz {
    ScriptFuzz() : root(sysctrlfuzz::makeFuzzRoot("sysctrl-fuzz-script")), printer(true, {"none"}) {
        if (root.empty() || dlopen(SYSCTRL_PLUGIN_PATH, RTLD_NOW) == nullptr) {
            std::fputs("fuzz: no root or no plug-in\n", stderr);
            // abort() runs no exit handler: the root would stay behind.
            sysctrlfuzz::removeFuzzRoots();
            abort();
        }
        zo::host::setFileSystemRoot(root);
        zo::host::setDebugSink([](uint32_t, const std::string&) {});
    }
    std::string root;
    desk::Printer printer;
};

ScriptFuzz& state() {
    static ScriptFuzz* fuzz = new ScriptFuzz;
    return *fuzz;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string script(reinterpret_cast<const char*>(data), size);
    if (script.find("..") != std::string::npos || script.find("Capture") != std::string::npos) {
        return -1;
    }
    ScriptFuzz& fuzz = state();
    std::error_code ignored;
    std::filesystem::remove_all(fuzz.root, ignored);
    for (const char* directory : {"/var/tvservice", "/quentadata/model/config"}) {
        std::filesystem::create_directories(fuzz.root + directory, ignored);
    }
    zo::host::resetFrameStepResults();
    {
        desk::DeskHost host(SYSCTRL_PLUGIN_PATH, fuzz.root, fuzz.printer);
        std::istringstream lines(script);
        std::string line;
        int number = 0;
        while (std::getline(lines, line)) {
            host.runLine(line, ++number);
        }
        host.finish();
    }
    return 0;
}
