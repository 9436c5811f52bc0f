#include "farfieldcontrol.h"

#include <cctype>
#include <climits>
#include <cstdlib>
#include <vector>

#include <boost/tokenizer.hpp>

#include "CommandText.h"
#include "StatusCodes.h"
#include "SysctrlLog.h"
#include "zo/port/FarField.h"

namespace sysctrlservice {
namespace {

const char kReplyInvalidParam[] = "err:invalid param";

// A number as strtol reads it (leading blanks skipped, digits up to the first other character, 0
// when there are none), limited to 32 bits as on the set, where long is 32 bits wide.
int32_t readNumber(const std::string& word) {
    const long value = std::strtol(word.c_str(), nullptr, 10);
    if (value > INT32_MAX) {
        return INT32_MAX;
    }
    if (value < INT32_MIN) {
        return INT32_MIN;
    }
    return static_cast<int32_t>(value);
}

// Every ASCII blank and punctuation character: what separates the numbers of a version text.
const std::string& versionDelimiters() {
    static const std::string delimiters = [] {
        std::string found;
        for (int c = 1; c < 128; ++c) {
            if (std::isspace(c) || std::ispunct(c)) {
                found.push_back(static_cast<char>(c));
            }
        }
        return found;
    }();
    return delimiters;
}

}  // namespace

FarFieldControl::FarFieldControl(boost::shared_ptr<zo::port::FarField> farField)
    : m_farField(farField) {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): FarFieldControl --> A\n");
}

int32_t FarFieldControl::do_cmd(const std::string& command, const std::string& data,
                                std::string& result, std::string& resultData) {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): FarFieldControl --> %s %s\n", command.c_str(),
                data.c_str());
    if (!m_farField) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Cannot get far field object\n");
        return kStatusIoError;
    }
    if (!splitCommand(command, result)) {
        return kStatusBadCommand;
    }
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): FarFieldControl --> B\n");

    zo::port::FarField& port = *m_farField;
    const std::string& name = word(0);
    // The switches take exactly "1" as on; "on", " 1", "01" and "" are off.
    const bool on = data == "1";
    int32_t code = 0;
    bool matched = true;
    // Queries answer a value, not a status: whatever it is, the reply is "ok".
    bool valueReply = false;

    if (name == "power") {
        code = port.setPower(on);
        resultData = "power";
    } else if (name == "upgrade") {
        code = port.upgrade();
        resultData = "upgrade";
    } else if (name == "mute") {
        code = port.setMute(on);
        resultData = "mute";
    } else if (name == "led") {
        code = port.setLed(on);
        resultData = "led";
    } else if (name == "getSwitchStatus") {
        code = port.getSwitchStatus();
        valueReply = true;
        resultData = "getSwitchStatus " + std::to_string(code);
    } else if (name == "mode") {
        if (word(1) == "resume") {
            // Resuming starts the unit afresh; only the mode's own result counts.
            port.reinit();
        }
        code = port.setMode(data.c_str());
        resultData = "mode " + data + " " + std::to_string(code);
    } else if (name == "reinit") {
        code = port.reinit();
        resultData = "reinit " + data + " " + std::to_string(code);
    } else if (name == "getTriggerDuration") {
        uint32_t first = 0;
        uint32_t second = 0;
        code = port.getTriggerDuration(&first, &second);
        resultData = std::to_string(first) + " " + std::to_string(second);
    } else if (name == "getUpgradeProgress") {
        code = port.getUpgradeProgress();
        valueReply = true;
        resultData = "getUpgradeProgress " + std::to_string(code);
    } else if (name == "getVersion") {
        const std::string version = port.getVersion();
        code = packVersion(version);
        valueReply = true;
        resultData = "getVersion " + version;
    } else if (name == "micMeter") {
        int32_t first = 0;
        int32_t second = 0;
        code = port.getMicMeter(&first, &second);
        valueReply = true;
        resultData = "micMeter " + std::to_string(code) + " " + std::to_string(first) + " " +
                     std::to_string(second);
        SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): [0x%x] 0x%x-0x%x\n", code, first, second);
    } else if (name == "setLedColor") {
        // The two numbers are separated by a blank: a comma is a word of its own, so "255,0"
        // reads its second number from "," as 0.
        std::vector<std::string> numbers;
        splitCommandWords(data, numbers);
        if (numbers.size() < 2) {
            result = kReplyInvalidParam;
            return kStatusBadCommand;
        }
        const int32_t first = readNumber(numbers[0]);
        const int32_t second = readNumber(numbers[1]);
        code = port.setLedColor(first, second);
        SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): [0x%x] 0x%x-0x%x\n", code, first, second);
        // The colour is reported as set whatever the port said.
        valueReply = true;
        resultData = "setLedColor";
    } else {
        matched = false;
    }

    if (!resultData.empty()) {
        SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): %s.\n", resultData.c_str());
    }
    if (!matched) {
        result = kReplyUnknownCommand;
    } else if (code == 0 || valueReply) {
        result = kReplyOk;
    } else {
        result = kReplyCommandError;
    }
    return code;
}

int32_t FarFieldControl::packVersion(const std::string& version) {
    typedef boost::tokenizer<boost::char_separator<char>> Tokenizer;
    const boost::char_separator<char> separator(versionDelimiters().c_str(), "",
                                                boost::drop_empty_tokens);
    const Tokenizer numbers(version, separator);
    uint32_t packed = 0;
    int shift = 24;
    for (Tokenizer::const_iterator number = numbers.begin(); number != numbers.end() && shift >= 0;
         ++number, shift -= 8) {
        packed |= static_cast<uint32_t>(static_cast<uint8_t>(readNumber(*number))) << shift;
    }
    return static_cast<int32_t>(packed);
}

}  // namespace sysctrlservice
