#include "opccontrol.h"

#include <cstdio>

#include "CommandText.h"
#include "SysctrlLog.h"
#include "zo/port/Opc.h"

namespace sysctrlservice {
namespace {

const CommandEntry<int32_t (opccontrol::*)(std::string&)> kOpcCommands[] = {
    {"startOpc", &opccontrol::startOpc},
    {"getOpcState", &opccontrol::getOpcState},
    {"getOpcDimmingRate", &opccontrol::getOpcDimmingRate},
};

// Without the port a command fails as a refused one does.
int32_t missingPort(std::string& result) {
    SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Cannot get opc object\n");
    result = kReplyGetFailed;
    return 0;
}

// Replaces `result` with the value as signed decimal text.
void formatValue(int value, std::string& result) {
    char text[40];
    std::snprintf(text, sizeof text, "%d", value);
    result = text;
}

}  // namespace

opccontrol::opccontrol(boost::shared_ptr<zo::port::Opc> opc) : m_opc(opc) {}

int32_t opccontrol::do_cmd(const std::string& command, std::string& result) {
    // Both texts of a command line that runs nothing report status 0, the language's failure, so
    // that every reply beginning "err:" leaves a "failed." line in the log as the other OPC
    // failures do, and as an empty UART command line does.
    return dispatch(*this, kOpcCommands, command, result);
}

int32_t opccontrol::startOpc(std::string& result) {
    if (wordCount() < 2) {
        result = kReplyInsufficientArguments;
        return 0;
    }
    const int32_t argument = getIntArgument(1);
    if (!m_opc) {
        return missingPort(result);
    }
    int status = 0;
    if (argument == 0) {
        status = m_opc->stop();
    } else {
        // Modes count from 1 in the language and from 0 at the port, in 8 bits.
        status = m_opc->start(static_cast<uint8_t>(static_cast<uint32_t>(argument) - 1u));
    }
    if (status != 0) {
        result = kReplyGetFailed;
        return 0;
    }
    result = kReplyOk;
    return 1;
}

int32_t opccontrol::getOpcState(std::string& result) {
    if (!m_opc) {
        return missingPort(result);
    }
    formatValue(m_opc->getState(), result);
    return 1;
}

int32_t opccontrol::getOpcDimmingRate(std::string& result) {
    if (!m_opc) {
        return missingPort(result);
    }
    formatValue(m_opc->getDimmingRate(), result);
    return 1;
}

int32_t opccontrol::getIntArgument(int index) {
    int32_t value = 0;
    if (index < 0 || !parseInt32(word(static_cast<size_t>(index)), value)) {
        // The text is the one service tools have always seen for a bad number.
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): error parsing process smaps.\n");
        return -1;
    }
    return value;
}

}  // namespace sysctrlservice
