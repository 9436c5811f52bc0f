// The antenna text language: satellite and terrestrial settings as key=value words.
#include "antennacontrol.h"

#include <cstdio>
#include <exception>

#include "CommandText.h"
#include "SysctrlLog.h"
#include "zo/port/Antenna.h"

namespace sysctrlservice {

// Which list fields the command being run has named so far: the first value of a list replaces
// the values in force, later ones are added to it.
struct AntennaListsNamed {
    bool satId = false;
    bool lnbFrequencyLow = false;
    bool lnbFrequencyHigh = false;
    bool channelNumber = false;
    bool channelFrequency = false;
    bool pin = false;
    bool pinProtected = false;
};

namespace {

using zo::port::SatelliteAntennaParams;
using zo::port::TerrestrialAntennaParams;

// What a port call counts as when there is no antenna object to make it.
const int kNoAntennaObject = -1;

// The antenna language's own replies besides the shared ones.
const char kReplyGetActualFailed[] = "err: get actual parameters failed";
const char kReplyWrongParameter[] = "err: wrong parameter";
const char kReplySetFailed[] = "err: set failed";
const char kReplyInsufficientParameters[] = "err: insufficient parameters";
const char kReplySetNotPossible[] = "err: set not possible";

// One value word of a field and the code it stands for. Each table is read both ways: the report
// writes the word of a code, the parsers search a token for the words in table order.
struct ValueWord {
    int32_t code;
    const char* word;
};

const ValueWord kSatCablesWords[] = {
    {zo::port::ANTENNA_SAT_CABLES_ONE, "ONE"},
    {zo::port::ANTENNA_SAT_CABLES_TWO, "TWO"},
    {zo::port::ANTENNA_SAT_CABLES_SPLIT, "SPLIT"},
};

// The reserved type 5 has no word, so it is reported "unknown" and cannot be set from text.
// "DISEQC_ONECABLE" holds "DISEQC" and must come after it to win.
const ValueWord kInstallationTypeWords[] = {
    {zo::port::ANTENNA_INSTALLATION_SINGLE, "SINGLE"},
    {zo::port::ANTENNA_INSTALLATION_SWITCHBOX, "SWITCHBOX"},
    {zo::port::ANTENNA_INSTALLATION_TONEBURST, "TONEBURST"},
    {zo::port::ANTENNA_INSTALLATION_DISEQC, "DISEQC"},
    {zo::port::ANTENNA_INSTALLATION_DISEQC_ONECABLE, "DISEQC_ONECABLE"},
    {zo::port::ANTENNA_INSTALLATION_COMMUNAL, "COMMUNAL"},
};

const ValueWord kCtrlVoltageWords[] = {
    {zo::port::ANTENNA_CTRL_VOLTAGE_OFF, "OFF"},
    {zo::port::ANTENNA_CTRL_VOLTAGE_ON, "ON"},
};

const ValueWord kCommunalSupplyWords[] = {
    {zo::port::ANTENNA_COMMUNAL_SUPPLY_OFF, "OFF"},
    {zo::port::ANTENNA_COMMUNAL_SUPPLY_13V, "13V"},
    {zo::port::ANTENNA_COMMUNAL_SUPPLY_18V, "18V"},
};

const ValueWord k22kHzSignalWords[] = {
    {zo::port::ANTENNA_22KHZ_OFF, "OFF"},
    {zo::port::ANTENNA_22KHZ_BAND, "BAND"},
    {zo::port::ANTENNA_22KHZ_POSITION, "POSITION"},
};

const ValueWord kToneBurstWords[] = {
    {zo::port::ANTENNA_TONE_BURST_OFF, "OFF"},
    {zo::port::ANTENNA_TONE_BURST_POSITION, "POSITION"},
    {zo::port::ANTENNA_TONE_BURST_OPTION, "OPTION"},
};

// Both highBand and pinProtected: 0 no (not protected), 1 yes (protected).
const ValueWord kNoYesWords[] = {
    {0, "NO"},
    {1, "YES"},
};

// Written only: the mode is set by number.
const ValueWord kDiseqcModeWords[] = {
    {zo::port::ANTENNA_DISEQC_1_0, "DiSEqC1.0"},
    {zo::port::ANTENNA_DISEQC_1_2, "DiSEqC1.2"},
};

const ValueWord kSupplyVoltageWords[] = {
    {zo::port::ANTENNA_SUPPLY_VOLTAGE_OFF, "OFF"},
    {zo::port::ANTENNA_SUPPLY_VOLTAGE_5V, "5V"},
};

const char kUnknownWord[] = "unknown";
const char kOtherDiseqcModes[] = "others";

// The keys of the satellite record's fields, written by the report and searched by the setting.
const char kSatCables[] = "satCables";
const char kInstallationType[] = "installationType";
const char kSatId[] = "satId";
const char kLnbFrequencyLow[] = "lnbFrequencyLow";
const char kLnbFrequencyHigh[] = "lnbFrequencyHigh";
const char kRepeatRate[] = "repeatRate";
const char kCtrlVoltage[] = "ctrlVoltage";
const char kCommunalSupply[] = "communalSupply";
const char kSignal22kHz[] = "signal22kHz";
const char kToneBurst[] = "toneBurst";
const char kMotorType[] = "motorType";
const char kMotorMoveType[] = "motorMoveType";
const char kMotorMoveData[] = "motorMoveData";
const char kMotorPositionData[] = "motorPositionData";
const char kHighBand[] = "highBand";
const char kUnicableDevId[] = "unicableDevId";
const char kSwitchDelay[] = "switchDelay";
const char kChannelNumber[] = "channelNumber";
const char kChannelFrequency[] = "channelFrequency";
const char kPin[] = "pin";
const char kPinProtected[] = "pinProtected";
// The mode is read under its own name but reported misspelt; clients rely on both spellings.
const char kDiseqcMode[] = "diseqcMode";
const char kDiseqcModeReported[] = "dieqcMode";
const char kSupplyVoltage[] = "supplyVoltage";

template <size_t N>
const char* wordFor(const ValueWord (&table)[N], int32_t code,
                    const char* fallback = kUnknownWord) {
    for (const ValueWord& entry : table) {
        if (entry.code == code) {
            return entry.word;
        }
    }
    return fallback;
}

bool contains(const std::string& token, const char* text) {
    return token.find(text) != std::string::npos;
}

// Stores into `field` the code of every table word that `token` holds, in table order, so the
// last one found wins. Returns 1 when one was found.
template <size_t N, typename Field>
int storeWordsFound(const ValueWord (&table)[N], const std::string& token, Field& field) {
    int found = 0;
    for (const ValueWord& entry : table) {
        if (contains(token, entry.word)) {
            field = static_cast<Field>(entry.code);
            found = 1;
        }
    }
    return found;
}

void appendWord(std::string& text, const char* key, const char* word) {
    text += ' ';
    text += key;
    text += '=';
    text += word;
}

void appendSigned(std::string& text, const char* key, int32_t value) {
    char piece[40];
    std::snprintf(piece, sizeof(piece), " %s=%d", key, value);
    text += piece;
}

void appendUnsigned(std::string& text, const char* key, uint32_t value) {
    char piece[40];
    std::snprintf(piece, sizeof(piece), " %s=%u", key, value);
    text += piece;
}

template <typename Item>
void startList(std::vector<Item>& list, bool& named) {
    if (named) {
        return;
    }
    list.clear();
    named = true;
}

template <typename Item>
void appendToList(std::vector<Item>& list, bool& named, int32_t value) {
    startList(list, named);
    list.push_back(static_cast<Item>(value));
}

typedef int (antennacontrol::*WordParser)(int, SatelliteAntennaParams&);

// The word-valued keys after satCables, in the order they are looked for.
const struct {
    const char* key;
    WordParser parse;
} kWordKeys[] = {
    {kInstallationType, &antennacontrol::getInstallationType},
    {kCtrlVoltage, &antennacontrol::getAntennaControlVoltage},
    {kCommunalSupply, &antennacontrol::getAntennaCommunalSupply},
    {kSignal22kHz, &antennacontrol::getAntenna22kHzSignal},
    {kToneBurst, &antennacontrol::getToneBurst},
    {kHighBand, &antennacontrol::getHighBand},
};

const CommandEntry<int (antennacontrol::*)(std::string&)> kAntennaCommands[] = {
    {"setSatelliteAntenna", &antennacontrol::setSatelliteAntenna},
    {"getSatelliteAntenna", &antennacontrol::getSatelliteAntenna},
    {"setTerrestrialAntenna", &antennacontrol::setTerrestrialAntenna},
    {"getTerrestrialAntenna", &antennacontrol::getTerrestrialAntenna},
};

}  // namespace

antennacontrol::antennacontrol(boost::shared_ptr<zo::port::Antenna> antenna) : m_antenna(antenna) {}

int antennacontrol::do_cmd(const std::string& command, std::string& result) {
    return dispatch(*this, kAntennaCommands, command, result);
}

int antennacontrol::getSatelliteAntenna(std::string& result) {
    SatelliteAntennaParams params;
    const int status = m_antenna ? m_antenna->getSatelliteParams(params) : kNoAntennaObject;
    if (status != 0) {
        result = kReplyGetActualFailed;
        return 0;
    }

    std::string reply = kReplyOk;
    appendWord(reply, kSatCables, wordFor(kSatCablesWords, params.satCables));
    appendWord(reply, kInstallationType, wordFor(kInstallationTypeWords, params.installationType));
    for (const int32_t satId : params.satId) {
        appendSigned(reply, kSatId, satId);
    }
    for (const uint32_t frequency : params.lnbFrequencyLow) {
        appendUnsigned(reply, kLnbFrequencyLow, frequency);
    }
    for (const uint32_t frequency : params.lnbFrequencyHigh) {
        appendUnsigned(reply, kLnbFrequencyHigh, frequency);
    }
    appendUnsigned(reply, kRepeatRate, params.repeatRate);
    appendWord(reply, kCtrlVoltage, wordFor(kCtrlVoltageWords, params.ctrlVoltage));
    appendWord(reply, kCommunalSupply, wordFor(kCommunalSupplyWords, params.communalSupply));
    appendWord(reply, kSignal22kHz, wordFor(k22kHzSignalWords, params.signal22kHz));
    appendWord(reply, kToneBurst, wordFor(kToneBurstWords, params.toneBurst));
    appendWord(reply, kHighBand, wordFor(kNoYesWords, params.highBand));
    appendSigned(reply, kUnicableDevId, params.unicableDevId);
    appendUnsigned(reply, kSwitchDelay, params.switchDelay);
    for (const uint32_t channel : params.channelNumber) {
        appendUnsigned(reply, kChannelNumber, channel);
    }
    for (const uint32_t frequency : params.channelFrequency) {
        appendUnsigned(reply, kChannelFrequency, frequency);
    }
    for (const std::string& pin : params.pin) {
        appendWord(reply, kPin, pin.c_str());
    }
    for (const zo::port::antennaPinProtected_enum isProtected : params.pinProtected) {
        appendWord(reply, kPinProtected, wordFor(kNoYesWords, isProtected));
    }
    appendWord(reply, kDiseqcModeReported,
               wordFor(kDiseqcModeWords, params.diseqcMode, kOtherDiseqcModes));
    result.swap(reply);
    return 1;
}

int antennacontrol::getTerrestrialAntenna(std::string& result) {
    TerrestrialAntennaParams params;
    const int status = m_antenna ? m_antenna->getTerrestrialParams(params) : kNoAntennaObject;
    if (status != 0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): getTerrestrialAntenna returns error.\n");
        result = kReplyGetFailed;
        return 0;
    }
    result = kReplyOk;
    appendWord(result, kSupplyVoltage, wordFor(kSupplyVoltageWords, params.supplyVoltage));
    return 1;
}

