#include "DeskHost.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <algorithm>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "Arguments.h"
#include "Operations.h"
#include "zo/FileSystem.h"
#include "zo/host/Host.h"

namespace desk {
namespace {

using nlohmann::json;

// Help indents each command under its group and starts the operations' summaries at a column.
const char kHelpIndent[] = "  ";
const size_t kHelpSummaryColumn = 44;

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

}  // namespace

DeskHost::DeskHost(const std::string& pluginPath, const std::string& root, Printer& printer)
    : m_pluginPath(pluginPath), m_root(root), m_printer(printer), m_sim(new sim::SimSet) {
    // The host's output is its record of the run: every call and callback is printed as it
    // happens and nothing reads them back, so the set keeps no journal and the clients keep no
    // callbacks, and a host that serves for days stays the size it started.
    m_sim->setJournalLimit(0);
    // Events that --only leaves out are not made at all (the service's messages are still
    // formatted): most of a run's work is its events.
    if (printer.prints("port") || printer.prints("callback") || printer.prints("observer")) {
        m_sim->setListener([this](const json& event) { m_printer.print(event); });
    }
    if (!printer.prints("log")) {
        zo::host::setDebugSink([](uint32_t, const std::string&) {});
        return;
    }
    zo::host::setDebugSink([this](uint32_t levelWord, const std::string& text) {
        m_printer.print(json{{"event", "log"},
                             {"module", levelWord >> 16},
                             {"level", levelWord & 0xFFFF},
                             {"text", sim::textOrHex(text)}});
    });
}

DeskHost::~DeskHost() {
    finish();
    zo::host::setDebugSink(nullptr);
    m_clients.clear();
    m_sim.reset();
    if (m_library != nullptr) {
        dlclose(m_library);
    }
}

void DeskHost::error(const std::string& message) {
    ++m_errors;
    m_printer.print(
        json{{"event", "error"}, {"line", m_line}, {"message", sim::textOrHex(message)}});
}

void DeskHost::lifecycle(const char* step, int status) {
    m_printer.print(json{{"event", "lifecycle"}, {"step", step}, {"status", status}});
}

bool DeskHost::create() {
    m_library = dlopen(m_pluginPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (m_library == nullptr) {
        const char* reason = dlerror();
        error("cannot load the plug-in " + m_pluginPath + ": " +
              (reason != nullptr ? reason : "?"));
        return false;
    }
    const auto entry = reinterpret_cast<frame::CreateApplicationArrayFunction>(
        dlsym(m_library, "frameCreateApplicationArray"));
    if (entry == nullptr) {
        error("the plug-in has no frameCreateApplicationArray entry");
        return false;
    }
    m_applications = entry();
    m_application = m_applications != nullptr ? m_applications[0] : nullptr;
    if (m_application == nullptr) {
        error("the plug-in created no application");
        return false;
    }
    m_stage = Stage::Created;
    lifecycle("create", 0);
    return true;
}

bool DeskHost::reach(Stage wanted) {
    if (m_stage == Stage::Destroyed) {
        error("the application was destroyed");
        return false;
    }
    if (m_stage == Stage::Unloaded && !create()) {
        return false;
    }
    if (m_stage < Stage::SetupDone && wanted >= Stage::SetupDone) {
        m_stage = Stage::SetupDone;
        lifecycle("setupDone", m_application->setupDone());
    }
    if (m_stage < Stage::Started && wanted >= Stage::Started) {
        m_stage = Stage::Started;
        lifecycle("start", m_application->start());
    }
    if (m_stage < Stage::Stopped && wanted >= Stage::Stopped) {
        m_stage = Stage::Stopped;
        lifecycle("stop", m_application->stop());
    }
    return true;
}

void DeskHost::stopIfStarted() {
    if (m_stage == Stage::Started) {
        reach(Stage::Stopped);
    }
}

void DeskHost::destroy() {
    if (m_beforeDestroy) {
        m_beforeDestroy();
    }
    // A framework lets the service's threads end before it deletes the application.
    zo::host::waitForThreads();
    delete m_application;
    delete[] m_applications;
    m_application = nullptr;
    m_applications = nullptr;
    m_stage = Stage::Destroyed;
    lifecycle("destroy", 0);
}

void DeskHost::finish() {
    zo::host::waitForThreads();
    if (m_application != nullptr) {
        destroy();
    }
}

std::string DeskHost::mapped(const std::string& path) const {
    return zo::fs::path(path);
}

sysctrlservice::ServiceInterface* DeskHost::service() {
    return static_cast<sysctrlservice::ServiceInterface*>(
        zo::host::lookupInterface(sysctrlservice::kServiceInterfaceName));
}

boost::shared_ptr<sim::RecordingClient> DeskHost::client(const std::string& name) {
    boost::shared_ptr<sim::RecordingClient>& client = m_clients[name];
    if (!client) {
        client.reset(new sim::RecordingClient(name, m_sim.get()));
        client->setKeepLimit(0);
    }
    return client;
}

void DeskHost::runLine(const std::string& line, int lineNumber) {
    m_line = lineNumber;
    std::vector<Word> words;
    std::string problem;
    if (!splitScriptLine(line, words, problem)) {
        error(problem);
        return;
    }
    if (words.empty()) {
        return;
    }
    for (Word& word : words) {
        replaceAll(word.text, "$ROOT", m_root);
    }
    try {
        runCommand(words);
    } catch (const std::exception& e) {
        error(std::string("unexpected failure: ") + e.what());
    }
}

const std::vector<DeskHost::Command>& DeskHost::commands() {
    typedef const std::vector<Word>& Words;
    static const std::vector<Command> table = {
        {"setup", [](DeskHost& h, Words w) { return h.stepTo(w, Stage::SetupDone); }, "life cycle",
         "setup"},
        {"start", [](DeskHost& h, Words w) { return h.stepTo(w, Stage::Started); }, "life cycle",
         "start"},
        {"stop", [](DeskHost& h, Words w) { return h.stepTo(w, Stage::Stopped); }, "life cycle",
         "stop"},
        {"destroy", &DeskHost::destroyCommand, "life cycle", "destroy"},
        {"addClient", &DeskHost::callClientOperation, "clients", "addClient NAME"},
        {"removeClient", &DeskHost::callClientOperation, "clients", "removeClient NAME"},
        {nullptr, &DeskHost::callOperation, "operations", "OPERATION ARGS..."},
        {"absent", &DeskHost::setPresence, "the set", "absent OBJECT"},
        {"present", &DeskHost::setPresence, "the set", "present OBJECT"},
        {"set", &DeskHost::setAnswer, "the set", "set OBJECT.OPERATION RESULT [OUTPUT...]"},
        {"unset", &DeskHost::unsetAnswer, "the set", "unset OBJECT.OPERATION"},
        {"state", &DeskHost::stateCommand, "the set", "state OBJECT.KEY [VALUE]"},
        {"fail", &DeskHost::failStep, "the set", "fail frame.STEP STATUS"},
        {"event", &DeskHost::fireEvent, "events", "event SUBJECT CLASS ID"},
        {"oledError", &DeskHost::raiseOledError, "events", "oledError MASK"},
        {"wait", &DeskHost::waitCommand, "events", "wait"},
        {"ini", &DeskHost::writeFile, "files", "ini FILE SECTION KEY VALUE"},
        {"file", &DeskHost::writeFile, "files", "file PATH TEXT"},
        {"mkdir", &DeskHost::writeFile, "files", "mkdir PATH"},
        {"show", &DeskHost::showFile, "files", "show PATH"},
        {"echo", &DeskHost::echo, "other", "echo TEXT..."},
        {"help", &DeskHost::help, "other", "help"},
    };
    return table;
}

const DeskHost::Command* DeskHost::findCommand(const std::string& word) {
    for (const Command& command : commands()) {
        const bool matches =
            command.word != nullptr ? word == command.word : findOperation(word) != nullptr;
        if (matches) {
            return &command;
        }
    }
    return nullptr;
}

// One command a line under its group's heading; every operation with its arguments and summary.
std::string DeskHost::helpText() {
    std::string text;
    const char* group = nullptr;
    for (const Command& command : commands()) {
        if (group == nullptr || std::string(group) != command.group) {
            group = command.group;
            text += std::string(text.empty() ? "" : "\n") + group + ":";
        }
        if (command.word != nullptr) {
            text += std::string("\n") + kHelpIndent + command.usage;
            continue;
        }
        text += std::string(" OPERATION ARGS..., the arguments after MsgIds and TransportInfo");
        for (const Operation& operation : operations()) {
            std::string line = kHelpIndent + std::string(operation.name) + " " + operation.usage;
            line.resize(std::max(line.size() + 2, kHelpSummaryColumn), ' ');
            text += "\n" + line + operation.summary;
        }
    }
    return text;
}

bool DeskHost::runCommand(const std::vector<Word>& words) {
    const Command* command = findCommand(words[0].text);
    if (command == nullptr) {
        error("unknown command " + words[0].text + " (help lists the commands)");
        return false;
    }
    return command->run(*this, words);
}

bool DeskHost::stepTo(const std::vector<Word>& words, Stage wanted) {
    const std::string& command = words[0].text;
    if (words.size() > 1) {
        error(command + " takes no arguments");
        return false;
    }
    if (m_stage >= wanted && m_stage != Stage::Destroyed) {
        error(command + " has already run");
        return false;
    }
    return reach(wanted);
}

bool DeskHost::destroyCommand(const std::vector<Word>&) {
    if (!reach(Stage::Created)) {
        return false;
    }
    destroy();
    return true;
}

bool DeskHost::startedWith(Arguments& args) {
    if (!args.finish()) {
        error(args.error());
        return false;
    }
    return reach(Stage::Started);
}

sysctrlservice::ServiceInterface* DeskHost::startedService() {
    if (!reach(Stage::Started)) {
        return nullptr;
    }
    sysctrlservice::ServiceInterface* target = service();
    if (target == nullptr) {
        error("the service interface is not registered");
    }
    return target;
}

bool DeskHost::callOperation(const std::vector<Word>& words) {
    const Operation* operation = findOperation(words[0].text);
    sysctrlservice::ServiceInterface* target = startedService();
    if (target == nullptr) {
        return false;
    }
    const int32_t k = m_calls + 1;
    frame::MsgIds msgIds{{k, 0}};
    const frame::TransportInfo transport{{k, 0, 0, 0, 0, 0, 0}};
    Arguments args(words, 1);
    int status = 0;
    if (!operation->invoke(*target, msgIds, transport, args, status)) {
        error(std::string(operation->name) + ": " + args.error() + " (usage: " + operation->name +
              " " + operation->usage + ")");
        return false;
    }
    m_calls = k;
    m_printer.print(json{{"event", "return"}, {"operation", operation->name}, {"status", status}});
    return true;
}

bool DeskHost::callClientOperation(const std::vector<Word>& words) {
    Arguments args(words, 1);
    const std::string name = args.text("client name");
    if (!args.finish()) {
        error(words[0].text + ": " + args.error());
        return false;
    }
    sysctrlservice::ServiceInterface* target = startedService();
    if (target == nullptr) {
        return false;
    }
    // A fresh handle to the same client object each time.
    const sysctrlservice::ClientInterfacePtr handle(client(name));
    ++m_calls;
    const bool adding = words[0].text == "addClient";
    const int status = adding ? target->addClient(handle) : target->removeClient(handle);
    m_printer.print(json{{"event", "return"}, {"operation", words[0].text}, {"status", status}});
    return true;
}

bool DeskHost::reported(const std::vector<Word>& words, const Arguments& args, bool done,
                        const std::string& problem) {
    if (!done) {
        error(words[0].text + ": " + (args.ok() ? problem : args.error()));
    }
    return done;
}

bool DeskHost::setPresence(const std::vector<Word>& words) {
    Arguments args(words, 1);
    const std::string target = args.text("OBJECT.NAME");
    std::string problem;
    const bool present = words[0].text == "present";
    const bool done = args.finish() && m_sim->setPresent(target, present, problem);
    return reported(words, args, done, problem);
}

bool DeskHost::unsetAnswer(const std::vector<Word>& words) {
    Arguments args(words, 1);
    const std::string target = args.text("OBJECT.NAME");
    std::string problem;
    const bool done = args.finish() && m_sim->clearAnswer(target, problem);
    return reported(words, args, done, problem);
}

bool DeskHost::setAnswer(const std::vector<Word>& words) {
    Arguments args(words, 1);
    const std::string target = args.text("OBJECT.NAME");
    const json result = args.value("result");
    json outputs = json::array();
    while (args.ok() && !args.atEnd()) {
        outputs.push_back(args.value("output"));
    }
    std::string problem;
    const bool done = args.finish() && m_sim->setAnswer(target, result, outputs, problem);
    return reported(words, args, done, problem);
}

bool DeskHost::stateCommand(const std::vector<Word>& words) {
    Arguments args(words, 1);
    const std::string target = args.text("OBJECT.NAME");
    if (args.ok() && args.atEnd()) {
        m_printer.print(
            json{{"event", "state"}, {"name", target}, {"value", m_sim->getState(target)}});
        return true;
    }
    const json value = args.value("value");
    std::string problem;
    const bool done = args.finish() && m_sim->setState(target, value, problem);
    return reported(words, args, done, problem);
}

bool DeskHost::failStep(const std::vector<Word>& words) {
    static const std::map<std::string, zo::host::FrameStep> steps = {
        {"frame.performSetupDone", zo::host::FrameStep::PerformSetupDone},
        {"frame.performStarting", zo::host::FrameStep::PerformStarting},
        {"frame.performStopping", zo::host::FrameStep::PerformStopping},
        {"frame.registerInterface", zo::host::FrameStep::RegisterInterface}};
    Arguments args(words, 1);
    const auto step = steps.find(args.text("OBJECT.NAME"));
    const int32_t status = args.integer("status");
    if (!args.finish()) {
        return reported(words, args, false, "");
    }
    if (step == steps.end()) {
        return reported(words, args, false,
                        "fail takes frame.performSetupDone, frame.performStarting, "
                        "frame.performStopping or frame.registerInterface");
    }
    zo::host::setFrameStepResult(step->second, status);
    return true;
}

bool DeskHost::fireEvent(const std::vector<Word>& words) {
    Arguments args(words, 1);
    const std::string subject = args.text("subject");
    const int32_t eventClass = args.integer("event class");
    const int32_t eventId = args.integer("event id");
    if (!startedWith(args)) {
        return false;
    }
    std::vector<sim::SimSet::Delivery> deliveries;
    std::string problem;
    if (!m_sim->fireEvent(subject, eventClass, eventId, deliveries, problem)) {
        error(problem);
        return false;
    }
    return true;
}

bool DeskHost::raiseOledError(const std::vector<Word>& words) {
    Arguments args(words, 1);
    const uint32_t mask = args.unsignedInteger("mask");
    if (!startedWith(args)) {
        return false;
    }
    if (!m_sim->raiseOledError(mask)) {
        error("the service registered no OLED error callback");
        return false;
    }
    return true;
}

bool DeskHost::waitCommand(const std::vector<Word>& words) {
    Arguments args(words, 1);
    if (!args.finish()) {
        error(args.error());
        return false;
    }
    zo::host::waitForThreads();
    return true;
}

bool DeskHost::echo(const std::vector<Word>& words) {
    Arguments args(words, 1);
    std::string text;
    for (const Word& word : args.rest()) {
        text += (text.empty() ? "" : " ") + word.text;
    }
    m_printer.print(json{{"event", "echo"}, {"text", sim::textOrHex(text)}});
    return true;
}

bool DeskHost::help(const std::vector<Word>&) {
    m_printer.print(json{{"event", "help"}, {"text", helpText()}});
    return true;
}

bool DeskHost::writeFile(const std::vector<Word>& words) {
    const std::string& command = words[0].text;
    Arguments args(words, 1);
    const std::string path = mapped(args.systemPath("path"));
    std::error_code failure;
    if (command == "mkdir") {
        if (args.finish()) {
            std::filesystem::create_directories(path, failure);
        }
    } else {
        std::string content;
        if (command == "file") {
            content = args.text("text");
        } else {
            const std::string section = args.text("section");
            const std::string key = args.text("key");
            const std::string value = args.text("value");
            content = "[" + section + "]\n" + key + " = " + value + "\n";
        }
        if (args.finish()) {
            std::filesystem::create_directories(std::filesystem::path(path).parent_path(), failure);
            // ini adds a section to whatever the file holds; file replaces it.
            std::ofstream out(path, command == "ini" ? std::ios::app : std::ios::trunc);
            out << content;
            if (!out) {
                failure = std::make_error_code(std::errc::io_error);
            }
        }
    }
    if (!args.ok()) {
        error(command + ": " + args.error());
        return false;
    }
    if (failure) {
        error(command + " " + words[1].text + ": " + failure.message());
        return false;
    }
    return true;
}

bool DeskHost::showFile(const std::vector<Word>& words) {
    Arguments args(words, 1);
    const std::string path = mapped(args.systemPath("path"));
    if (!args.finish()) {
        error(words[0].text + ": " + args.error());
        return false;
    }
    json event{{"event", "file"}, {"path", words[1].text}};
    struct stat info;
    if (stat(path.c_str(), &info) != 0) {
        event["exists"] = false;
    } else {
        char mode[8];
        std::snprintf(mode, sizeof mode, "0%o", info.st_mode & 07777);
        event["exists"] = true;
        event["size"] = static_cast<uint64_t>(info.st_size);
        event["mode"] = mode;
        std::ifstream in(path, std::ios::binary);
        std::ostringstream content;
        content << in.rdbuf();
        const json text = sim::textOrHex(content.str());
        if (text.is_string() && info.st_size <= 65536) {
            event["content"] = text;
        }
    }
    m_printer.print(event);
    return true;
}

}  // namespace desk
