#include "tvConfig/ConfigUtil.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fstream>

#include "HostState.h"
#include "zo/FileSystem.h"

namespace zo {
namespace host {
namespace {

std::string trim(const std::string& text) {
    const char* blanks = " \t\r\n";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos) {
        return std::string();
    }
    const size_t last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

// "[Name]" and "Name" name the same section.
std::string bareSection(const std::string& section) {
    const std::string trimmed = trim(section);
    if (trimmed.size() >= 2 && trimmed.front() == '[' && trimmed.back() == ']') {
        return trim(trimmed.substr(1, trimmed.size() - 2));
    }
    return trimmed;
}

bool parseIniInteger(const std::string& text, int& value) {
    if (text.empty()) {
        return false;
    }
    errno = 0;
    char* end = nullptr;
    const long parsed = std::strtol(text.c_str(), &end, 0);
    if (errno != 0 || end == text.c_str() || *end != '\0' || parsed < INT_MIN || parsed > INT_MAX) {
        return false;
    }
    value = static_cast<int>(parsed);
    return true;
}

}  // namespace

int readIniInt(const std::string& file, const std::string& section, const std::string& key,
               int& value) {
    std::ifstream in(zo::fs::path(file));
    if (!in) {
        return 0;
    }
    const std::string wantedSection = bareSection(section);
    const std::string wantedKey = trim(key);
    bool inSection = false;
    std::string line;
    while (std::getline(in, line)) {
        const std::string text = trim(line);
        if (text.empty() || text[0] == ';' || text[0] == '#') {
            continue;
        }
        if (text[0] == '[') {
            inSection = bareSection(text) == wantedSection;
            continue;
        }
        const size_t equals = text.find('=');
        if (!inSection || equals == std::string::npos ||
            trim(text.substr(0, equals)) != wantedKey) {
            continue;
        }
        std::string rawValue = trim(text.substr(equals + 1));
        const size_t comment = rawValue.find_first_of(";#");
        if (comment != std::string::npos) {
            rawValue = trim(rawValue.substr(0, comment));
        }
        return parseIniInteger(rawValue, value) ? 1 : 0;
    }
    return 0;
}

}  // namespace host
}  // namespace zo

namespace tvConfig {

ConfigUtil& ConfigUtil::instance() {
    static ConfigUtil utility;
    return utility;
}

int ConfigUtil::readInt(const std::string& file, const std::string& section, const std::string& key,
                        int& value) {
    const zo::host::Hooks hooks = zo::host::currentHooks();
    if (hooks.readInt) {
        return hooks.readInt(file, section, key, value);
    }
    return zo::host::readIniInt(file, section, key, value);
}

}  // namespace tvConfig