int antennacontrol::setSatelliteAntenna(std::string& result) {
    if (wordCount() < 2) {
        result = kReplyInsufficientArguments;
        return 0;
    }
    SatelliteAntennaParams params;
    const int readStatus = m_antenna ? m_antenna->getSatelliteParams(params) : kNoAntennaObject;
    if (readStatus != 0) {
        result = kReplyGetActualFailed;
        return 0;
    }

    AntennaListsNamed named;
    int recognised = 1;
    for (size_t index = 1; index < wordCount(); ++index) {
        const std::string& token = word(index);
        const int position = static_cast<int>(index);
        if (contains(token, kSatCables)) {
            // A failed cabling word is judged together with the next token.
            recognised = getSatCable(position, params);
            continue;
        }
        for (const auto& wordKey : kWordKeys) {
            if (contains(token, wordKey.key)) {
                recognised = (this->*wordKey.parse)(position, params);
            }
        }
        if (contains(token, kPinProtected)) {
            startList(params.pinProtected, named.pinProtected);
            recognised = getPinProtected(position, params);
        } else if (contains(token, kPin)) {
            char pin[16];
            std::snprintf(pin, sizeof(pin), "%04u", static_cast<unsigned int>(getIntValue(token)));
            startList(params.pin, named.pin);
            params.pin.push_back(pin);
        }
        readSatelliteNumbers(token, params, named);
        if (recognised == 0) {
            // What was read so far is still written; a successful write answers "ok".
            result = kReplyWrongParameter;
            break;
        }
    }

    const int writeStatus = m_antenna ? m_antenna->setSatelliteParams(params) : kNoAntennaObject;
    if (writeStatus != 0) {
        result = kReplySetFailed;
        return 0;
    }
    result = kReplyOk;
    return 1;
}

