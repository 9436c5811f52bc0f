// The text-command operations: OPC, UART, far field, GPIO, I2C, HDMI and the shell.
#include "Application.h"

#include "EntryGuard.h"
#include "StatusCodes.h"
#include "SysctrlLog.h"
#include "farfieldcontrol.h"
#include "opccontrol.h"
#include "uartcontrol.h"
#include "zo/port/FactoryManager.h"
#include "zo/port/HdmiSwitch.h"
#include "zoshell/zoshell.h"

namespace sysctrlservice {
namespace {

// What the shell answers for a command it could not run, and the diagnostic commands when there
// is no factory manager to run them.
const char kReplyCouldNotExecute[] = "err: could not execute";

void logMissingFactoryManager() {
    SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Cannot get factory manager object\n");
}

// Runs one of the factory manager's text commands, `command(manager)`. Without the object nothing
// runs and the reply says so. Returns false when the command did not succeed.
template <typename Command>
bool runFactoryCommand(const boost::shared_ptr<zo::port::FactoryManager>& manager, Command command,
                       std::string& result) {
    if (!manager) {
        logMissingFactoryManager();
        result = kReplyCouldNotExecute;
        return false;
    }
    return runCommand([&] { return command(*manager); }, result) != 0;
}

// The HDMI switch's signal flags as "ok (" + the names of the flags set + ")", each name followed
// by a blank; "getSignalInfo failed" when they cannot be read.
std::string describeSignal(zo::port::HdmiSwitch* hdmi) {
    uint32_t flags = 0;
    if (hdmi == nullptr) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Cannot get hdmi switch object\n");
        return "getSignalInfo failed";
    }
    if (hdmi->getSignalInfo(&flags) != 0) {
        return "getSignalInfo failed";
    }
    std::string text = "ok (";
    if ((flags & zo::port::HDMISWITCH_SYNC_OK) != 0) {
        text += "HDMISWITCH_SYNC_OK ";
    }
    if ((flags & zo::port::HDMISWITCH_CLOCK_OK) != 0) {
        text += "HDMISWITCH_CLOCK_OK ";
    }
    return text + ")";
}

}  // namespace

// The command languages: a controller made for this one call runs the command line; every client
// receives the reply.

int Application::controlOpc(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                            const std::string& command) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    std::string result;
    opccontrol controller(m_opc);
    if (runCommand([&] { return controller.do_cmd(command, result); }, result) == 0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): failed.\n");
    }
    deliverToClients(&ClientInterface::controlOpcResult, msgIds, transport, result);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::controlUart(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                             const std::string& command, const std::string& data) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    std::string result;
    std::string resultData;
    uartcontrol controller(m_uart);
    if (runCommand([&] { return controller.do_cmd(command, data, result, resultData); }, result) ==
        0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): failed.\n");
    }
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): result=%s\nresultdata=%s", result.c_str(),
                resultData.c_str());
    deliverToClients(&ClientInterface::controlUartResult, msgIds, transport, result, resultData);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::controlFarField(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 const std::string& command, const std::string& data) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    std::string result;
    std::string resultData;
    FarFieldControl controller(m_farField);
    // The far-field status is the port's own code, so a set command that succeeded, an unknown
    // command and a version of all zeros are what log "failed." here. Service tools know the line
    // so; it is kept.
    if (runCommand([&] { return controller.do_cmd(command, data, result, resultData); }, result) ==
        0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): failed.\n");
    }
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): result=%s\nresultdata=%s", result.c_str(),
                resultData.c_str());
    deliverToClients(&ClientInterface::controlFarFieldResult, msgIds, transport, result,
                     resultData);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

// Far-field notifications are not offered: registering for them is accepted and changes nothing.
int Application::registerFarFieldCallback(frame::MsgIds&, const frame::TransportInfo&, int,
                                          const std::string&) try {
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::unregisterFarFieldCallback(frame::MsgIds&, const frame::TransportInfo&, int) try {
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

// The diagnostic pass-throughs: the platform interprets the text; its result text goes to every
// client, whatever it is.

int Application::setGpio(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         const std::string& command) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    std::string result;
    if (!runFactoryCommand(
            m_factoryManager,
            [&](zo::port::FactoryManager& manager) { return manager.setGpio(command, result); },
            result)) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): failed.\n");
    }
    deliverToClients(&ClientInterface::setGpioResult, msgIds, transport, result);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::getGpio(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                         const std::string& command) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    std::string result;
    if (!runFactoryCommand(
            m_factoryManager,
            [&](zo::port::FactoryManager& manager) { return manager.getGpio(command, result); },
            result)) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): failed.\n");
    }
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): result=%s\n", result.c_str());
    deliverToClients(&ClientInterface::getGpioResult, msgIds, transport, result);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::controlIic(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                            const std::string& command) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    std::string result;
    // Only I2C commands are passed on (case-sensitive); anything else gets an empty reply.
    if (command.find("iic") != std::string::npos) {
        if (!runFactoryCommand(
                m_factoryManager,
                [&](zo::port::FactoryManager& manager) {
                    return manager.commandIic(command, result);
                },
                result)) {
            SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): commandIic failed\n");
        }
    }
    deliverToClients(&ClientInterface::controlIicResult, msgIds, transport, result);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::controlHdmi(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                             const std::string& command) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    std::string result = "command unknown";
    if (command.find("getSignalInfo") != std::string::npos) {
        result = describeSignal(m_hdmi.get());
    } else if (!m_factoryManager) {
        logMissingFactoryManager();
    } else if (runCommand([&] { return m_factoryManager->controlHdmi(command, result); }, result) ==
               0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): controlHdmi failed.\n");
    }
    deliverToClients(&ClientInterface::controlHdmiResult, msgIds, transport, result);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::executeZoshell(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                const std::string& command) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    std::string result = "ok";
    // The command's own output and exit status are not collected: "ok" means it could be run.
    const int status = zoshellExecuteCmd(command.data(), command.size(), 2, 0);
    if (status < 0) {
        result = kReplyCouldNotExecute;
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Function returned: %d.\n", status);
    }
    deliverToClients(&ClientInterface::executeZoshellResult, msgIds, transport, result);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

}  // namespace sysctrlservice
