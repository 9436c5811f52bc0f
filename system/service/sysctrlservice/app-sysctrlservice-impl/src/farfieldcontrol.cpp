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

// What a far-field command works on: the port, the data string, the line's second word and the
// reply data it fills in.
struct FarFieldCall {
    zo::port::FarField& port;
    const std::string& data;
    const std::string& secondWord;
    std::string& resultData;

    // The switches take exactly "1" as on; "on", " 1", "01" and "" are off.
    bool on() const { return data == "1"; }
};

struct FarFieldOutcome {
    int32_t code;
    // Queries answer a value, not a status: whatever it is, the reply is "ok".
    bool valueReply;
    bool invalidParam;
};

FarFieldOutcome status(int32_t code) {
    return FarFieldOutcome{code, false, false};
}

FarFieldOutcome value(int32_t code) {
    return FarFieldOutcome{code, true, false};
}

// The language's messages, wherever a command runs, are do_cmd's.
const char kDoCmd[] = "do_cmd";

FarFieldOutcome switchCommand(const FarFieldCall& call, const char* name,
                              int32_t (zo::port::FarField::*set)(bool)) {
    call.resultData = name;
    return status((call.port.*set)(call.on()));
}

FarFieldOutcome runMode(const FarFieldCall& call) {
    if (call.secondWord == "resume") {
        // Resuming starts the unit afresh; only the mode's own result counts.
        call.port.reinit();
    }
    const int32_t code = call.port.setMode(call.data.c_str());
    call.resultData = "mode " + call.data + " " + std::to_string(code);
    return status(code);
}

FarFieldOutcome runReinit(const FarFieldCall& call) {
    const int32_t code = call.port.reinit();
    call.resultData = "reinit " + call.data + " " + std::to_string(code);
    return status(code);
}

FarFieldOutcome runTriggerDuration(const FarFieldCall& call) {
    uint32_t first = 0;
    uint32_t second = 0;
    const int32_t code = call.port.getTriggerDuration(&first, &second);
    call.resultData = std::to_string(first) + " " + std::to_string(second);
    return status(code);
}

FarFieldOutcome runVersion(const FarFieldCall& call) {
    const std::string version = call.port.getVersion();
    call.resultData = "getVersion " + version;
    return value(FarFieldControl::packVersion(version));
}

FarFieldOutcome runMicMeter(const FarFieldCall& call) {
    int32_t first = 0;
    int32_t second = 0;
    const int32_t code = call.port.getMicMeter(&first, &second);
    call.resultData = "micMeter " + std::to_string(code) + " " + std::to_string(first) + " " +
                      std::to_string(second);
    SYSCTRL_LOG_AS(kDoCmd, LOG_TRACE, "%s:%d:%s(): [0x%x] 0x%x-0x%x\n", code, first, second);
    return value(code);
}

FarFieldOutcome runSetLedColor(const FarFieldCall& call) {
    // The two numbers are separated by a blank: a comma is a word of its own, so "255,0" reads
    // its second number from "," as 0.
    std::vector<std::string> numbers;
    splitCommandWords(call.data, numbers);
    if (numbers.size() < 2) {
        return FarFieldOutcome{kStatusBadCommand, false, true};
    }
    const int32_t first = readNumber(numbers[0]);
    const int32_t second = readNumber(numbers[1]);
    const int32_t code = call.port.setLedColor(first, second);
    SYSCTRL_LOG_AS(kDoCmd, LOG_TRACE, "%s:%d:%s(): [0x%x] 0x%x-0x%x\n", code, first, second);
    // The colour is reported as set whatever the port said.
    call.resultData = "setLedColor";
    return value(code);
}

typedef CommandEntry<FarFieldOutcome (*)(const FarFieldCall& call)> FarFieldCommand;

const FarFieldCommand kFarFieldCommands[] = {
    {"power",
     [](const FarFieldCall& c) {
         return switchCommand(c, "power", &zo::port::FarField::setPower);
     }},
    {"upgrade",
     [](const FarFieldCall& c) {
         c.resultData = "upgrade";
         return status(c.port.upgrade());
     }},
    {"mute",
     [](const FarFieldCall& c) { return switchCommand(c, "mute", &zo::port::FarField::setMute); }},
    {"led",
     [](const FarFieldCall& c) { return switchCommand(c, "led", &zo::port::FarField::setLed); }},
    {"getSwitchStatus",
     [](const FarFieldCall& c) {
         const int32_t code = c.port.getSwitchStatus();
         c.resultData = "getSwitchStatus " + std::to_string(code);
         return value(code);
     }},
    {"mode", &runMode},
    {"reinit", &runReinit},
    {"getTriggerDuration", &runTriggerDuration},
    {"getUpgradeProgress",
     [](const FarFieldCall& c) {
         const int32_t code = c.port.getUpgradeProgress();
         c.resultData = "getUpgradeProgress " + std::to_string(code);
         return value(code);
     }},
    {"getVersion", &runVersion},
    {"micMeter", &runMicMeter},
    {"setLedColor", &runSetLedColor},
};

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

    const FarFieldCommand* const found = findCommand(kFarFieldCommands);
    FarFieldOutcome outcome = status(0);
    if (found != nullptr) {
        outcome = found->handler(FarFieldCall{*m_farField, data, word(1), resultData});
    }
    if (outcome.invalidParam) {
        result = kReplyInvalidParam;
        return kStatusBadCommand;
    }
    if (!resultData.empty()) {
        SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): %s.\n", resultData.c_str());
    }
    if (found == nullptr) {
        result = kReplyUnknownCommand;
    } else {
        result = outcome.code == 0 || outcome.valueReply ? kReplyOk : kReplyCommandError;
    }
    return outcome.code;
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
