#include "Arguments.h"

#include <cerrno>
#include <cstdlib>

namespace desk {

bool parseInteger(const std::string& text, int64_t& value) {
    size_t i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) {
        negative = text[i] == '-';
        ++i;
    }
    int base = 10;
    if (i + 1 < text.size() && text[i] == '0' && (text[i + 1] == 'x' || text[i + 1] == 'X')) {
        base = 16;
        i += 2;
    }
    if (i >= text.size()) {
        return false;
    }
    uint64_t magnitude = 0;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        int digit = -1;
        if (c >= '0' && c <= '9')
            digit = c - '0';
        else if (base == 16 && c >= 'a' && c <= 'f')
            digit = c - 'a' + 10;
        else if (base == 16 && c >= 'A' && c <= 'F')
            digit = c - 'A' + 10;
        if (digit < 0) {
            return false;
        }
        magnitude = magnitude * static_cast<uint64_t>(base) + static_cast<uint64_t>(digit);
        if (magnitude > 0xFFFFFFFFULL) {
            return false;
        }
    }
    const int64_t result =
        negative ? -static_cast<int64_t>(magnitude) : static_cast<int64_t>(magnitude);
    if (result < INT32_MIN || result > static_cast<int64_t>(UINT32_MAX)) {
        return false;
    }
    value = result;
    return true;
}

Arguments::Arguments(const std::vector<Word>& words, size_t first)
    : m_words(words), m_next(first) {}

const Word* Arguments::take(const char* what) {
    if (!ok()) {
        return nullptr;
    }
    if (m_next >= m_words.size()) {
        m_error = std::string("missing ") + what;
        return nullptr;
    }
    return &m_words[m_next++];
}

int32_t Arguments::integer(const char* what) {
    return static_cast<int32_t>(unsignedInteger(what));
}

uint32_t Arguments::unsignedInteger(const char* what) {
    const Word* word = take(what);
    if (word == nullptr) {
        return 0;
    }
    int64_t value = 0;
    if (word->quoted || word->json || !parseInteger(word->text, value)) {
        m_error = std::string(what) + ": expected a 32-bit integer, got \"" + word->text + "\"";
        return 0;
    }
    return static_cast<uint32_t>(value);
}

uint8_t Arguments::byte(const char* what) {
    const Word* word = take(what);
    if (word == nullptr) {
        return 0;
    }
    int64_t value = 0;
    if (word->quoted || word->json || !parseInteger(word->text, value) || value < 0 ||
        value > 255) {
        m_error = std::string(what) + ": expected 0..255, got \"" + word->text + "\"";
        return 0;
    }
    return static_cast<uint8_t>(value);
}

std::string Arguments::text(const char* what) {
    const Word* word = take(what);
    return word != nullptr ? word->text : std::string();
}

std::string Arguments::systemPath(const char* what) {
    const Word* word = take(what);
    if (word == nullptr) {
        return std::string();
    }
    if (word->text.empty() || word->text[0] != '/') {
        m_error = std::string(what) + ": expected an absolute path, got \"" + word->text + "\"";
        return std::string();
    }
    return word->text;
}

nlohmann::json Arguments::value(const char* what) {
    const Word* word = take(what);
    if (word == nullptr) {
        return nullptr;
    }
    if (word->quoted) {
        return word->text;
    }
    if (word->json) {
        nlohmann::json parsed = nlohmann::json::parse(word->text, nullptr, false);
        if (parsed.is_discarded()) {
            m_error = std::string(what) + ": malformed JSON " + word->text;
            return nullptr;
        }
        return parsed;
    }
    if (word->text == "true")
        return true;
    if (word->text == "false")
        return false;
    if (word->text == "null" || word->text == "-")
        return nullptr;
    int64_t number = 0;
    if (parseInteger(word->text, number)) {
        return number;
    }
    return word->text;
}

std::vector<Word> Arguments::rest() {
    std::vector<Word> remaining;
    if (ok()) {
        remaining.assign(m_words.begin() + static_cast<long>(m_next), m_words.end());
        m_next = m_words.size();
    }
    return remaining;
}

bool Arguments::finish() {
    if (ok() && m_next < m_words.size()) {
        m_error = "unexpected \"" + m_words[m_next].text + "\" after the last argument";
    }
    return ok();
}

}  // namespace desk
