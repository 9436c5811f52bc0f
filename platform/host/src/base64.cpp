#include "zo/Base64.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace zo {
namespace base64 {
namespace {

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// 0..63 for alphabet characters, kPad for '=', kSkip for blanks, kBad for everything else.
enum : signed char { kPad = -2, kSkip = -3, kBad = -1 };

struct DecodeTable {
    signed char value[256];
    DecodeTable() {
        std::memset(value, kBad, sizeof value);
        for (int i = 0; i < 64; ++i) {
            value[static_cast<unsigned char>(kAlphabet[i])] = static_cast<signed char>(i);
        }
        value[static_cast<unsigned char>('=')] = kPad;
        for (const char blank : {' ', '\t', '\r', '\n'}) {
            value[static_cast<unsigned char>(blank)] = kSkip;
        }
    }
};

const DecodeTable kDecode;

}  // namespace

int decode(const char* text, size_t length, unsigned char** bytes) {
    if (bytes == nullptr) {
        return -1;
    }
    *bytes = nullptr;
    if (text == nullptr && length != 0) {
        return -1;
    }
    if (length / 4 * 3 + 3 > static_cast<size_t>(0x7FFFFFFF)) {
        return -1;
    }
    unsigned char* out = static_cast<unsigned char*>(std::malloc(length / 4 * 3 + 3));
    if (out == nullptr) {
        return -1;
    }
    size_t produced = 0;
    unsigned int quantum = 0;
    int filled = 0;   // sextets in the current quantum
    int padding = 0;  // '=' seen; only more padding and blanks may follow
    for (size_t i = 0; i < length; ++i) {
        const signed char value = kDecode.value[static_cast<unsigned char>(text[i])];
        if (value == kSkip) {
            continue;
        }
        if (value == kBad || (padding > 0 && value != kPad)) {
            std::free(out);
            return -1;
        }
        if (value == kPad) {
            // Padding completes a quantum of two or three sextets, never fewer.
            if (filled + padding < 2 || filled + padding >= 4) {
                std::free(out);
                return -1;
            }
            ++padding;
            continue;
        }
        quantum = (quantum << 6) | static_cast<unsigned int>(value);
        if (++filled == 4) {
            out[produced++] = static_cast<unsigned char>(quantum >> 16);
            out[produced++] = static_cast<unsigned char>(quantum >> 8);
            out[produced++] = static_cast<unsigned char>(quantum);
            quantum = 0;
            filled = 0;
        }
    }
    if (padding > 0) {
        if (filled + padding != 4) {
            std::free(out);
            return -1;
        }
    } else if (filled != 0) {
        std::free(out);
        return -1;
    }
    if (filled == 2) {
        out[produced++] = static_cast<unsigned char>(quantum >> 4);
    } else if (filled == 3) {
        out[produced++] = static_cast<unsigned char>(quantum >> 10);
        out[produced++] = static_cast<unsigned char>(quantum >> 2);
    }
    *bytes = out;
    return static_cast<int>(produced);
}

int encode(const unsigned char* bytes, size_t length, char** text) {
    if (text == nullptr) {
        return -1;
    }
    *text = nullptr;
    if ((bytes == nullptr && length != 0) || length > static_cast<size_t>(0x7FFFFFFF) / 4 * 3 - 3) {
        return -1;
    }
    const size_t encodedLength = (length + 2) / 3 * 4;
    char* out = static_cast<char*>(std::malloc(encodedLength + 1));
    if (out == nullptr) {
        return -1;
    }
    size_t o = 0;
    size_t i = 0;
    for (; i + 3 <= length; i += 3) {
        const unsigned int triple = (bytes[i] << 16) | (bytes[i + 1] << 8) | bytes[i + 2];
        out[o++] = kAlphabet[(triple >> 18) & 0x3F];
        out[o++] = kAlphabet[(triple >> 12) & 0x3F];
        out[o++] = kAlphabet[(triple >> 6) & 0x3F];
        out[o++] = kAlphabet[triple & 0x3F];
    }
    if (length - i == 1) {
        const unsigned int triple = bytes[i] << 16;
        out[o++] = kAlphabet[(triple >> 18) & 0x3F];
        out[o++] = kAlphabet[(triple >> 12) & 0x3F];
        out[o++] = '=';
        out[o++] = '=';
    } else if (length - i == 2) {
        const unsigned int triple = (bytes[i] << 16) | (bytes[i + 1] << 8);
        out[o++] = kAlphabet[(triple >> 18) & 0x3F];
        out[o++] = kAlphabet[(triple >> 12) & 0x3F];
        out[o++] = kAlphabet[(triple >> 6) & 0x3F];
        out[o++] = '=';
    }
    out[o] = '\0';
    *text = out;
    return static_cast<int>(o);
}

void release(void* buffer) {
    std::free(buffer);
}

}  // namespace base64
}  // namespace zo
