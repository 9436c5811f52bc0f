#ifndef SYSCTRL_DBUS_DBUSWIRE_H
#define SYSCTRL_DBUS_DBUSWIRE_H

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>

#include "ServiceDescription.h"
#include "SysctrlTypes.h"

namespace sysctrlservice {
namespace dbus {

// How one value of the remote interface travels on the bus. Each wire type names the service's
// C++ type (`Value`), the D-Bus type (`Bus`) and converts both ways. Numbers keep their width and
// sign; text that may hold any byte travels as an array of bytes.

// Replaces what a D-Bus string cannot carry (invalid UTF-8, NUL) by U+FFFD, so that a reply is
// never refused by the bus library; valid text passes unchanged.
std::string validUtf8(const std::string& text);

struct Int {
    using Value = int;
    using Bus = int32_t;
    static Value in(Bus value) { return value; }
    static Bus out(Value value) { return value; }
};

struct Unsigned {
    using Value = unsigned int;
    using Bus = uint32_t;
    static Value in(Bus value) { return value; }
    static Bus out(Value value) { return value; }
};

struct Byte {
    using Value = unsigned char;
    using Bus = uint8_t;
    static Value in(Bus value) { return value; }
    static Bus out(Value value) { return value; }
};

// Enumerations that carry any 32-bit value.
template <typename Enum>
struct EnumInt {
    using Value = Enum;
    using Bus = int32_t;
    static Value in(Bus value) { return static_cast<Enum>(value); }
    static Bus out(Value value) { return static_cast<int32_t>(value); }
};

struct Text {
    using Value = std::string;
    using Bus = std::string;
    static Value in(const Bus& value) { return value; }
    static Bus out(const Value& value) { return validUtf8(value); }
};

struct Bytes {
    using Value = std::string;
    using Bus = std::vector<uint8_t>;
    static Value in(const Bus& value) { return Value(value.begin(), value.end()); }
    static Bus out(const Value& value) { return Bus(value.begin(), value.end()); }
};

struct IntList {
    using Value = std::vector<int>;
    using Bus = std::vector<int32_t>;
    static Value in(const Bus& value) { return Value(value.begin(), value.end()); }
    static Bus out(const Value& value) { return Bus(value.begin(), value.end()); }
};

// Fuse items: name and value, both any bytes.
struct FuseItems {
    using Value = std::vector<fuseitemcontent1_t>;
    using Bus = std::vector<sdbus::Struct<std::vector<uint8_t>, std::vector<uint8_t>>>;
    static Value in(const Bus& value);
    static Bus out(const Value& value);
};

// The five operating-time counters and their text.
struct Optime {
    using Value = OptimeInfo;
    using Bus = sdbus::Struct<uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, std::string>;
    static Value in(const Bus& value);
    static Bus out(const Value& value);
};

// The D-Bus signature of a list of wire types.
template <typename... Wire>
std::string signatureOf() {
    return (std::string() + ... + sdbus::signature_of<typename Wire::Bus>::str());
}

// The wire type of each value type of the interface but text.
template <typename Value, typename = void>
struct WireOf;
template <>
struct WireOf<int> {
    using type = Int;
};
template <>
struct WireOf<unsigned int> {
    using type = Unsigned;
};
template <>
struct WireOf<unsigned char> {
    using type = Byte;
};
template <typename Enum>
struct WireOf<Enum, std::enable_if_t<std::is_enum_v<Enum>>> {
    using type = EnumInt<Enum>;
};
template <>
struct WireOf<std::vector<int>> {
    using type = IntList;
};
template <>
struct WireOf<std::vector<fuseitemcontent1_t>> {
    using type = FuseItems;
};
template <>
struct WireOf<OptimeInfo> {
    using type = Optime;
};

// Calls use(Wire()) with the wire type of a value: raw bytes travel as Bytes, text and hexadecimal
// text as Text.
template <typename Value, typename Use>
decltype(auto) withWire(Holds holds, Use&& use) {
    if constexpr (std::is_same_v<Value, std::string>) {
        return holds == Holds::bytes ? use(Bytes()) : use(Text());
    } else {
        return use(typename WireOf<Value>::type());
    }
}

template <typename Value>
std::string signatureOfValue(Holds holds) {
    return withWire<Value>(holds, [](auto wire) { return signatureOf<decltype(wire)>(); });
}

template <typename Value>
Value readValue(sdbus::Message& message, Holds holds) {
    return withWire<Value>(holds, [&message](auto wire) -> Value {
        typename decltype(wire)::Bus bus;
        message >> bus;
        return decltype(wire)::in(bus);
    });
}

template <typename Value>
void writeValue(sdbus::Message& message, const Value& value, Holds holds) {
    withWire<Value>(holds, [&](auto wire) { message << decltype(wire)::out(value); });
}

}  // namespace dbus
}  // namespace sysctrlservice

#endif
