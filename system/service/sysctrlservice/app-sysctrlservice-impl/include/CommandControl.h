#ifndef SYSCTRLSERVICE_COMMANDCONTROL_H
#define SYSCTRLSERVICE_COMMANDCONTROL_H

#include <cstdint>
#include <string>
#include <vector>

#include "EntryGuard.h"
#include "SysctrlLog.h"

namespace sysctrlservice {

// Reply texts shared by the text-command languages. Clients match them literally; the blank after
// the colon differs between them on purpose.
extern const char kReplyOk[];
extern const char kReplyNoCommand[];              // "err:no Command"
extern const char kReplyCommandError[];           // "err: command returns error"
extern const char kReplyUnknownCommand[];         // "err: unknown command" (UART, far field)
extern const char kReplyUnknownCommandNoBlank[];  // "err:unknown command" (OPC, antenna)
extern const char kReplyInsufficientArguments[];  // "err: insufficient arguments"
extern const char kReplyGetFailed[];              // "err: get failed"

// One command of a language: the word that names it and what runs it (a function, a member
// function or a code the language switches on).
template <typename Handler>
struct CommandEntry {
    const char* word;
    Handler handler;
};

// The part every text-command controller shares: the word list of the command line it runs and
// the lookup of its command word in the language's table.
class CommandControl {
  protected:
    CommandControl() = default;
    ~CommandControl() = default;

    // Replaces the word list with the words of `line` (see splitCommandWords). Returns false when
    // the line holds no word, after appending "err:no Command" to `result`.
    bool splitCommand(const std::string& line, std::string& result);

    size_t wordCount() const { return m_words.size(); }
    // The word at `index`, or an empty word past the end of the list.
    const std::string& word(size_t index) const;

    // The entry of `table` (entries with a `word`) named by word 0, or nullptr when none is.
    template <typename Entry, size_t N>
    const Entry* findCommand(const Entry (&table)[N]) const {
        for (const Entry& entry : table) {
            if (word(0) == entry.word) {
                return &entry;
            }
        }
        return nullptr;
    }

    // Runs `line` in a language whose commands are members of `controller` that take the reply:
    // the command named by word 0 replaces `result` and gives the status. A line without a word
    // appends "err:no Command", an unknown word "err:unknown command"; both give status 0.
    template <typename Controller, typename Status, size_t N>
    Status dispatch(Controller& controller,
                    const CommandEntry<Status (Controller::*)(std::string&)> (&table)[N],
                    const std::string& line, std::string& result) {
        if (!splitCommand(line, result)) {
            return 0;
        }
        const auto* const found = findCommand(table);
        if (found == nullptr) {
            result.append(kReplyUnknownCommandNoBlank);
            return 0;
        }
        return (controller.*(found->handler))(result);
    }

  private:
    std::vector<std::string> m_words;
};

// Runs `command` (a callable returning the controller's status) at the boundary of a remote
// operation. The string handling of a command can only throw when memory runs out; such a command
// ends as a failed one: the status is 0 and `result` becomes "err: command returns error".
template <typename Command>
int32_t runCommand(Command command, std::string& result) noexcept {
    try {
        return command();
    } catch (...) {
        logCaughtException(logBaseName(__FILE__), __LINE__, __func__);
    }
    try {
        result = kReplyCommandError;
    } catch (...) {
        result.clear();
    }
    return 0;
}

}  // namespace sysctrlservice

#endif
