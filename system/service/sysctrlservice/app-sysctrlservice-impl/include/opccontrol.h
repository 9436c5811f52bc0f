#ifndef SYSCTRLSERVICE_OPCCONTROL_H
#define SYSCTRLSERVICE_OPCCONTROL_H

#include <cstdint>
#include <string>

#include <boost/shared_ptr.hpp>

#include "CommandControl.h"

namespace zo {
namespace port {
class Opc;
}  // namespace port
}  // namespace zo

namespace sysctrlservice {

// The OPC unit's command language: "startOpc N" (N = 0 stops, else starts mode N - 1 modulo 256),
// "getOpcState" and "getOpcDimmingRate". Made for one command line. Without a port object every
// command that needs it replies "err: get failed" with status 0.
class opccontrol : public CommandControl {
  public:
    explicit opccontrol(boost::shared_ptr<zo::port::Opc> opc);

    // Runs one command line and replaces `result` with its reply ("err:no Command" and
    // "err:unknown command" are appended to it). Returns non-zero for success, 0 for failure.
    int32_t do_cmd(const std::string& command, std::string& result);

    // The commands; each replaces `result` with its reply.
    // 1 when the unit started or stopped; 0 for a missing argument or a port failure.
    int32_t startOpc(std::string& result);
    // The port's value as decimal text; 1, or 0 when the port is missing.
    int32_t getOpcState(std::string& result);
    int32_t getOpcDimmingRate(std::string& result);

    // The word at `index` read as a signed 32-bit decimal integer; -1 (logged) when it is not one.
    int32_t getIntArgument(int index);

  private:
    boost::shared_ptr<zo::port::Opc> m_opc;
};

}  // namespace sysctrlservice

#endif
