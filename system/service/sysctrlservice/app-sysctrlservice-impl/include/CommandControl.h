#ifndef SYSCTRLSERVICE_COMMANDCONTROL_H
#define SYSCTRLSERVICE_COMMANDCONTROL_H

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include "SysctrlLog.h"

namespace sysctrlservice {

// Reply texts shared by the text-command languages. Clients match them literally; the blank after
// the colon differs between them on purpose.
extern const char kReplyOk[];
extern const char kReplyNoCommand[];       // "err:no Command"
extern const char kReplyCommandError[];    // "err: command returns error"
extern const char kReplyUnknownCommand[];  // "err: unknown command"

// The part every text-command controller shares: the word list of the command line it runs.
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
    } catch (const std::exception& error) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): exception: %s\n", error.what());
    } catch (...) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): exception\n");
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