// The number-valued keys of a satellite setting found in `token`, each read after its equals sign.
void antennacontrol::readSatelliteNumbers(const std::string& token,
                                          zo::port::SatelliteAntennaParams& params,
                                          AntennaListsNamed& named) {
    if (contains(token, kSatId)) {
        appendToList(params.satId, named.satId, getIntValue(token));
    }
    if (contains(token, kLnbFrequencyLow)) {
        appendToList(params.lnbFrequencyLow, named.lnbFrequencyLow, getIntValue(token));
    }
    if (contains(token, kLnbFrequencyHigh)) {
        appendToList(params.lnbFrequencyHigh, named.lnbFrequencyHigh, getIntValue(token));
    }
    if (contains(token, kMotorType)) {
        params.motorType = getIntValue(token);
    }
    if (contains(token, kMotorMoveType)) {
        params.motorMoveType = getIntValue(token);
    }
    if (contains(token, kMotorMoveData)) {
        params.motorMoveData = getIntValue(token);
    }
    if (contains(token, kMotorPositionData)) {
        params.motorPositionData = getIntValue(token);
    }
    if (contains(token, kDiseqcMode)) {
        params.diseqcMode = static_cast<zo::port::antennaDiseqcMode_enum>(getIntValue(token));
    }
    if (contains(token, kRepeatRate)) {
        params.repeatRate = static_cast<uint32_t>(getIntValue(token));
    }
    if (contains(token, kUnicableDevId)) {
        params.unicableDevId = getIntValue(token);
    }
    if (contains(token, kSwitchDelay)) {
        params.switchDelay = static_cast<uint32_t>(getIntValue(token));
    }
    if (contains(token, kChannelNumber)) {
        appendToList(params.channelNumber, named.channelNumber, getIntValue(token));
    }
    if (contains(token, kChannelFrequency)) {
        appendToList(params.channelFrequency, named.channelFrequency, getIntValue(token));
    }
}

