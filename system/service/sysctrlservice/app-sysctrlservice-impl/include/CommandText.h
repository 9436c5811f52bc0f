#ifndef SYSCTRLSERVICE_COMMANDTEXT_H
#define SYSCTRLSERVICE_COMMANDTEXT_H

#include <cstdint>
#include <string>
#include <vector>

namespace sysctrlservice {

// Splits one command line into the words of the text-command languages, replacing `words`.
// A blank (the space character only) separates words and is dropped; a comma separates words and
// is kept as a word of its own; no word is empty. Tabs, line ends, NUL and every other byte are
// ordinary word characters. So "  a,b  c" gives "a", ",", "b", "c", and "" or "   " gives nothing.
void splitCommandWords(const std::string& line, std::vector<std::string>& words);

// Reads the whole of `word` as a signed 32-bit decimal integer: an optional single "+" or "-",
// then one or more digits "0" to "9" (leading zeros allowed), nothing else, within
// -2147483648..2147483647. Returns false, leaving `value` alone, for anything else ("", "abc",
// "0x10", "1.5", "5a", " 5", ",", "2147483648").
bool parseInt32(const std::string& word, int32_t& value);

}  // namespace sysctrlservice

#endif
