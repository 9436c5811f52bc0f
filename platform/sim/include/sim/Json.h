#ifndef SIM_JSON_H
#define SIM_JSON_H

// Values of the simulated set as JSON: what the journal records and what a script may set.

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "zo/port/Antenna.h"
#include "zo/port/FactoryManager.h"
#include "zo/port/ScreenCapture.h"

namespace sim {

using json = nlohmann::json;

// The kinds of values that operations take, return and fill in.
enum class Kind {
    Void,         // no value
    Int,          // signed 32-bit; 0x80000000..0xFFFFFFFF wrap to negative
    UInt,         // unsigned 32-bit; -2147483648..-1 wrap to the top
    UInt8,        // 0..255
    Bool,         // true, false, 1 or 0
    String,       // text, or {"hex":"..."} for bytes that are not text
    Bytes,        // "0a0b..." or {"hex":"0a0b..."}
    IntList,      // [1, 2, ...]
    Object,       // a port object's class name, or null when absent (getters only)
    Satellite,    // SatelliteAntennaParams as an object keyed by field name
    Terrestrial,  // TerrestrialAntennaParams as {"supplyVoltage": n}
    FuseList,     // [{"name": "...", "value": "..."}, ...]
    SupportInfo,  // {"supportedTypes": n, "maxWidth": n, "maxHeight": n}
    Any,          // any JSON value
};

const char* kindName(Kind kind);

// True when `value` is a valid value of `kind`; otherwise explains why in `error`.
bool fitsKind(Kind kind, const json& value, std::string& error);

// Text as a JSON string when it is printable UTF-8 (tabs and line ends allowed), otherwise as
// {"hex": "..."}; so that any byte string can be journalled and printed.
json textOrHex(const std::string& bytes);
json bytesToJson(const uint8_t* bytes, size_t length);
std::string toHex(const uint8_t* bytes, size_t length);
// The value of one hex digit, or -1.
int hexDigitValue(char c);
// Accepts "0a0B..." or {"hex": "..."}; false for anything else.
bool bytesFromJson(const json& value, std::vector<uint8_t>& bytes);
// Accepts a JSON string or {"hex": "..."}.
bool stringFromJson(const json& value, std::string& text);

// Item `index` of a list, or 0 when the list is shorter: a script may shorten any list.
json itemOf(const json& list, size_t index);

// Conversions of values already checked with fitsKind.
int32_t toInt(const json& value);
uint32_t toUInt(const json& value);
bool toBool(const json& value);
std::string toText(const json& value);
std::vector<uint8_t> toBytes(const json& value);
std::vector<int32_t> toIntList(const json& value);

}  // namespace sim

namespace zo {
namespace port {

void to_json(nlohmann::json& j, const SatelliteAntennaParams& params);
// Fields missing from `j` keep the values `params` has; throws for unknown fields and wrong types.
void from_json(const nlohmann::json& j, SatelliteAntennaParams& params);
void to_json(nlohmann::json& j, const TerrestrialAntennaParams& params);
void from_json(const nlohmann::json& j, TerrestrialAntennaParams& params);
void to_json(nlohmann::json& j, const secfuseitem& item);
void from_json(const nlohmann::json& j, secfuseitem& item);
void to_json(nlohmann::json& j, const screenCaptureSupportType& info);
void from_json(const nlohmann::json& j, screenCaptureSupportType& info);

}  // namespace port
}  // namespace zo

#endif
