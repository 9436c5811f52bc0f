#include "ScriptLexer.h"

#include "sim/Json.h"

namespace desk {
namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool readQuoted(const std::string& line, size_t& i, Word& word, std::string& error) {
    ++i;  // the opening quote
    while (i < line.size()) {
        const char c = line[i++];
        if (c == '"') {
            if (i < line.size() && !isBlank(line[i])) {
                error = "a quoted word must be followed by a blank";
                return false;
            }
            return true;
        }
        if (c != '\\') {
            word.text.push_back(c);
            continue;
        }
        if (i >= line.size()) {
            break;
        }
        const char escape = line[i++];
        switch (escape) {
            case '"':
                word.text.push_back('"');
                break;
            case '\\':
                word.text.push_back('\\');
                break;
            case 'n':
                word.text.push_back('\n');
                break;
            case 't':
                word.text.push_back('\t');
                break;
            case 'r':
                word.text.push_back('\r');
                break;
            case '0':
                word.text.push_back('\0');
                break;
            case 'x': {
                const int high = i < line.size() ? sim::hexDigitValue(line[i]) : -1;
                const int low = i + 1 < line.size() ? sim::hexDigitValue(line[i + 1]) : -1;
                if (high < 0 || low < 0) {
                    error = "\\x needs two hex digits";
                    return false;
                }
                word.text.push_back(static_cast<char>(high * 16 + low));
                i += 2;
                break;
            }
            default:
                error = std::string("unknown escape \\") + escape;
                return false;
        }
    }
    error = "unterminated quote";
    return false;
}

bool readJson(const std::string& line, size_t& i, Word& word, std::string& error) {
    int depth = 0;
    bool inString = false;
    const size_t start = i;
    for (; i < line.size(); ++i) {
        const char c = line[i];
        if (inString) {
            if (c == '\\') {
                ++i;
            } else if (c == '"') {
                inString = false;
            }
            continue;
        }
        if (c == '"') {
            inString = true;
        } else if (c == '{' || c == '[') {
            ++depth;
        } else if (c == '}' || c == ']') {
            if (--depth == 0) {
                ++i;
                word.text = line.substr(start, i - start);
                return true;
            }
        }
    }
    error = "unterminated JSON value";
    return false;
}

}  // namespace

bool splitScriptLine(const std::string& line, std::vector<Word>& words, std::string& error) {
    words.clear();
    size_t i = 0;
    while (true) {
        while (i < line.size() && isBlank(line[i])) {
            ++i;
        }
        if (i >= line.size()) {
            return true;
        }
        if (words.empty() && line[i] == '#') {
            return true;
        }
        Word word;
        if (line[i] == '"') {
            word.quoted = true;
            if (!readQuoted(line, i, word, error)) {
                return false;
            }
        } else if (line[i] == '{' || line[i] == '[') {
            word.json = true;
            if (!readJson(line, i, word, error)) {
                return false;
            }
        } else {
            while (i < line.size() && !isBlank(line[i])) {
                word.text.push_back(line[i++]);
            }
        }
        words.push_back(std::move(word));
    }
}

}  // namespace desk
