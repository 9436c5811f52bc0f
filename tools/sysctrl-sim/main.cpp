// sysctrl-sim: runs the system-control plug-in on a simulated television, driven by scripts.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include "Arguments.h"
#include "DbusServe.h"
#include "DeskHost.h"
#include "Printer.h"
#include "ServiceOutput.h"
#include "sim/SimSet.h"
#include "zo/host/Host.h"

namespace {

const char kUsage[] =
    "usage: sysctrl-sim [--plugin PATH] [--root DIR] [--json] [--only KINDS] [--log-level N] "
    "[SCRIPT...]\n"
    "  --plugin PATH   the plug-in to load (default: the installed plug-in, or "
    "../lib/libapp-sysctrlservice-impl.so beside this program)\n"
    "  --root DIR      directory under which the system's fixed paths live (default: a fresh "
    "temporary one)\n"
    "  --json          one JSON object a line\n"
    "  --only KINDS    print only these event kinds, comma-separated (lifecycle, return, "
    "callback, port, log, observer, error, state, file, echo, help, stdout)\n"
    "  --log-level N   print log messages up to level N (default: every level)\n"
    "  --describe      print the simulated objects' operations and state as Markdown, and exit\n"
    "  --dbus BUS      also serve the service on D-Bus (session, system or an address) through "
    "the bridge plug-in, until SIGINT or SIGTERM\n"
    "  --bridge PATH   the bridge plug-in (default: ../lib/libapp-sysctrl-dbus.so beside this "
    "program)\n"
    "Without SCRIPT, or with -, commands are read from standard input. docs/sim.md describes "
    "the commands.\n";

// A plug-in in the plug-in folder beside an installed program, else the one in the build tree.
std::string defaultPlugin(const char* argv0, const char* library) {
    std::error_code ignored;
    std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ignored);
    if (self.empty()) {
        self = argv0;
    }
    const std::filesystem::path installed =
        (self.parent_path() / std::filesystem::path(SYSCTRL_INSTALLED_PLUGIN).parent_path() /
         library)
            .lexically_normal();
    if (std::filesystem::exists(installed, ignored)) {
        return installed;
    }
    return (self.parent_path() / ".." / "lib" / library).lexically_normal();
}

std::set<std::string> splitKinds(const std::string& list) {
    std::set<std::string> kinds;
    size_t start = 0;
    while (start <= list.size()) {
        const size_t comma = list.find(',', start);
        const std::string kind = list.substr(start, comma - start);
        if (!kind.empty()) {
            kinds.insert(kind);
        }
        if (comma == std::string::npos) {
            break;
        }
        start = comma + 1;
    }
    return kinds;
}

// The reference of the simulated objects, as docs/sim.md carries it.
std::string describeSimulatedSet() {
    zo::host::setDebugSink([](uint32_t, const std::string&) {});
    sim::SimSet set;
    std::string text;
    for (const sim::SimObject* object : set.objects()) {
        text += "#### " + object->simName() + "\n\n";
        if (!object->canBeAbsent()) {
            text += "Always present.\n\n";
        }
        if (!object->operations().empty()) {
            text += "| operation | returns | fills in |\n|---|---|---|\n";
            for (const sim::OpSpec& op : object->operations()) {
                std::string outputs;
                for (sim::Kind kind : op.outputs) {
                    outputs += (outputs.empty() ? "" : ", ") + std::string(sim::kindName(kind));
                }
                text +=
                    "| `" + op.name + "` | " + sim::kindName(op.result) + " | " + outputs + " |\n";
            }
            text += "\n";
        }
        if (!object->stateSpecs().empty()) {
            text += "| state | kind | initially |\n|---|---|---|\n";
            for (const sim::StateSpec& entry : object->stateSpecs()) {
                text += "| `" + entry.key + "` | " + sim::kindName(entry.kind) + " | `" +
                        entry.initial.dump() + "` |\n";
            }
            text += "\n";
        }
    }
    return text;
}

// Runs the lines of one input; prompts when it is a terminal.
void runInput(desk::DeskHost& host, desk::ServiceOutput& output, std::istream& in, bool prompt) {
    std::string line;
    int number = 0;
    while (true) {
        if (prompt) {
            std::cerr << "sysctrl> " << std::flush;
        }
        if (!std::getline(in, line)) {
            break;
        }
        host.runLine(line, ++number);
        output.drain();
    }
}

// What the command line asks for.
struct Options {
    std::string plugin;
    std::string bridge;
    std::string bus;
    std::string root;
    bool json = false;
    std::set<std::string> only;
    std::vector<std::string> scripts;
};