int antennacontrol::setTerrestrialAntenna(std::string& result) {
    if (wordCount() < 2) {
        result = kReplyInsufficientParameters;
        return 0;
    }
    TerrestrialAntennaParams params;
    const bool supplyOn =
        contains(word(1), wordFor(kSupplyVoltageWords, zo::port::ANTENNA_SUPPLY_VOLTAGE_5V));
    params.supplyVoltage =
        supplyOn ? zo::port::ANTENNA_SUPPLY_VOLTAGE_5V : zo::port::ANTENNA_SUPPLY_VOLTAGE_OFF;
    const int status = m_antenna ? m_antenna->setTerrestrialParams(params) : kNoAntennaObject;
    if (status != 0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): setTerrestrialAntenna returns error.\n");
        result = kReplySetNotPossible;
        return 0;
    }
    result = kReplyOk;
    return 1;
}

int32_t antennacontrol::getIntValue(const std::string& token) {
    const size_t equals = token.find('=');
    if (equals == std::string::npos || equals + 1 == token.size()) {
        return 0;
    }
    std::string numeral;
    try {
        numeral = token.substr(equals + 1);
    } catch (const std::exception&) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): error parsing numeral string.\n");
        return 0;
    }
    int32_t value = 0;
    if (!parseInt32(numeral, value)) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): error parsing converting numeral string.\n");
        return 0;
    }
    return value;
}

int antennacontrol::getSatCable(int index, SatelliteAntennaParams& params) {
    return storeWordsFound(kSatCablesWords, tokenAt(index), params.satCables);
}

int antennacontrol::getInstallationType(int index, SatelliteAntennaParams& params) {
    return storeWordsFound(kInstallationTypeWords, tokenAt(index), params.installationType);
}

int antennacontrol::getAntennaControlVoltage(int index, SatelliteAntennaParams& params) {
    return storeWordsFound(kCtrlVoltageWords, tokenAt(index), params.ctrlVoltage);
}

int antennacontrol::getAntennaCommunalSupply(int index, SatelliteAntennaParams& params) {
    return storeWordsFound(kCommunalSupplyWords, tokenAt(index), params.communalSupply);
}

int antennacontrol::getAntenna22kHzSignal(int index, SatelliteAntennaParams& params) {
    return storeWordsFound(k22kHzSignalWords, tokenAt(index), params.signal22kHz);
}

int antennacontrol::getToneBurst(int index, SatelliteAntennaParams& params) {
    return storeWordsFound(kToneBurstWords, tokenAt(index), params.toneBurst);
}

int antennacontrol::getHighBand(int index, SatelliteAntennaParams& params) {
    return storeWordsFound(kNoYesWords, tokenAt(index), params.highBand);
}

int antennacontrol::getPinProtected(int index, SatelliteAntennaParams& params) {
    const std::string& token = tokenAt(index);
    int found = 0;
    for (const ValueWord& entry : kNoYesWords) {
        if (contains(token, entry.word)) {
            params.pinProtected.push_back(
                static_cast<zo::port::antennaPinProtected_enum>(entry.code));
            found = 1;
        }
    }
    return found;
}

const std::string& antennacontrol::tokenAt(int index) const {
    return index < 0 ? word(wordCount()) : word(static_cast<size_t>(index));
}

}  // namespace sysctrlservice
