#ifndef SYSCTRL_SIM_ARGUMENTS_H
#define SYSCTRL_SIM_ARGUMENTS_H

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "ScriptLexer.h"

namespace desk {

// Reads the whole of `text` as a script's number: an optional "+" or "-", then decimal digits or
// "0x" and hexadecimal digits, nothing else, within -2147483648..4294967295. Returns false,
// leaving `value` alone, for anything else ("", "0x", "1.5", "5a", " 5", "4294967296").
bool parseInteger(const std::string& text, int64_t& value);

// Reads typed values from the words of a command, in order. The first bad or missing value sets
// the error; later reads then return defaults, so a caller reads everything and checks ok() once.
class Arguments {
  public:
    Arguments(const std::vector<Word>& words, size_t first);

    // Decimal or 0x hexadecimal, optionally negative, within -2147483648..4294967295; values above
    // 2147483647 wrap, as the same 32 bits read as a signed number.
    int32_t integer(const char* what);
    uint32_t unsignedInteger(const char* what);
    uint8_t byte(const char* what);
    std::string text(const char* what);
    // Text that names a file of the set: it must start with "/", as the set's paths are placed
    // under the root by joining the two (a relative one would land beside the root).
    std::string systemPath(const char* what);
    // A script value: a number, true, false, null, a JSON object or list, or text.
    nlohmann::json value(const char* what);
    // Every remaining word.
    std::vector<Word> rest();

    bool atEnd() const { return m_next >= m_words.size(); }
    // Fails when words are left over.
    bool finish();
    bool ok() const { return m_error.empty(); }
    const std::string& error() const { return m_error; }

  private:
    const Word* take(const char* what);

    const std::vector<Word>& m_words;
    size_t m_next;
    std::string m_error;
};

}  // namespace desk

#endif
