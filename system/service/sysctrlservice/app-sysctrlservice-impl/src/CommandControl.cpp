#include "CommandControl.h"

#include "CommandText.h"

namespace sysctrlservice {

const char kReplyOk[] = "ok";
const char kReplyNoCommand[] = "err:no Command";
const char kReplyCommandError[] = "err: command returns error";
const char kReplyUnknownCommand[] = "err: unknown command";
const char kReplyUnknownCommandNoBlank[] = "err:unknown command";
const char kReplyInsufficientArguments[] = "err: insufficient arguments";
const char kReplyGetFailed[] = "err: get failed";

bool CommandControl::splitCommand(const std::string& line, std::string& result) {
    splitCommandWords(line, m_words);
    if (m_words.empty()) {
        result.append(kReplyNoCommand);
        return false;
    }
    return true;
}

const std::string& CommandControl::word(size_t index) const {
    static const std::string kNoWord;
    return index < m_words.size() ? m_words[index] : kNoWord;
}

}  // namespace sysctrlservice
