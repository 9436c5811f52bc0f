#include "uartcontrol.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "StatusCodes.h"
#include "SysctrlLog.h"
#include "zo/Base64.h"
#include "zo/port/Uart.h"

namespace sysctrlservice {
namespace {

enum class UartCommand {
    Write,
    WriteFactory,
    Read,
    ReadFactory,
    Init,
    InitFactory,
    StartTest,
    StopTest,
    Unknown,
};

const CommandEntry<UartCommand> kUartCommands[] = {
    {"writeUart", UartCommand::Write},     {"writeUartFactory", UartCommand::WriteFactory},
    {"readUart", UartCommand::Read},       {"readUartFactory", UartCommand::ReadFactory},
    {"initUart", UartCommand::Init},       {"initUartFactory", UartCommand::InitFactory},
    {"startTest", UartCommand::StartTest}, {"stopTest", UartCommand::StopTest},
};

// One read hands out at most this much.
const int kReadCapacity = 512;

// The baud words in the order they are tested: a later one found overrides an earlier one, so
// the fastest one present wins. The index is the port's baud-rate index.
const char* const kBaudWords[] = {"BAUDRATE_2400",  "BAUDRATE_4800",  "BAUDRATE_9600",
                                  "BAUDRATE_19200", "BAUDRATE_28800", "BAUDRATE_38400",
                                  "BAUDRATE_57600", "BAUDRATE_76800", "BAUDRATE_115200"};
const int kBaud115200 = 8;

bool contains(const std::string& text, const char* word) {
    return text.find(word) != std::string::npos;
}

typedef std::unique_ptr<void, void (*)(void*)> CodecBuffer;

void logMissingPort() {
    SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Cannot get uart object\n");
}

}  // namespace

uartcontrol::uartcontrol(boost::shared_ptr<zo::port::Uart> uart) : m_uart(uart) {}

int32_t uartcontrol::do_cmd(const std::string& command, const std::string& data,
                            std::string& result, std::string& resultData) {
    if (!splitCommand(command, result)) {
        return 0;
    }
    const CommandEntry<UartCommand>* const entry = findCommand(kUartCommands);
    const UartCommand found = entry != nullptr ? entry->handler : UartCommand::Unknown;
    switch (found) {
        case UartCommand::Unknown:
            result = kReplyUnknownCommand;
            return 1;
        case UartCommand::StartTest:
        case UartCommand::StopTest:
            pauseCommunication(found == UartCommand::StartTest);
            result = kReplyOk;
            return 1;
        default:
            break;
    }
    if (!m_uart) {
        // No UART at all is not a write that went wrong: even the write commands say so.
        logMissingPort();
        result = kReplyCommandError;
        return 1;
    }
    switch (found) {
        case UartCommand::Write:
        case UartCommand::WriteFactory:
            // A write's status is deliberately not looked at: a malformed, empty or short write
            // shows only in the log.
            if (found == UartCommand::Write) {
                writeUart(data);
            } else {
                writeUartFactory(data);
            }
            result = kReplyOk;
            break;
        case UartCommand::Read:
        case UartCommand::ReadFactory: {
            const int32_t status =
                found == UartCommand::Read ? readUart(resultData) : readUartFactory(resultData);
            result = status == 0 ? kReplyOk : kReplyCommandError;
            break;
        }
        default: {
            const int32_t status = found == UartCommand::Init ? init(data) : initFactory(data);
            result = status == 0 ? kReplyOk : kReplyCommandError;
            break;
        }
    }
    return 1;
}

int32_t uartcontrol::writeUart(const std::string& text) {
    if (!m_uart) {
        logMissingPort();
        return kStatusIoError;
    }
    unsigned char* bytes = nullptr;
    const int length = zo::base64::decode(text.data(), text.size(), &bytes);
    const CodecBuffer owned(bytes, zo::base64::release);
    int32_t status = length < 0 ? kStatusIoError : 0;
    if (length > 0) {
        status = m_uart->write(bytes, length, 1) == length ? 0 : kStatusIoError;
    }
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): %d bytes written to UART.\n", length);
    return status;
}

int32_t uartcontrol::writeUartFactory(const std::string& text) {
    prepareFactoryMode();
    std::string line(text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    line.push_back('\n');
    return writeUart(line);
}

int32_t uartcontrol::readUart(std::string& out) {
    if (!m_uart) {
        logMissingPort();
        return kStatusIoError;
    }
    uint8_t buffer[kReadCapacity] = {};
    // A port that claims more than the buffer holds cannot have filled more.
    const int count = std::min(m_uart->read(buffer, kReadCapacity, 1), kReadCapacity);
    if (count <= 0) {
        SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): %d(encoded:%d) bytes read from UART(%s).\n", count, 0,
                    "");
        return count < 0 ? kStatusIoError : 0;
    }
    char* text = nullptr;
    const int encodedLength = zo::base64::encode(buffer, static_cast<size_t>(count), &text);
    const CodecBuffer owned(text, zo::base64::release);
    if (encodedLength < 0 || text == nullptr) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Cannot encode %d bytes read from UART.\n", count);
        return kStatusIoError;
    }
    out.assign(text, static_cast<size_t>(encodedLength));
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): strlen=%d size=%d", static_cast<int>(std::strlen(text)),
                static_cast<int>(out.size()));
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): %d(encoded:%d) bytes read from UART(%s).\n", count,
                encodedLength, text);
    return 0;
}

int32_t uartcontrol::readUartFactory(std::string& out) {
    prepareFactoryMode();
    return readUart(out);
}

int32_t uartcontrol::init(const std::string& settings) {
    if (!m_uart) {
        logMissingPort();
        return kStatusIoError;
    }
    // "8BITS_ASYNCHRON_PARITY", "PARITY_EVEN" and "STOPBITS_1" name the defaults and change
    // nothing.
    int frameFormat = 0;
    if (contains(settings, "7BITS_PARITY")) {
        frameFormat = 1;
    }
    if (contains(settings, "9BITS")) {
        frameFormat = 2;
    }
    if (contains(settings, "8_BITS_PARITY")) {
        frameFormat = 3;
    }
    int baudRateIndex = kBaud115200;
    for (int index = 0; index <= kBaud115200; ++index) {
        if (contains(settings, kBaudWords[index])) {
            baudRateIndex = index;
        }
    }
    const int oddParity = contains(settings, "PARITY_ODD") ? 1 : 0;
    const int twoStopBits = contains(settings, "STOPBITS_2") ? 1 : 0;
    return m_uart->configure(frameFormat, baudRateIndex, oddParity, twoStopBits, 1, 1) == 0
               ? 0
               : kStatusIoError;
}

int32_t uartcontrol::initFactory(const std::string& settings) {
    prepareFactoryMode();
    return init(settings);
}

int32_t uartcontrol::pauseCommunication(bool pause) {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Soundprojector poll thread %s.\n",
                pause ? "stopped" : "restarted");
    return 0;
}

void uartcontrol::prepareFactoryMode() {
    if (m_uart && m_uart->getMode(1) == 0) {
        m_uart->setMode(1, 0);
    }
}

}  // namespace sysctrlservice