// Sets the log threshold from the text of --log-level; false, with a message, for anything but a
// whole number from 0 to 65535 (read as the scripts read numbers).
bool setLogLevel(const std::string& text) {
    int64_t level = 0;
    if (!desk::parseInteger(text, level) || level < 0 || level > 0xFFFF) {
        std::cerr << "sysctrl-sim: --log-level takes a level from 0 to 65535, got \"" << text
                  << "\"\n";
        return false;
    }
    zo::host::setDebugThreshold(static_cast<uint16_t>(level));
    return true;
}

// Reads the command line into `options`. Returns -1 to go on running, else the exit status: 0
// after --help or --describe, 2 for a bad command line.
int readOptions(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--plugin" && hasValue) {
            options.plugin = argv[++i];
        } else if (arg == "--root" && hasValue) {
            options.root = argv[++i];
        } else if (arg == "--dbus" && hasValue) {
            options.bus = argv[++i];
            if (!desk::isBusName(options.bus)) {
                std::cerr << "sysctrl-sim: " << desk::badBusMessage(options.bus);
                return 2;
            }
        } else if (arg == "--bridge" && hasValue) {
            options.bridge = argv[++i];
        } else if (arg == "--json") {
            options.json = true;
        } else if (arg == "--only" && hasValue) {
            options.only = splitKinds(argv[++i]);
        } else if (arg == "--log-level" && hasValue) {
            if (!setLogLevel(argv[++i])) {
                return 2;
            }
        } else if (arg == "--describe") {
            std::cout << describeSimulatedSet();
            return 0;
        } else if (arg == "-h" || arg == "--help") {
            std::cout << kUsage;
            return 0;
        } else if (arg == "-" || arg.empty() || arg[0] != '-') {
            options.scripts.push_back(arg);
        } else {
            std::cerr << "sysctrl-sim: unknown option " << arg << "\n" << kUsage;
            return 2;
        }
    }
    return -1;
}

// Makes `root` absolute, a fresh temporary directory (in $TMPDIR, else /tmp) when it is empty
// (`temporary` then says so), with the directories a set has before any service runs. False when
// it cannot be made.
bool prepareRoot(std::string& root, bool& temporary) {
    if (root.empty()) {
        const char* base = std::getenv("TMPDIR");
        std::string pattern =
            std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/sysctrl-sim.XXXXXX";
        if (mkdtemp(&pattern[0]) == nullptr) {
            std::perror(("sysctrl-sim: cannot make a root in " + pattern).c_str());
            return false;
        }
        root = pattern;
        temporary = true;
    }
    std::error_code failure;
    root = std::filesystem::absolute(root, failure).lexically_normal();
    for (const char* directory : {"/var/tvservice", "/quentadata/model/config"}) {
        std::filesystem::create_directories(root + directory, failure);
    }
    zo::host::setFileSystemRoot(root);
    return true;
}

// Runs the scripts (standard input for "-" or none), serving on D-Bus instead when asked; true
// when anything gave an error.
bool runScripts(Options& options, int stopSignals) {
    bool errors = false;
    desk::Printer printer(options.json, options.only);
    desk::ServiceOutput output(printer);
    desk::DeskHost host(options.plugin, options.root, printer);
    if (options.scripts.empty()) {
        options.scripts.push_back("-");
    }
    if (!options.bus.empty()) {
        errors = desk::serveDbus(host, output, options.bus, options.bridge, options.scripts,
                                 stopSignals) != 0;
        options.scripts.clear();
    }
    for (const std::string& script : options.scripts) {
        if (script == "-") {
            runInput(host, output, std::cin, isatty(STDIN_FILENO) != 0);
            continue;
        }
        std::ifstream in(script);
        if (!in) {
            std::cerr << "sysctrl-sim: cannot open " << script << "\n";
            errors = true;
            continue;
        }
        runInput(host, output, in, false);
    }
    host.finish();
    output.drain(true);
    return errors || host.hadErrors();
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    options.plugin = defaultPlugin(argv[0], "libapp-sysctrlservice-impl.so");
    options.bridge = defaultPlugin(argv[0], "libapp-sysctrl-dbus.so");
    const int status = readOptions(argc, argv, options);
    if (status >= 0) {
        return status;
    }
    // Before any thread starts, so that only the serving loop sees the stop signals.
    const int stopSignals = options.bus.empty() ? -1 : desk::catchStopSignals();
    bool temporaryRoot = false;
    if (!prepareRoot(options.root, temporaryRoot)) {
        return 2;
    }
    const bool errors = runScripts(options, stopSignals);
    if (temporaryRoot) {
        std::error_code ignored;
        std::filesystem::remove_all(options.root, ignored);
    }
    return errors ? 1 : 0;
}
