#ifndef SYSCTRLSERVICE_FARFIELDCONTROL_H
#define SYSCTRLSERVICE_FARFIELDCONTROL_H

#include <cstdint>
#include <string>

#include <boost/shared_ptr.hpp>

#include "CommandControl.h"

namespace zo {
namespace port {
class FarField;
}  // namespace port
}  // namespace zo

namespace sysctrlservice {

// The far-field microphone unit's command language: "power", "upgrade", "mute", "led",
// "getSwitchStatus", "mode", "reinit", "getTriggerDuration", "getUpgradeProgress", "getVersion",
// "micMeter" and "setLedColor". The command's parameter is the data string. Made for one command
// line.
class FarFieldControl : public CommandControl {
  public:
    explicit FarFieldControl(boost::shared_ptr<zo::port::FarField> farField);

    // Runs one command line: `result` gets "ok" or an "err..." text, `resultData` the command's
    // echo or values. Returns the port's return code (0 also for an unknown command; for
    // "getVersion" the version's first four numbers packed into the four bytes, most significant
    // first), -5 without a port object (both outputs untouched), -14 for an empty line or a
    // "setLedColor" data string of fewer than two words.
    int32_t do_cmd(const std::string& command, const std::string& data, std::string& result,
                   std::string& resultData);

    // The version text's first four numbers, each in 8 bits, most significant byte first. The text
    // is cut at blanks and punctuation; each piece reads as strtol does (0 without leading digits).
    static int32_t packVersion(const std::string& version);

  private:
    boost::shared_ptr<zo::port::FarField> m_farField;
};

}  // namespace sysctrlservice

#endif
