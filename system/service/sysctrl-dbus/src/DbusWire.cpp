#include "DbusWire.h"

namespace sysctrlservice {
namespace dbus {

namespace {

const char kReplacement[] = "\xEF\xBF\xBD";

// The length of the well-formed UTF-8 sequence at `at`, or 0.
size_t sequenceLength(const std::string& text, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(at);
    if (lead >= 0x01 && lead <= 0x7F) {
        return 1;
    }
    size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;   // no overlong forms
        high = lead == 0xED ? 0x9F : 0xBF;  // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (at + length > text.size() || byte(at + 1) < low || byte(at + 1) > high) {
        return 0;
    }
    for (size_t i = 2; i < length; ++i) {
        if (byte(at + i) < 0x80 || byte(at + i) > 0xBF) {
            return 0;
        }
    }
    return length;
}

}  // namespace

std::string validUtf8(const std::string& text) {
    std::string valid;
    valid.reserve(text.size());
    for (size_t at = 0; at < text.size();) {
        const size_t length = sequenceLength(text, at);
        if (length == 0) {
            valid += kReplacement;
            ++at;
            continue;
        }
        valid.append(text, at, length);
        at += length;
    }
    return valid;
}

FuseItems::Value FuseItems::in(const Bus& value) {
    Value items;
    for (const auto& item : value) {
        items.push_back({Bytes::in(item.get<0>()), Bytes::in(item.get<1>())});
    }
    return items;
}

FuseItems::Bus FuseItems::out(const Value& value) {
    Bus items;
    for (const fuseitemcontent1_t& item : value) {
        items.emplace_back(Bytes::out(item.name), Bytes::out(item.value));
    }
    return items;
}

Optime::Value Optime::in(const Bus& value) {
    Value info;
    info.time[0] = value.get<0>();
    info.time[1] = value.get<1>();
    info.time[2] = value.get<2>();
    info.time[3] = value.get<3>();
    info.time[4] = value.get<4>();
    info.text = value.get<5>();
    return info;
}

Optime::Bus Optime::out(const Value& value) {
    return Bus(value.time[0], value.time[1], value.time[2], value.time[3], value.time[4],
               validUtf8(value.text));
}

}  // namespace dbus
}  // namespace sysctrlservice
