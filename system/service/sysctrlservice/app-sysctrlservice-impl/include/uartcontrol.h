#ifndef SYSCTRLSERVICE_UARTCONTROL_H
#define SYSCTRLSERVICE_UARTCONTROL_H

#include <cstdint>
#include <string>

#include <boost/shared_ptr.hpp>

#include "CommandControl.h"

namespace zo {
namespace port {
class Uart;
}  // namespace port
}  // namespace zo

namespace sysctrlservice {

// The command language of the UART of the sound projector: "writeUart", "readUart", "initUart",
// their "...Factory" variants, "startTest" and "stopTest". Every parameter comes from the data
// string; binary data crosses as Base64 in both directions. Made for one command line.
class uartcontrol : public CommandControl {
  public:
    explicit uartcontrol(boost::shared_ptr<zo::port::Uart> uart);

    // Runs one command line: `result` gets the reply, `resultData` the Base64 text of what
    // "readUart" read. Returns 1 when the line held a word, 0 for an empty line ("err:no Command"
    // appended to `result`). Without a port object the commands that need it reply
    // "err: command returns error".
    int32_t do_cmd(const std::string& command, const std::string& data, std::string& result,
                   std::string& resultData);

    // Writes the bytes of a Base64 text. 0 when every byte went out or there was none; -5 for
    // malformed Base64, a short write or a missing port.
    int32_t writeUart(const std::string& text);
    // Switches the port to factory mode when needed, turns line feeds into blanks, appends one
    // line feed, then as writeUart.
    int32_t writeUartFactory(const std::string& text);
    // One read of at most 512 bytes; replaces `out` with their Base64 text when there were any.
    // 0 when read (possibly nothing), -5 on a port error or a missing port.
    int32_t readUart(std::string& out);
    // Factory mode as writeUartFactory, then as readUart.
    int32_t readUartFactory(std::string& out);
    // Configures the line from the words found anywhere in `settings` ("7BITS_PARITY", "9BITS",
    // "8_BITS_PARITY", "BAUDRATE_2400" to "BAUDRATE_115200", "PARITY_ODD", "STOPBITS_2"); without
    // a baud word the rate is 115200. 0 when the port took it, -5 otherwise.
    int32_t init(const std::string& settings);
    int32_t initFactory(const std::string& settings);
    // Only logs that the accessory's polling stops (true) or restarts (false). Always 0.
    int32_t pauseCommunication(bool pause);

  private:
    void prepareFactoryMode();

    boost::shared_ptr<zo::port::Uart> m_uart;
};

}  // namespace sysctrlservice

#endif
