#ifndef SYSCTRL_SIM_SCRIPTLEXER_H
#define SYSCTRL_SIM_SCRIPTLEXER_H

#include <string>
#include <vector>

namespace desk {

// One word of a script line.
struct Word {
    std::string text;
    bool quoted = false;  // written as "..." (escapes resolved)
    bool json = false;    // written as a JSON object or list, {...} or [...]
};

// Splits one script line into words: blanks (space, tab) separate words; a word that starts with a
// double quote runs to the closing quote, with the escapes \" \\ \n \t \r \0 and \xHH; a word that
// starts with { or [ runs to its matching bracket (JSON strings inside may hold blanks and
// brackets). A blank line or one whose first word starts with # holds no words. Returns false with
// an explanation for an unterminated quote or bracket or a bad escape.
bool splitScriptLine(const std::string& line, std::vector<Word>& words, std::string& error);

}  // namespace desk

#endif
