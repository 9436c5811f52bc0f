#ifndef SYSCTRL_SIM_DESKHOST_H
#define SYSCTRL_SIM_DESKHOST_H

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "Arguments.h"
#include "Printer.h"
#include "RecordingClient.h"
#include "ScriptLexer.h"
#include "ServiceInterface.h"
#include "frame/AbstractApplication.h"
#include "sim/SimSet.h"

namespace desk {

// Plays the framework and the remote callers around the plug-in, over a simulated set: loads the
// plug-in as the framework does, drives its life cycle, calls its interface and runs scripts
// against it. The script language is described in docs/sim.md.
class DeskHost {
  public:
    DeskHost(const std::string& pluginPath, const std::string& root, Printer& printer);
    ~DeskHost();

    DeskHost(const DeskHost&) = delete;
    DeskHost& operator=(const DeskHost&) = delete;

    // Runs one script line; `lineNumber` names it in error events.
    void runLine(const std::string& line, int lineNumber);
    // Ends the run as a framework would: waits for the service's threads, then destroys the
    // application unless the script did.
    void finish();
    bool hadErrors() const { return m_errors > 0; }
    // Stops the application if it runs, as a framework does before it ends.
    void stopIfStarted();
    // Runs just before the application is destroyed (a companion that holds it goes first).
    void setBeforeDestroy(std::function<void()> hook) { m_beforeDestroy = std::move(hook); }

  private:
    enum class Stage { Unloaded, Created, SetupDone, Started, Stopped, Destroyed };

    void error(const std::string& message);
    void lifecycle(const char* step, int status);
    // Runs the steps up to `wanted` that have not run yet; false when the application is gone.
    bool reach(Stage wanted);
    bool create();
    void destroy();

    // A script command: the word that starts it (null: any interface operation), what runs it, and
    // its entry in help: the group it is listed under and how it is written.
    struct Command {
        const char* word;
        std::function<bool(DeskHost& host, const std::vector<Word>& words)> run;
        const char* group;
        const char* usage;
    };
    // Every command, in the order help lists them.
    static const std::vector<Command>& commands();
    static const Command* findCommand(const std::string& word);
    // The help text: each group on a line of its own, its commands separated by " | ".
    static std::string helpText();

    bool runCommand(const std::vector<Word>& words);
    // Checks that every argument was read and well formed, then runs the missing steps up to
    // start; an error event otherwise.
    bool startedWith(Arguments& args);
    // Runs the missing steps up to start and returns the registered service; null, after an error
    // event, when there is none.
    sysctrlservice::ServiceInterface* startedService();

    // Life cycle and clients.
    bool stepTo(const std::vector<Word>& words, Stage wanted);
    bool destroyCommand(const std::vector<Word>& words);
    bool callOperation(const std::vector<Word>& words);
    bool callClientOperation(const std::vector<Word>& words);
    // The simulated set.
    bool setPresence(const std::vector<Word>& words);
    bool setAnswer(const std::vector<Word>& words);
    bool unsetAnswer(const std::vector<Word>& words);
    bool stateCommand(const std::vector<Word>& words);
    bool failStep(const std::vector<Word>& words);
    // An error event for a set command that did not run: the argument error, else `problem`.
    bool reported(const std::vector<Word>& words, const Arguments& args, bool done,
                  const std::string& problem);
    // Events.
    bool fireEvent(const std::vector<Word>& words);
    bool raiseOledError(const std::vector<Word>& words);
    bool waitCommand(const std::vector<Word>& words);
    // Files.
    bool writeFile(const std::vector<Word>& words);
    bool showFile(const std::vector<Word>& words);
    // Other.
    bool echo(const std::vector<Word>& words);
    bool help(const std::vector<Word>& words);

    sysctrlservice::ServiceInterface* service();
    boost::shared_ptr<sim::RecordingClient> client(const std::string& name);
    std::string mapped(const std::string& path) const;

    std::string m_pluginPath;
    std::string m_root;
    Printer& m_printer;
    // Goes before the plug-in is unloaded: its event manager holds the service's observers.
    std::unique_ptr<sim::SimSet> m_sim;
    void* m_library = nullptr;
    frame::AbstractApplication** m_applications = nullptr;
    frame::AbstractApplication* m_application = nullptr;
    Stage m_stage = Stage::Unloaded;
    std::map<std::string, boost::shared_ptr<sim::RecordingClient>> m_clients;
    int32_t m_calls = 0;
    int m_line = 0;
    int m_errors = 0;
    std::function<void()> m_beforeDestroy;
};

}  // namespace desk

#endif
