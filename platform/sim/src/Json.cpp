#include "sim/Json.h"

#include <cstdio>
#include <set>

namespace sim {
namespace {

bool integerIn(const json& value, int64_t low, int64_t high) {
    if (value.is_number_unsigned()) {
        return value.get<uint64_t>() <= static_cast<uint64_t>(high);
    }
    if (value.is_number_integer()) {
        const int64_t v = value.get<int64_t>();
        return v >= low && v <= high;
    }
    return false;
}

bool hexToBytes(const std::string& text, std::vector<uint8_t>& bytes) {
    if (text.size() % 2 != 0) {
        return false;
    }
    std::vector<uint8_t> out;
    out.reserve(text.size() / 2);
    for (size_t i = 0; i < text.size(); i += 2) {
        const int high = hexDigitValue(text[i]);
        const int low = hexDigitValue(text[i + 1]);
        if (high < 0 || low < 0) {
            return false;
        }
        out.push_back(static_cast<uint8_t>(high * 16 + low));
    }
    bytes.swap(out);
    return true;
}

// Printable UTF-8: no control characters but tab, line feed and carriage return.
bool isText(const std::string& bytes) {
    size_t i = 0;
    while (i < bytes.size()) {
        const unsigned char c = static_cast<unsigned char>(bytes[i]);
        if (c < 0x80) {
            if ((c < 0x20 && c != '\t' && c != '\n' && c != '\r') || c == 0x7F) {
                return false;
            }
            ++i;
            continue;
        }
        size_t extra = 0;
        uint32_t codePoint = 0;
        if ((c & 0xE0) == 0xC0) {
            extra = 1;
            codePoint = c & 0x1F;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2;
            codePoint = c & 0x0F;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3;
            codePoint = c & 0x07;
        } else {
            return false;
        }
        if (i + extra >= bytes.size()) {
            return false;
        }
        for (size_t k = 1; k <= extra; ++k) {
            const unsigned char next = static_cast<unsigned char>(bytes[i + k]);
            if ((next & 0xC0) != 0x80) {
                return false;
            }
            codePoint = (codePoint << 6) | (next & 0x3F);
        }
        const uint32_t minimum[] = {0, 0x80, 0x800, 0x10000};
        if (codePoint < minimum[extra] || codePoint > 0x10FFFF ||
            (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
            return false;
        }
        i += extra + 1;
    }
    return true;
}

template <typename Record>
bool fitsRecord(const json& value, std::string& error) {
    try {
        Record record;
        value.get_to(record);
        return true;
    } catch (const std::exception& e) {
        error = e.what();
        return false;
    }
}

}  // namespace

int hexDigitValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

const char* kindName(Kind kind) {
    switch (kind) {
        case Kind::Void:
            return "nothing";
        case Kind::Int:
            return "int";
        case Kind::UInt:
            return "unsigned int";
        case Kind::UInt8:
            return "unsigned 8-bit";
        case Kind::Bool:
            return "bool";
        case Kind::String:
            return "text";
        case Kind::Bytes:
            return "hex bytes";
        case Kind::IntList:
            return "list of int";
        case Kind::Object:
            return "object name";
        case Kind::Satellite:
            return "SatelliteAntennaParams";
        case Kind::Terrestrial:
            return "TerrestrialAntennaParams";
        case Kind::FuseList:
            return "list of fuse items";
        case Kind::SupportInfo:
            return "screenCaptureSupportType";
        case Kind::Any:
            return "any";
    }
    return "?";
}

bool fitsKind(Kind kind, const json& value, std::string& error) {
    bool fits = false;
    switch (kind) {
        case Kind::Void:
            fits = value.is_null();
            break;
        case Kind::Int:
        case Kind::UInt:
            fits = integerIn(value, INT32_MIN, UINT32_MAX);
            break;
        case Kind::UInt8:
            fits = integerIn(value, 0, 255);
            break;
        case Kind::Bool:
            fits = value.is_boolean() || integerIn(value, 0, 1);
            break;
        case Kind::String: {
            std::string text;
            fits = stringFromJson(value, text);
            break;
        }
        case Kind::Bytes: {
            std::vector<uint8_t> bytes;
            fits = bytesFromJson(value, bytes);
            break;
        }
        case Kind::IntList:
            fits = value.is_array();
            for (const json& item : value) {
                fits = fits && integerIn(item, INT32_MIN, UINT32_MAX);
            }
            break;
        case Kind::Object:
            fits = false;
            error = "object getters are not scripted; use absent and present";
            return false;
        case Kind::Satellite:
            return fitsRecord<zo::port::SatelliteAntennaParams>(value, error);
        case Kind::Terrestrial:
            return fitsRecord<zo::port::TerrestrialAntennaParams>(value, error);
        case Kind::FuseList:
            return fitsRecord<std::vector<zo::port::secfuseitem>>(value, error);
        case Kind::SupportInfo:
            return fitsRecord<zo::port::screenCaptureSupportType>(value, error);
        case Kind::Any:
            fits = true;
            break;
    }
    if (!fits) {
        error = std::string("expected ") + kindName(kind) + ", got " + value.dump();
    }
    return fits;
}

std::string toHex(const uint8_t* bytes, size_t length) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(length * 2);
    for (size_t i = 0; i < length; ++i) {
        text.push_back(digits[bytes[i] >> 4]);
        text.push_back(digits[bytes[i] & 0xF]);
    }
    return text;
}

json bytesToJson(const uint8_t* bytes, size_t length) {
    return json{{"hex", toHex(bytes, length)}};
}

json textOrHex(const std::string& bytes) {
    if (isText(bytes)) {
        return json(bytes);
    }
    return bytesToJson(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

bool bytesFromJson(const json& value, std::vector<uint8_t>& bytes) {
    if (value.is_string()) {
        return hexToBytes(value.get<std::string>(), bytes);
    }
    if (value.is_object() && value.size() == 1 && value.contains("hex") &&
        value["hex"].is_string()) {
        return hexToBytes(value["hex"].get<std::string>(), bytes);
    }
    return false;
}

bool stringFromJson(const json& value, std::string& text) {
    if (value.is_string()) {
        text = value.get<std::string>();
        return true;
    }
    std::vector<uint8_t> bytes;
    if (value.is_object() && bytesFromJson(value, bytes)) {
        text.assign(bytes.begin(), bytes.end());
        return true;
    }
    return false;
}

json itemOf(const json& list, size_t index) {
    return list.is_array() && index < list.size() ? list[index] : json(0);
}

int32_t toInt(const json& value) {
    if (value.is_boolean()) {
        return value.get<bool>() ? 1 : 0;
    }
    if (value.is_number_unsigned()) {
        return static_cast<int32_t>(static_cast<uint32_t>(value.get<uint64_t>()));
    }
    return static_cast<int32_t>(value.get<int64_t>());
}

uint32_t toUInt(const json& value) {
    return static_cast<uint32_t>(toInt(value));
}

bool toBool(const json& value) {
    return value.is_boolean() ? value.get<bool>() : toInt(value) != 0;
}

std::string toText(const json& value) {
    std::string text;
    stringFromJson(value, text);
    return text;
}

std::vector<uint8_t> toBytes(const json& value) {
    std::vector<uint8_t> bytes;
    bytesFromJson(value, bytes);
    return bytes;
}

std::vector<int32_t> toIntList(const json& value) {
    std::vector<int32_t> list;
    for (const json& item : value) {
        list.push_back(toInt(item));
    }
    return list;
}

}  // namespace sim

namespace zo {
namespace port {
namespace {

using sim::json;

template <typename Enum>
void enumFrom(const json& j, const char* key, Enum& field) {
    if (j.contains(key)) {
        if (!j[key].is_number_integer()) {
            throw std::invalid_argument(std::string(key) + " must be an integer");
        }
        field = static_cast<Enum>(sim::toInt(j[key]));
    }
}

template <typename Number>
void numberFrom(const json& j, const char* key, Number& field) {
    if (j.contains(key)) {
        if (!j[key].is_number_integer()) {
            throw std::invalid_argument(std::string(key) + " must be an integer");
        }
        field = static_cast<Number>(sim::toInt(j[key]));
    }
}

template <typename Item>
void listFrom(const json& j, const char* key, std::vector<Item>& field) {
    if (!j.contains(key)) {
        return;
    }
    if (!j[key].is_array()) {
        throw std::invalid_argument(std::string(key) + " must be a list");
    }
    std::vector<Item> list;
    for (const json& item : j[key]) {
        if (!item.is_number_integer()) {
            throw std::invalid_argument(std::string(key) + " must hold integers");
        }
        list.push_back(static_cast<Item>(sim::toInt(item)));
    }
    field.swap(list);
}

void checkKeys(const json& j, const std::set<std::string>& known, const char* record) {
    if (!j.is_object()) {
        throw std::invalid_argument(std::string(record) + " must be an object");
    }
    for (auto it = j.begin(); it != j.end(); ++it) {
        if (known.count(it.key()) == 0) {
            throw std::invalid_argument(std::string(record) + " has no field " + it.key());
        }
    }
}

}  // namespace

void to_json(json& j, const SatelliteAntennaParams& p) {
    std::vector<int32_t> pinProtected(p.pinProtected.begin(), p.pinProtected.end());
    j = json{{"satCables", p.satCables},
             {"installationType", p.installationType},
             {"satId", p.satId},
             {"lnbFrequencyLow", p.lnbFrequencyLow},
             {"lnbFrequencyHigh", p.lnbFrequencyHigh},
             {"repeatRate", p.repeatRate},
             {"ctrlVoltage", p.ctrlVoltage},
             {"communalSupply", p.communalSupply},
             {"signal22kHz", p.signal22kHz},
             {"toneBurst", p.toneBurst},
             {"motorType", p.motorType},
             {"motorMoveType", p.motorMoveType},
             {"motorMoveData", p.motorMoveData},
             {"motorPositionData", p.motorPositionData},
             {"diseqcMode", p.diseqcMode},
             {"highBand", p.highBand},
             {"unicableDevId", p.unicableDevId},
             {"switchDelay", p.switchDelay},
             {"channelNumber", p.channelNumber},
             {"channelFrequency", p.channelFrequency},
             {"pin", json::array()},
             {"pinProtected", pinProtected}};
    for (const std::string& pin : p.pin) {
        j["pin"].push_back(sim::textOrHex(pin));
    }
}

void from_json(const json& j, SatelliteAntennaParams& p) {
    checkKeys(j, {"satCables",       "installationType",  "satId",
                  "lnbFrequencyLow", "lnbFrequencyHigh",  "repeatRate",
                  "ctrlVoltage",     "communalSupply",    "signal22kHz",
                  "toneBurst",       "motorType",         "motorMoveType",
                  "motorMoveData",   "motorPositionData", "diseqcMode",
                  "highBand",        "unicableDevId",     "switchDelay",
                  "channelNumber",   "channelFrequency",  "pin",
                  "pinProtected"},
              "SatelliteAntennaParams");
    enumFrom(j, "satCables", p.satCables);
    enumFrom(j, "installationType", p.installationType);
    listFrom(j, "satId", p.satId);
    listFrom(j, "lnbFrequencyLow", p.lnbFrequencyLow);
    listFrom(j, "lnbFrequencyHigh", p.lnbFrequencyHigh);
    numberFrom(j, "repeatRate", p.repeatRate);
    enumFrom(j, "ctrlVoltage", p.ctrlVoltage);
    enumFrom(j, "communalSupply", p.communalSupply);
    enumFrom(j, "signal22kHz", p.signal22kHz);
    enumFrom(j, "toneBurst", p.toneBurst);
    numberFrom(j, "motorType", p.motorType);
    numberFrom(j, "motorMoveType", p.motorMoveType);
    numberFrom(j, "motorMoveData", p.motorMoveData);
    numberFrom(j, "motorPositionData", p.motorPositionData);
    enumFrom(j, "diseqcMode", p.diseqcMode);
    enumFrom(j, "highBand", p.highBand);
    numberFrom(j, "unicableDevId", p.unicableDevId);
    numberFrom(j, "switchDelay", p.switchDelay);
    listFrom(j, "channelNumber", p.channelNumber);
    listFrom(j, "channelFrequency", p.channelFrequency);
    listFrom(j, "pinProtected", p.pinProtected);
    if (j.contains("pin")) {
        if (!j["pin"].is_array()) {
            throw std::invalid_argument("pin must be a list");
        }
        std::vector<std::string> pins;
        for (const json& item : j["pin"]) {
            std::string text;
            if (!sim::stringFromJson(item, text)) {
                throw std::invalid_argument("pin must hold texts");
            }
            pins.push_back(text);
        }
        p.pin.swap(pins);
    }
}

void to_json(json& j, const TerrestrialAntennaParams& p) {
    j = json{{"supplyVoltage", p.supplyVoltage}};
}

void from_json(const json& j, TerrestrialAntennaParams& p) {
    checkKeys(j, {"supplyVoltage"}, "TerrestrialAntennaParams");
    enumFrom(j, "supplyVoltage", p.supplyVoltage);
}

void to_json(json& j, const secfuseitem& item) {
    j = json{{"name", sim::textOrHex(item.name)}, {"value", sim::textOrHex(item.value)}};
}

void from_json(const json& j, secfuseitem& item) {
    checkKeys(j, {"name", "value"}, "secfuseitem");
    if (!j.contains("name") || !sim::stringFromJson(j["name"], item.name)) {
        throw std::invalid_argument("secfuseitem needs a text name");
    }
    item.value.clear();
    if (j.contains("value") && !sim::stringFromJson(j["value"], item.value)) {
        throw std::invalid_argument("secfuseitem value must be a text");
    }
}

void to_json(json& j, const screenCaptureSupportType& info) {
    j = json{{"supportedTypes", info.supportedTypes},
             {"maxWidth", info.maxWidth},
             {"maxHeight", info.maxHeight}};
}

void from_json(const json& j, screenCaptureSupportType& info) {
    checkKeys(j, {"supportedTypes", "maxWidth", "maxHeight"}, "screenCaptureSupportType");
    numberFrom(j, "supportedTypes", info.supportedTypes);
    numberFrom(j, "maxWidth", info.maxWidth);
    numberFrom(j, "maxHeight", info.maxHeight);
}

}  // namespace port
}  // namespace zo
