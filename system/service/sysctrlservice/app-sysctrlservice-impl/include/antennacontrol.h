#ifndef SYSCTRLSERVICE_ANTENNACONTROL_H
#define SYSCTRLSERVICE_ANTENNACONTROL_H

#include <cstdint>
#include <string>

#include <boost/shared_ptr.hpp>

#include "CommandControl.h"

namespace zo {
namespace port {
class Antenna;
struct SatelliteAntennaParams;
}  // namespace port
}  // namespace zo

namespace sysctrlservice {

struct AntennaListsNamed;

// The antenna text language: reads and writes the satellite and terrestrial antenna settings as
// one line of key=value words. Made for one command and dropped afterwards; no lock.
//
// Without an antenna object every port call fails as a device that does not answer would, so each
// command replies with its own read or write failure text and nothing crashes.
class antennacontrol : public CommandControl {
  public:
    // Keeps its own reference to `antenna`, which may be empty.
    explicit antennacontrol(boost::shared_ptr<zo::port::Antenna> antenna);

    // Splits `command` into words and runs the command named by the first one. With no word it
    // appends "err:no Command" to `result`, with an unknown one "err:unknown command"; otherwise
    // the command replaces `result` with its reply. Returns 1 when the command ran and succeeded,
    // 0 otherwise.
    int do_cmd(const std::string& command, std::string& result);

    // The commands. Each replaces the whole of `result` ("ok..." or "err: ...") and returns 1 on
    // success, 0 on failure. The getters ignore any argument words.
    int getSatelliteAntenna(std::string& result);
    int getTerrestrialAntenna(std::string& result);
    // Reads the settings in force, changes the fields named by the argument words and writes the
    // whole record back, also after an unrecognised value word.
    int setSatelliteAntenna(std::string& result);
    // Word 1 selects the 5 V supply when it contains "5V"; anything else switches it off.
    int setTerrestrialAntenna(std::string& result);

    // The number after the first "=" of `token`; 0 when there is none or it is not a whole
    // signed 32-bit decimal number (the latter is logged).
    int32_t getIntValue(const std::string& token);

    // Value-word parsers: each searches word `index` for its field's words and stores the code of
    // every word found, so the last one in search order wins (getPinProtected appends each one
    // found instead). Return 1 when a word was found, 0 when none was (or `index` is outside the
    // word list) and the field is unchanged.
    int getSatCable(int index, zo::port::SatelliteAntennaParams& params);
    int getInstallationType(int index, zo::port::SatelliteAntennaParams& params);
    int getAntennaControlVoltage(int index, zo::port::SatelliteAntennaParams& params);
    int getAntennaCommunalSupply(int index, zo::port::SatelliteAntennaParams& params);
    int getAntenna22kHzSignal(int index, zo::port::SatelliteAntennaParams& params);
    int getToneBurst(int index, zo::port::SatelliteAntennaParams& params);
    int getHighBand(int index, zo::port::SatelliteAntennaParams& params);
    int getPinProtected(int index, zo::port::SatelliteAntennaParams& params);

  private:
    void readSatelliteNumbers(const std::string& token, zo::port::SatelliteAntennaParams& params,
                              AntennaListsNamed& named);
    // Word `index` of the command, or an empty word outside the list (a negative index too).
    const std::string& tokenAt(int index) const;

    boost::shared_ptr<zo::port::Antenna> m_antenna;
};

}  // namespace sysctrlservice

#endif
